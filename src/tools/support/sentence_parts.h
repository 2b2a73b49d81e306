#pragma once

// Parts of the sentences in which the tools speak.

#include <concepts>
#include <string>
#include <string_view>

namespace Hovar {

/// The text with control characters as \n, \t or \x1f, so that it stays on its line.
std::string Printable(std::string_view text);

/// A text from a file, for a sentence: in double quotes, cut after 60 bytes, with control
/// characters as \n, \t or \x1f, so that a finding stays on its line.
std::string Quoted(std::string_view text);

/// The number and its noun: "1 record", "2 records".
template <std::integral Count>
std::string Counted(Count count, std::string_view noun) {
  return std::to_string(count) + ' ' + std::string(noun) + (count == 1 ? "" : "s");
}

}  // namespace Hovar
