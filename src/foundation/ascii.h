#pragma once

// Kinds of bytes as the C locale has them, whatever the environment says. Bytes are passed as char
// or as what a stream returns; everything that is not ASCII, the end of a stream too, is of no
// kind.

namespace Vell {

/// '0' to '9'.
constexpr bool IsDigit(int c) noexcept { return c >= '0' && c <= '9'; }

/// Space, tab, line feed, vertical tab, form feed or carriage return.
constexpr bool IsBlank(int c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// The small letter of a capital one; any other byte, and the end of a stream, as it is.
constexpr int ToLower(int c) noexcept { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; }

/// '0' to '9' and the letters A to F, small or capital.
constexpr bool IsHexDigit(int c) noexcept {
  return IsDigit(c) || (ToLower(c) >= 'a' && ToLower(c) <= 'f');
}

}  // namespace Vell
