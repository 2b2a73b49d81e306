#pragma once

// The natural logarithm in plain IEEE double arithmetic: the same bits on every processor and with
// every compiler, unlike the C library's.
//
// Method: x = 2^k m with m in [sqrt(1/2), sqrt(2)); then ln m is the series of twice the inverse
// hyperbolic tangent of s = f / (2 + f) with f = m - 1 (M. Abramowitz, I. A. Stegun, Handbook of
// Mathematical Functions, 1964, 4.1.27), up to s^21, whose remainder is below 1e-18 of the sum.
// With R = 2 s^2 / 3 + 2 s^4 / 5 + ... it is summed as f - (f^2 / 2 - s (f^2 / 2 + R)), in which f
// is exact and everything else small. ln 2 is split in two parts, of which the first times any k is
// exact. The error is below 1 unit in the last place over the whole range.

#include <bit>
#include <cstdint>
#include <limits>

namespace Vell {

/// ln x. -infinity for 0 of either sign, a NaN for a negative number and for a NaN, infinity for
/// infinity, exactly 0 for 1. Subnormal numbers are as accurate as any other. No errors, no state.
inline double Log(double x) noexcept {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (!(x > 0)) {
    return x == 0 ? -kInfinity : std::numeric_limits<double>::quiet_NaN();
  }
  if (x == kInfinity) {
    return x;
  }
  std::int64_t k = 0;
  if (x < std::numeric_limits<double>::min()) {  // a subnormal number
    x *= 0x1p54;
    k = -54;
  }
  // The bits of a number in [sqrt(1/2), sqrt(2)) are those of x, less k in the exponent's place.
  constexpr std::uint64_t kSqrtHalf = 0x3FE6'A09E'667F'3BCD;
  const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
  const std::int64_t exponent = static_cast<std::int64_t>(bits - kSqrtHalf) >> 52;
  const double f = std::bit_cast<double>(bits - (static_cast<std::uint64_t>(exponent) << 52)) - 1;
  k += exponent;

  const double s = f / (2 + f);
  const double z = s * s;
  double series = 2.0 / 21;
  series = series * z + 2.0 / 19;
  series = series * z + 2.0 / 17;
  series = series * z + 2.0 / 15;
  series = series * z + 2.0 / 13;
  series = series * z + 2.0 / 11;
  series = series * z + 2.0 / 9;
  series = series * z + 2.0 / 7;
  series = series * z + 2.0 / 5;
  series = series * z + 2.0 / 3;
  const double halfSquare = 0.5 * f * f;
  constexpr double kLn2High = 0x1.62e42fee00000p-1;  // the upper 32 bits of ln 2
  constexpr double kLn2Low = 0x1.a39ef35793c76p-33;
  const auto powers = static_cast<double>(k);
  const double small = s * (halfSquare + series * z) + powers * kLn2Low;
  return powers * kLn2High - ((halfSquare - small) - f);
}

}  // namespace Vell
