#pragma once

#include <string>
#include <vector>

namespace Testing {

/// A name that a file may have although few programs expect it.
struct HostileName {
  std::string what;
  std::string name;
};

/// A name without surprises, for the table of kinds.
inline constexpr char kHarmlessName[] = "harmless.csv";

/// The text after the line feed of a name with one; no line of output may begin with it.
inline constexpr char kForgedLine[] = "#forged";

/// All of them but those of single bytes.
std::vector<HostileName> HostileNames();

/// A name with each byte that a name may hold and that separates no folders.
std::vector<HostileName> NamesOfSingleBytes();

/// True where a definition can hold the name: the text of an element ends at '<'.
bool IsTextOfAnElement(const std::string& name);

}  // namespace Testing
