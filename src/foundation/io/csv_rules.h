#pragma once

// What the bytes of comma-separated text mean. A field is either unquoted (anything but a comma, a
// line feed or a double quote) or quoted: enclosed in double quotes, with every double quote inside
// doubled. A record ends with a single line feed; a carriage return is an ordinary character of its
// field. There is no comment syntax, and no field holds a NUL byte.
//
// csv_reader.h and csv_writer.h apply the rules. Where text is read faster than field by field,
// everything that needs a rule is left to them.

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Vell::IO {

/// What separates the fields of a record, and what encloses those that hold such a byte.
inline constexpr char kSeparator = ',';
inline constexpr char kQuote = '"';

/// True for a byte that ends an unquoted field. The end of a stream is none.
constexpr bool EndsField(int c) noexcept { return c == kSeparator || c == '\n'; }

/// True for a byte that makes a field need rules: a quote, or a NUL, which is refused.
constexpr bool NeedsRules(char c) noexcept { return c == kQuote || c == '\0'; }
inline bool NeedsRules(std::string_view text) noexcept {
  return text.find(kQuote) != std::string_view::npos || text.find('\0') != std::string_view::npos;
}

/// True for a text that can be a field only in quotes.
inline bool NeedsQuotes(std::string_view text) noexcept {
  return std::any_of(text.begin(), text.end(), [](char c) { return EndsField(c) || c == kQuote; });
}

/// Takes a field that needs no rules, with the comma after it, from the front of the text, and
/// gives it to `field`. False for any other field, one that ends with the line or the text among
/// them; then nothing is taken.
inline bool TakePlainField(std::string_view& text, std::string_view& field) noexcept {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == kSeparator) {
      field = text.substr(0, i);
      text.remove_prefix(i + 1);
      return true;
    }
    if (text[i] == '\n' || NeedsRules(text[i])) {
      return false;
    }
  }
  return false;
}

}  // namespace Vell::IO
