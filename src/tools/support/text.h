#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "foundation/ascii.h"
#include "foundation/string.h"

namespace Hovar {

/// The text with the capital letters of ASCII as small ones; other bytes stay.
inline std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return static_cast<char>(Vell::ToLower(c)); });
  return lower;
}

/// What the reader of numbers passes over before one.
inline constexpr std::string_view kBlanksBeforeNumbers = " \t\r\n\v\f";

/// The text without the blanks at both of its ends.
constexpr std::string_view Trimmed(std::string_view text,
                                   std::string_view blanks = Vell::kWhitespace) noexcept {
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace Hovar
