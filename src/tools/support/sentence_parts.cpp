#include "tools/support/sentence_parts.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "tools/support/utf8.h"

namespace Hovar {
namespace {

struct CodeRange {
  std::uint32_t first;
  std::uint32_t last;
};

/// What a terminal obeys, in the order of the code points.
constexpr std::array<CodeRange, 7> kObeyed = {{
    {0x00, 0x1F},      // control characters of ASCII
    {0x7F, 0x9F},      // delete, and the control characters of Latin-1
    {0x061C, 0x061C},  // Arabic letter mark
    {0x200E, 0x200F},  // marks of left to right and right to left
    {0x2028, 0x202E},  // separators of lines and paragraphs; embeddings and overrides of direction
    {0x2066, 0x2069},  // isolates of direction
    {0xFFF9, 0xFFFB},  // interlinear annotation
}};

bool IsObeyed(std::uint32_t code) noexcept {
  return std::any_of(kObeyed.begin(), kObeyed.end(),
                     [code](CodeRange range) { return code >= range.first && code <= range.last; });
}

std::string EscapeOf(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  if (bytes == "\n" || bytes == "\r" || bytes == "\t") {
    return bytes == "\n" ? "\\n" : bytes == "\r" ? "\\r" : "\\t";
  }
  std::string escape;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    escape += "\\x";
    escape += kDigits[byte >> 4];
    escape += kDigits[byte & 15];
  }
  return escape;
}

/// The first character, or the first byte where the text does not begin with one.
std::string_view FirstPiece(std::string_view text, std::uint32_t& code) noexcept {
  const Utf8Character character = FirstCharacter(text);
  code = character.length > 0 ? character.code : static_cast<unsigned char>(text.front());
  return text.substr(0, std::max<std::size_t>(character.length, 1));
}

}  // namespace

std::string Printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    std::uint32_t code = 0;
    const std::string_view piece = FirstPiece(text, code);
    result += IsObeyed(code) ? EscapeOf(piece) : std::string(piece);
    text.remove_prefix(piece.size());
  }
  return result;
}

bool IsPrintable(std::string_view text) { return Printable(text) == text; }

std::string Quoted(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  std::size_t end = 0;
  while (end < text.size()) {
    std::uint32_t code = 0;
    const std::size_t length = FirstPiece(text.substr(end), code).size();
    if (end + length > kLongest) {
      break;
    }
    end += length;
  }
  return '"' + Printable(text.substr(0, end)) + (end < text.size() ? "...\"" : "\"");
}

}  // namespace Hovar
