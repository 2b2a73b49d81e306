#pragma once

// Parts of the sentences in which the tools speak.

#include <concepts>
#include <string>
#include <string_view>

namespace Hovar {

/// The text with the characters that a terminal would obey instead of showing them as \n, \t or, byte
/// by byte, \x1f: so no name from a file can move the cursor, end the line or turn the order of the
/// text around it. They are the control characters of ASCII and of Latin-1, the separators of lines and
/// paragraphs, and those that set the direction of writing. Everything else stays as it is.
std::string Printable(std::string_view text);

/// True when Printable changes nothing.
bool IsPrintable(std::string_view text);

/// A text from a file, for a sentence: printable, in double quotes, and cut after at most 60 bytes,
/// between characters.
std::string Quoted(std::string_view text);

/// The number and its noun: "1 record", "2 records".
template <std::integral Count>
std::string Counted(Count count, std::string_view noun) {
  return std::to_string(count) + ' ' + std::string(noun) + (count == 1 ? "" : "s");
}

}  // namespace Hovar
