#include "tools/support/sentence_parts.h"

namespace Hovar {

std::string Printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n' || c == '\r' || c == '\t') {
      result += c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\t";
    } else if (byte < 0x20 || byte == 0x7F) {
      result += "\\x";
      result += kDigits[byte >> 4];
      result += kDigits[byte & 15];
    } else {
      result += c;
    }
  }
  return result;
}

std::string Quoted(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  const bool isCut = text.size() > kLongest;
  return '"' + Printable(text.substr(0, kLongest)) + (isCut ? "...\"" : "\"");
}

}  // namespace Hovar
