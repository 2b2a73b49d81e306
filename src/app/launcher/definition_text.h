#pragma once

// A definition file as the launcher's tools look at it: the values of its elements and where in the
// file they stand, so that a tool can tell what a run reads and writes, and write the file anew
// with other values. Reading is lenient and silent: the program itself judges the file and says
// what is wrong with it. For a file that the program accepts, the values are those that the program
// reads.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Hovar {

struct DefinitionElement {
  /// The names of the elements around it below the root and its own: "Output/Folder".
  std::string path;
  /// The text behind the start tag up to the next '<', as it stands.
  std::string value;
  /// Where the value begins in the file.
  std::size_t offset = 0;
  /// The attribute xsi:type, or empty.
  std::string type;
};

class DefinitionText {
 public:
  explicit DefinitionText(std::string bytes);

  const std::string& Bytes() const noexcept { return bytes_; }
  /// The root element's name, or empty.
  const std::string& Root() const noexcept { return root_; }
  /// True when the root's end tag was met.
  bool IsComplete() const noexcept { return isComplete_; }
  const std::vector<DefinitionElement>& Elements() const noexcept { return elements_; }

  /// The first element with this path, or null.
  const DefinitionElement* Find(std::string_view path) const noexcept;
  /// Its value, or the empty text.
  std::string Value(std::string_view path) const;
  /// Its value as the program's integer; 0 when it does not begin with one.
  std::int32_t Integer(std::string_view path) const;

 private:
  std::string bytes_;
  std::string root_;
  bool isComplete_ = false;
  std::vector<DefinitionElement> elements_;
};

/// The sign and digits that a text begins with behind white space, as the program reads an integer;
/// empty when it does not begin with one.
std::string_view LeadingInteger(std::string_view text) noexcept;

/// A new value for the text of an element.
struct Replacement {
  const DefinitionElement* element = nullptr;
  std::string value;
};

/// The file with other values at the places of some elements, given in the order of the file.
std::string WithValues(const DefinitionText& definition,
                       const std::vector<Replacement>& replacements);

}  // namespace Hovar
