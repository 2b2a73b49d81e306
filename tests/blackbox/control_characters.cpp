#include "control_characters.h"

#include <cstdint>

namespace Testing {
namespace {

/// The character that a text begins with, and its bytes; a byte that fits none stands for itself.
struct Character {
  std::uint32_t code;
  std::size_t size;
};

Character FirstOf(std::string_view text) {
  const auto byteAt = [text](std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
  };
  const std::uint32_t first = byteAt(0);
  const std::size_t size = first < 0x80               ? 1
                           : (first & 0xE0U) == 0xC0U ? 2
                           : (first & 0xF0U) == 0xE0U ? 3
                           : (first & 0xF8U) == 0xF0U ? 4
                                                      : 0;
  if (size <= 1 || size > text.size()) {
    return {first, 1};
  }
  std::uint32_t code = first & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byteAt(i) & 0xC0U) != 0x80U) {
      return {first, 1};
    }
    code = code << 6U | (byteAt(i) & 0x3FU);
  }
  return {code, size};
}

bool IsBetween(std::uint32_t code, std::uint32_t first, std::uint32_t last) {
  return code >= first && code <= last;
}

/// A character as Unicode writes it, with a blank behind it.
std::string NumberOf(std::uint32_t code) {
  std::string digits;
  for (int shift = 12; shift >= 0; shift -= 4) {
    digits += "0123456789ABCDEF"[code >> static_cast<unsigned>(shift) & 0xFU];
  }
  return "U+" + digits + " ";
}

bool IsControl(std::uint32_t code) {
  return (code < 0x20 && code != '\n' && code != '\t') || IsBetween(code, 0x7F, 0x9F) ||
         IsBetween(code, 0x200E, 0x200F) || IsBetween(code, 0x202A, 0x202E) ||
         IsBetween(code, 0x2066, 0x2069);
}

}  // namespace

std::string ControlCharactersIn(std::string_view text) {
  std::string found;
  while (!text.empty()) {
    const Character character = FirstOf(text);
    if (IsControl(character.code)) {
      found += NumberOf(character.code);
    }
    text.remove_prefix(character.size);
  }
  return found;
}

}  // namespace Testing
