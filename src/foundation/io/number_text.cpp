#include "foundation/io/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/stream.h"

namespace Vell::IO {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

constexpr bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr bool IsHexDigit(char c) noexcept {
  const char lower = static_cast<char>(c | 0x20);
  return IsDigit(c) || (lower >= 'a' && lower <= 'f');
}

/// True when `text` begins with `word`, letters of either case alike.
bool BeginsWith(std::string_view text, std::string_view word) noexcept {
  return text.size() >= word.size() &&
         std::equal(word.begin(), word.end(), text.begin(),
                    [](char wanted, char given) { return wanted == (given | 0x20); });
}

/// Splits an optional sign off; true when it is a minus.
bool TakeSign(std::string_view& text) noexcept {
  const bool hasSign = !text.empty() && (text[0] == '-' || text[0] == '+');
  const bool isNegative = hasSign && text[0] == '-';
  text.remove_prefix(hasSign ? 1 : 0);
  return isNegative;
}

/// The digits of a number and the value of its exponent part: what decides, for a number beyond the
/// range of a double, on which side it lies.
struct Magnitude {
  bool hasDigits = false;
  /// Length of digits, point and exponent together.
  std::size_t length = 0;
  /// Position of the first digit that is not 0, relative to the point, plus the exponent in the
  /// same unit of one digit; positive for large numbers.
  double firstDigit = 0;
};

/// The exponent behind the digits of a number: its value and the bytes it takes.
struct Exponent {
  double value = 0;
  std::size_t length = 0;
};

/// Reads a letter, an optional sign and digits; nothing is taken when one of them is missing.
Exponent ReadExponent(std::string_view text, char letter) noexcept {
  if (text.empty() || (text[0] | 0x20) != letter) {
    return {};
  }
  std::string_view digits = text.substr(1);
  const bool isNegative = TakeSign(digits);
  double value = 0;
  std::size_t count = 0;
  for (; count < digits.size() && IsDigit(digits[count]); ++count) {
    value = value * 10 + (digits[count] - '0');
  }
  if (count == 0) {
    return {};
  }
  return {isNegative ? -value : value, text.size() - digits.size() + count};
}

/// Reads digits, a point, digits and an exponent part introduced by `exponentLetter` and counted in
/// units of which one digit has `unitsPerDigit` (1 for decimal, 4 for hexadecimal digits).
Magnitude MeasureDigits(std::string_view text, bool (*isDigit)(char) noexcept, char exponentLetter,
                        double unitsPerDigit) noexcept {
  bool hasDigits = false;
  bool isBehindPoint = false;
  bool isLeadingZero = true;
  double digitsBeforePoint = 0;
  std::size_t length = 0;
  for (; length < text.size(); ++length) {
    const char c = text[length];
    if (c == '.' && !isBehindPoint) {
      isBehindPoint = true;
      continue;
    }
    if (!isDigit(c)) {
      break;
    }
    hasDigits = true;
    isLeadingZero = isLeadingZero && c == '0';
    if (isBehindPoint) {
      digitsBeforePoint -= isLeadingZero ? 1 : 0;
    } else {
      digitsBeforePoint += isLeadingZero ? 0 : 1;
    }
  }
  if (!hasDigits) {
    return {};
  }
  const Exponent exponent = ReadExponent(text.substr(length), exponentLetter);
  return {true, length + exponent.length, digitsBeforePoint * unitsPerDigit + exponent.value};
}

double Convert(std::string_view digits, std::chars_format format, double firstDigit) noexcept {
  double value = 0;
  const auto status =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, format).ec;
  if (status == std::errc::result_out_of_range) {
    return firstDigit > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  }
  return value;
}

/// The value of decimal digits, or nothing when it exceeds `limit`.
std::optional<std::uint64_t> ParseMagnitude(std::string_view digits, std::uint64_t limit) noexcept {
  std::uint64_t value = 0;
  for (const char c : digits) {
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (value > (limit - digit) / 10) {
      return std::nullopt;
    }
    value = value * 10 + digit;
  }
  return value;
}

}  // namespace

NumberText NumberText::OfInteger(std::int32_t value) noexcept {
  NumberText number;
  const auto result =
      std::to_chars(number.text_.data(), number.text_.data() + number.text_.size(), value);
  number.length_ = static_cast<std::size_t>(result.ptr - number.text_.data());
  return number;
}

NumberText NumberText::OfUnsigned(std::uint32_t value) noexcept {
  NumberText number;
  const auto result =
      std::to_chars(number.text_.data(), number.text_.data() + number.text_.size(), value);
  number.length_ = static_cast<std::size_t>(result.ptr - number.text_.data());
  return number;
}

namespace {

std::size_t FormatReal(std::span<char> text, double value, std::chars_format format) noexcept {
  constexpr int kDigits = 6;
  const double written = std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
  const auto result =
      std::to_chars(text.data(), text.data() + text.size(), written, format, kDigits);
  return static_cast<std::size_t>(result.ptr - text.data());
}

}  // namespace

namespace {

// Most numbers that are written lie between 0.0001 and a million and need no exponent. Scaled by an
// exact power of ten, so with a single rounding, they show their six digits as the integer part of
// the product; the fraction decides the rounding unless it is too close to one half to be sure. All
// other numbers take the exact way of the standard library.

constexpr std::int32_t kSixDigits = 1'000'000;

struct SixDigits {
  std::int32_t digits;    // 100000 .. 999999
  std::int32_t exponent;  // of the first digit: -4 .. 5
};

/// The six significant digits of a number in [0.0001, 1000000), or nothing where rounding is not
/// certain.
std::optional<SixDigits> FindSixDigits(double value) noexcept {
  constexpr std::array kPowers = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};  // all exact
  constexpr std::array kThresholds = {1e5, 1e4, 1e3, 1e2, 1e1, 1e0, 1e-1, 1e-2, 1e-3};
  std::int32_t scale = 0;  // of the product that has six digits before the point
  for (const double threshold : kThresholds) {
    scale += value < threshold ? 1 : 0;
  }
  const double scaled = value * kPowers[static_cast<std::size_t>(scale)];
  auto digits = static_cast<std::int32_t>(scaled);
  const double fraction = scaled - digits;
  // The product is off by at most half a unit in its last place, 2^-34.
  constexpr double kUncertain = 1e-9;
  if (std::fabs(fraction - 0.5) < kUncertain) {
    return std::nullopt;
  }
  digits += fraction > 0.5 ? 1 : 0;
  std::int32_t exponent = 5 - scale;
  if (digits == kSixDigits) {
    digits /= 10;
    ++exponent;
  }
  return exponent <= 5 ? std::optional(SixDigits{digits, exponent}) : std::nullopt;
}

/// Writes six digits in fixed notation without trailing zeros and returns the end.
char* WriteFixed(char* to, const SixDigits& number) noexcept {
  std::array<char, 6> digits;
  std::int32_t rest = number.digits;
  std::int32_t count = 0;  // up to the last digit that is not 0
  for (std::int32_t i = 5; i >= 0; --i) {
    const std::int32_t digit = rest % 10;
    rest /= 10;
    digits[static_cast<std::size_t>(i)] = static_cast<char>('0' + digit);
    count = count == 0 && digit != 0 ? i + 1 : count;
  }
  const char* from = digits.data();
  const char* const end = from + count;
  if (number.exponent < 0) {
    to = std::copy_n("0.000", 1 - number.exponent, to);
  } else {
    to = std::copy_n(from, number.exponent + 1, to);  // zeros before the point are significant
    from += number.exponent + 1;
    if (from < end) {
      *to++ = '.';
    }
  }
  return from < end ? std::copy(from, end, to) : to;
}

}  // namespace

NumberText NumberText::OfReal(double value) noexcept {
  NumberText number;
  const double magnitude = std::fabs(value);
  if (magnitude >= 1e-4 && magnitude < 1e6) {
    if (const std::optional<SixDigits> digits = FindSixDigits(magnitude)) {
      number.text_[0] = '-';
      char* const start = number.text_.data() + (value < 0 ? 1 : 0);
      number.length_ = static_cast<std::size_t>(WriteFixed(start, *digits) - number.text_.data());
      return number;
    }
  }
  number.length_ = FormatReal(number.text_, value, std::chars_format::general);
  return number;
}

NumberText NumberText::OfFixed(double value) noexcept {
  NumberText number;
  number.length_ = FormatReal(number.text_, value, std::chars_format::fixed);
  return number;
}

int PrintNumber(Stream& stream, const char* format, const void* value, std::size_t size) {
  const std::string_view text(format);
  const std::size_t percent = text.find('%');
  const std::size_t letter =
      percent == std::string_view::npos ? percent : text.find_first_not_of("hlL", percent + 1);
  if (letter == std::string_view::npos || text.find('%', percent + 1) != std::string_view::npos) {
    throw Exceptions::InvalidFormatException("Invalid format");
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
    throw Exceptions::InvalidFormatException("Invalid format");
  }
  const std::string_view before = text.substr(0, percent);
  const std::string_view after = text.substr(letter + 1);
  stream.Write(before.data(), before.size());
  stream.Write(number.View().data(), number.View().size());
  stream.Write(after.data(), after.size());
  return static_cast<int>(before.size() + number.View().size() + after.size());
}

double ParseReal(std::string_view text, std::size_t* used) noexcept {
  const std::size_t blanks = std::min(text.find_first_not_of(kBlanks), text.size());
  std::string_view rest = text.substr(blanks);
  const bool isNegative = TakeSign(rest);
  const std::size_t before = text.size() - rest.size();

  double value = 0;
  std::size_t length = 0;
  if (BeginsWith(rest, "inf")) {
    value = std::numeric_limits<double>::infinity();
    length = BeginsWith(rest, "infinity") ? 8 : 3;
  } else if (BeginsWith(rest, "nan")) {
    value = std::numeric_limits<double>::quiet_NaN();
    length = 3;
    if (rest.substr(length).starts_with('(')) {
      const std::size_t close = rest.find_first_not_of(
          "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_", length + 1);
      length = close != std::string_view::npos && rest[close] == ')' ? close + 1 : length;
    }
  } else {
    constexpr std::size_t kPrefix = 2;  // "0x"
    const Magnitude hexadecimal = BeginsWith(rest, "0x")
                                      ? MeasureDigits(rest.substr(kPrefix), IsHexDigit, 'p', 4)
                                      : Magnitude();
    if (hexadecimal.hasDigits) {
      length = kPrefix + hexadecimal.length;
      value = Convert(rest.substr(kPrefix, hexadecimal.length), std::chars_format::hex,
                      hexadecimal.firstDigit);
    } else {
      const Magnitude decimal = MeasureDigits(rest, IsDigit, 'e', 1);
      length = decimal.length;
      value = Convert(rest.substr(0, length), std::chars_format::general, decimal.firstDigit);
    }
  }
  if (used != nullptr) {
    *used = length > 0 ? before + length : 0;
  }
  return isNegative && length > 0 ? -value : value;
}

std::int32_t ParseInteger(std::string_view text) noexcept {
  const bool isNegative = TakeSign(text);
  const std::uint64_t limit = static_cast<std::uint64_t>(INT64_MAX) + (isNegative ? 1 : 0);
  const std::uint64_t magnitude = ParseMagnitude(text, limit).value_or(limit);
  return static_cast<std::int32_t>(
      static_cast<std::uint32_t>(isNegative ? 0 - magnitude : magnitude));
}

std::uint32_t ParseUnsigned(std::string_view text) noexcept {
  const bool isNegative = TakeSign(text);
  const std::optional<std::uint64_t> magnitude = ParseMagnitude(text, UINT64_MAX);
  if (!magnitude.has_value()) {
    return UINT32_MAX;  // the low half of the clamped value, whatever the sign
  }
  return static_cast<std::uint32_t>(isNegative ? 0 - *magnitude : *magnitude);
}

}  // namespace Vell::IO
