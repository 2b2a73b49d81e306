#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace Testing {

/// Calls `call` with every text of 0 .. `longest` characters of the alphabet, short ones first, up
/// to the first fatal failure.
template <typename Call>
void ForAllTexts(std::string_view alphabet, std::size_t longest, Call call) {
  std::string text;
  std::string digits;  // the text as places in the alphabet
  for (std::size_t length = 0; length <= longest; ++length) {
    digits.assign(length, '\0');
    text.assign(length, alphabet[0]);
    for (bool isLast = false; !isLast;) {
      call(text);
      if (testing::Test::HasFatalFailure()) {
        return;
      }
      isLast = true;
      for (std::size_t i = 0; i < length; ++i) {
        if (static_cast<std::size_t>(++digits[i]) < alphabet.size()) {
          text[i] = alphabet[static_cast<std::size_t>(digits[i])];
          isLast = false;
          break;
        }
        digits[i] = 0;
        text[i] = alphabet[0];
      }
    }
  }
}

/// A text as it would stand in a source file, for messages.
inline std::string Quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '\n') {
      result += "\\n";
    } else if (c == '\r') {
      result += "\\r";
    } else if (c == '\0') {
      result += "\\0";
    } else {
      result += c;
    }
  }
  return result + '"';
}

}  // namespace Testing
