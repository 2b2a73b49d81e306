#pragma once

// Numbers as text, in the C locale whatever the environment says, and the same on every platform:
// written as printf writes "%d", "%u", "%g" and "%f", read as strtol, strtoul and strtod read. The
// one difference: a NaN is always written "nan", whatever its sign.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Vell::IO {

class Stream;

/// The text of one number. It holds the longest one, a fixed-point double of 309 digits before the
/// point and six after it. No number is an error: infinities are "inf" and "-inf".
class NumberText {
 public:
  /// As "%d" and "%u".
  static NumberText OfInteger(std::int32_t value) noexcept;
  static NumberText OfUnsigned(std::uint32_t value) noexcept;
  /// As "%lg": six significant digits, the shorter of fixed and exponent notation; the exponent
  /// has two digits, or three where it needs them.
  static NumberText OfReal(double value) noexcept;
  /// As "%f": six digits after the point.
  static NumberText OfFixed(double value) noexcept;

  /// The text; valid as long as the object.
  std::string_view View() const noexcept { return {text_.data(), length_}; }

 private:
  void EndAt(const char* end) noexcept { length_ = static_cast<std::size_t>(end - text_.data()); }

  std::array<char, 328> text_;
  std::size_t length_ = 0;
};

// Write the text of a number to a place that has room for as many bytes as the constant says, and
// return its end; bytes beyond the end may be written to.
inline constexpr std::size_t kIntegerRoom = 11;
inline constexpr std::size_t kRealRoom = 16;
/// As NumberText::OfInteger.
char* WriteInteger(char* to, std::int32_t value) noexcept;
/// As NumberText::OfReal.
char* WriteReal(char* to, double value) noexcept;

/// Prints one number on a stream; the contract is Stream::Print's, except that a %g or %f for a
/// value that is neither a float nor a double writes nothing and returns 0.
int PrintNumber(Stream& stream, const char* format, const void* value, std::size_t size);

/// The double that a text begins with, as strtod reads it: white space, a sign, then decimal or
/// hexadecimal ("0x") digits with an exponent, "inf", "infinity" or "nan". Beyond the range of a
/// double it is infinite or zero. `used` receives the number of bytes read, 0 (and the result 0.0)
/// if the text does not begin with a number.
double ParseReal(std::string_view text, std::size_t* used = nullptr) noexcept;

/// A decimal integer that a text of an optional sign and digits stands for, as fscanf stores it for
/// "%d" and "%u" with 64-bit arithmetic inside: clamped to 64 bits, then its low 32 bits. The text
/// must be such a number from its first byte to its last, as number_scanner.h gathers it.
std::int32_t ParseInteger(std::string_view text) noexcept;
std::uint32_t ParseUnsigned(std::string_view text) noexcept;

}  // namespace Vell::IO
