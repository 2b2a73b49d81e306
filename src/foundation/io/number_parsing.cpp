// The reading half of number_text.h.

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>

#include "foundation/ascii.h"
#include "foundation/io/number_text.h"

namespace Vell::IO {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

/// True when `text` begins with `word`, which is in lower case, in letters of either case.
bool BeginsWith(std::string_view text, std::string_view word) noexcept {
  return text.size() >= word.size() &&
         std::equal(word.begin(), word.end(), text.begin(),
                    [](char wanted, char given) { return wanted == ToLower(given); });
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

/// The exponent after the digits of a number: its value and the bytes it takes.
struct Exponent {
  double value = 0;
  std::size_t length = 0;
};

/// Reads a letter, an optional sign and digits; nothing is taken when one of them is missing.
Exponent ReadExponent(std::string_view text, char letter) noexcept {
  if (text.empty() || ToLower(text[0]) != letter) {
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
Magnitude MeasureDigits(std::string_view text, bool (*isDigit)(int) noexcept, char exponentLetter,
                        double unitsPerDigit) noexcept {
  bool hasDigits = false;
  bool isAfterPoint = false;
  bool isLeadingZero = true;
  double digitsBeforePoint = 0;
  std::size_t length = 0;
  for (; length < text.size(); ++length) {
    const char c = text[length];
    if (c == '.' && !isAfterPoint) {
      isAfterPoint = true;
      continue;
    }
    if (!isDigit(c)) {
      break;
    }
    hasDigits = true;
    isLeadingZero = isLeadingZero && c == '0';
    if (isAfterPoint) {
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
    const Magnitude hexadecimal = rest.starts_with('0') && BeginsWith(rest.substr(1), "x")
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
