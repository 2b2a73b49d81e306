#include "tools/support/utf8.h"

namespace Hovar {
namespace {

bool IsBetween(unsigned char byte, int low, int high) noexcept {
  return byte >= low && byte <= high;
}

}  // namespace

Utf8Character FirstCharacter(std::string_view text) noexcept {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) {
    return {1, lead};
  }
  const std::size_t length = IsBetween(lead, 0xC2, 0xDF)   ? 2
                             : IsBetween(lead, 0xE0, 0xEF) ? 3
                             : IsBetween(lead, 0xF0, 0xF4) ? 4
                                                           : 0;
  if (length == 0 || text.size() < length) {
    return {};
  }
  const int low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const int high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (!IsBetween(byte(1), low, high)) {
    return {};
  }
  std::uint32_t code = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsBetween(byte(i), 0x80, 0xBF)) {
      return {};
    }
    code = code << 6 | (byte(i) & 0x3FU);
  }
  return {length, code};
}

bool IsUtf8(std::string_view text) noexcept {
  while (!text.empty()) {
    const std::size_t length = FirstCharacter(text).length;
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace Hovar
