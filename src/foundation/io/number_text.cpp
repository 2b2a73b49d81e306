#include "foundation/io/number_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/stream.h"
#include "messages/error_texts.h"

namespace Vell::IO {
namespace {

// Most numbers that are written lie between 0.0001 and a million and need no exponent. Scaled by an
// exact power of ten, so with a single rounding, they show their six digits as the integer part of
// the product; the fraction decides the rounding unless it is too close to one half to be sure. All
// other numbers take the exact way of the standard library.

constexpr int kSignificantDigits = 6;
constexpr double kLeastFixed = 1e-4;
constexpr double kFixedEnd = 1e6;
constexpr double kSixDigitsEnd = 1e6;

double WithoutNanSign(double value) noexcept {
  return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

struct SixDigits {
  std::uint32_t digits;   // 100000 .. 999999
  std::int32_t exponent;  // of the first digit: -4 .. 5
};

/// For each power of two from 2^-14 (the one below 0.0001) to 2^19, the scale of numbers from there
/// to the next: the power of ten that gives the least of them six digits before the point.
constexpr std::int32_t kLeastBinaryExponent = -14;
constexpr std::array<std::uint8_t, 34> kDecimalScales = {9, 9, 9, 9, 9, 8, 8, 8, 7, 7, 7, 6,
                                                         6, 6, 5, 5, 5, 5, 4, 4, 4, 3, 3, 3,
                                                         2, 2, 2, 2, 1, 1, 1, 0, 0, 0};

constexpr std::array kPowersOfTen = {1e0, 1e1, 1e2, 1e3, 1e4,
                                     1e5, 1e6, 1e7, 1e8, 1e9};  // all exact

/// The six significant digits of a number in [0.0001, 1000000), or 0 where rounding is not certain.
SixDigits FindSixDigits(double value) noexcept {
  const auto binaryExponent =
      static_cast<std::int32_t>(std::bit_cast<std::uint64_t>(value) >> 52) - 1023;
  std::size_t scale =
      kDecimalScales[static_cast<std::size_t>(binaryExponent - kLeastBinaryExponent)];
  scale -= static_cast<std::size_t>(value * kPowersOfTen[scale] >= kSixDigitsEnd);
  const double scaled = value * kPowersOfTen[scale] + 0.5;
  auto digits = static_cast<std::uint32_t>(scaled);
  // Product and sum are off by at most half a unit in the last place each, 2^-34.
  constexpr double kCertain = 0.5 - 1e-9;
  if (std::fabs(scaled - digits - 0.5) > kCertain) {
    return {0, 0};
  }
  std::int32_t exponent = 5 - static_cast<std::int32_t>(scale);
  if (digits == static_cast<std::uint32_t>(kSixDigitsEnd)) {
    digits /= 10;
    ++exponent;
  }
  return exponent <= 5 ? SixDigits{digits, exponent} : SixDigits{0, 0};
}

/// The digits one to a byte, the first in the lowest one, and two zeros after them. Halves, then
/// quarters, then single digits are divided side by side; the multipliers stand for exact divisions
/// by 100 and 10 of numbers below 10,000 and 100.
std::uint64_t SpreadDigits(std::uint32_t sixDigits) noexcept {
  const std::uint32_t all = sixDigits * 100;
  const std::uint64_t halves = all / 10000 | std::uint64_t{all % 10000} << 32;
  const std::uint64_t hundreds = (halves * 10486 >> 20) & 0x0000'007F'0000'007F;
  const std::uint64_t quarters = hundreds | (halves - 100 * hundreds) << 16;
  const std::uint64_t tens = (quarters * 103 >> 10) & 0x000F'000F'000F'000F;
  return tens | (quarters - 10 * tens) << 8;
}

/// Writes six digits in fixed notation without trailing zeros and returns the end. Whole words are
/// written; what lies beyond the end means nothing.
char* WriteFixed(char* to, const SixDigits& number) noexcept {
  static_assert(std::endian::native == std::endian::little);
  const std::uint64_t digits = SpreadDigits(number.digits);
  const std::uint64_t text = digits | 0x3030'3030'3030'3030;  // '0'
  const int count = 8 - std::countl_zero(digits) / 8;         // up to the last that is not 0
  if (number.exponent < 0) {
    std::copy_n("0.000", 5, to);
    to += 1 - number.exponent;
    std::memcpy(to, &text, sizeof text);
    return to + count;
  }
  const int pointAt = number.exponent + 1;
  std::memcpy(to, &text, sizeof text);
  if (count <= pointAt) {
    return to + pointAt;  // zeros before the point are significant
  }
  const std::uint64_t afterPoint = text >> 8 * pointAt;
  to[pointAt] = '.';
  std::memcpy(to + pointAt + 1, &afterPoint, sizeof afterPoint);
  return to + count + 1;
}

}  // namespace

NumberText NumberText::OfInteger(std::int32_t value) noexcept {
  NumberText number;
  number.EndAt(WriteInteger(number.text_.data(), value));
  return number;
}

NumberText NumberText::OfUnsigned(std::uint32_t value) noexcept {
  NumberText number;
  const auto result = std::to_chars(number.text_.begin(), number.text_.end(), value);
  number.EndAt(result.ptr);
  return number;
}

NumberText NumberText::OfReal(double value) noexcept {
  NumberText number;
  number.EndAt(WriteReal(number.text_.data(), value));
  return number;
}

NumberText NumberText::OfFixed(double value) noexcept {
  NumberText number;
  const auto result = std::to_chars(number.text_.begin(), number.text_.end(), WithoutNanSign(value),
                                    std::chars_format::fixed, kSignificantDigits);
  number.EndAt(result.ptr);
  return number;
}

char* WriteInteger(char* to, std::int32_t value) noexcept {
  return std::to_chars(to, to + kIntegerRoom, value).ptr;
}

char* WriteReal(char* to, double value) noexcept {
  const double magnitude = std::fabs(value);
  if (magnitude >= kLeastFixed && magnitude < kFixedEnd) {
    if (const SixDigits number = FindSixDigits(magnitude); number.digits != 0) {
      *to = '-';
      return WriteFixed(to + (value < 0 ? 1 : 0), number);
    }
  }
  if (value == 0) {  // frequent: the predictions of records without the outcome
    *to = '-';
    to += std::signbit(value) ? 1 : 0;
    *to = '0';
    return to + 1;
  }
  return std::to_chars(to, to + kRealRoom, WithoutNanSign(value), std::chars_format::general,
                       kSignificantDigits)
      .ptr;
}

int PrintNumber(Stream& stream, const char* format, const void* value, std::size_t size) {
  const std::string_view text(format);
  const std::size_t percent = text.find('%');
  const std::size_t letter =
      percent == std::string_view::npos ? percent : text.find_first_not_of("hlL", percent + 1);
  if (letter == std::string_view::npos || text.find('%', percent + 1) != std::string_view::npos) {
    throw Exceptions::InvalidFormatException(Messages::kErrors.invalidFormat);
  }
  NumberText number;
  const char conversion = text[letter];
  if (conversion == 'd' && size == sizeof(std::int32_t)) {
    number = NumberText::OfInteger(*static_cast<const std::int32_t*>(value));
  } else if (conversion == 'u' && size == sizeof(std::uint32_t)) {
    number = NumberText::OfUnsigned(*static_cast<const std::uint32_t*>(value));
  } else if (conversion == 'f' || conversion == 'g') {
    double real = 0;
    if (size == sizeof(float)) {
      real = static_cast<double>(*static_cast<const float*>(value));
    } else if (size == sizeof(double)) {
      real = *static_cast<const double*>(value);
    } else {
      return 0;
    }
    number = conversion == 'g' ? NumberText::OfReal(real) : NumberText::OfFixed(real);
  } else {
    throw Exceptions::InvalidFormatException(Messages::kErrors.invalidFormat);
  }
  const std::string_view before = text.substr(0, percent);
  const std::string_view after = text.substr(letter + 1);
  stream.Write(before.data(), before.size());
  stream.Write(number.View().data(), number.View().size());
  stream.Write(after.data(), after.size());
  return static_cast<int>(before.size() + number.View().size() + after.size());
}

}  // namespace Vell::IO
