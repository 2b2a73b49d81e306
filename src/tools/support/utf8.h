#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Hovar {

/// The first character of a text.
struct Utf8Character {
  std::size_t length = 0;  // in bytes; 0 where the text does not begin with well-formed UTF-8
  std::uint32_t code = 0;  // its code point
};

/// Reads the character that a text, which is not empty, begins with. Well-formed is what the Unicode
/// Standard (version 15, table 3-7) calls so: no longer form than needed, no surrogates, nothing
/// above U+10FFFF.
Utf8Character FirstCharacter(std::string_view text) noexcept;

/// True for well-formed UTF-8.
bool IsUtf8(std::string_view text) noexcept;

}  // namespace Hovar
