#pragma once

// The exponential function in plain IEEE double arithmetic: the same bits on every processor and
// with every compiler, alone or in a loop that the compiler turns into vector instructions. The C
// library's own differs in the last bit between processors, which could flip a printed digit.
//
// Method: argument reduction x = k ln 2 + r with |r| <= ln 2 / 2, where ln 2 is split in two parts
// of which the first times any k is exact (W. J. Cody, W. Waite, Software Manual for the Elementary
// Functions, 1980, chapter 6); then the Taylor series of e^r to the 13th power, whose remainder is
// below 4.2e-18; then a scaling by 2^k in two exact steps, the second of which rounds once where
// the result is subnormal. The error is below 1 unit in the last place over the whole range.

#include <bit>
#include <cstdint>

namespace Vell {

/// Numbers that are computed together, one vector register of them; a single one is a plain double.
template <int kLanes>
struct Lanes {
  using Real [[gnu::vector_size(kLanes * sizeof(double))]] = double;
  using Bits [[gnu::vector_size(kLanes * sizeof(std::uint64_t))]] = std::uint64_t;
};
template <>
struct Lanes<1> {
  using Real = double;
  using Bits = std::uint64_t;
};

/// x := e^x for every lane: the same operations however many lanes there are (1, 2, 4 or 8), so
/// lane i has the bits that Exp gives for it alone. Range and special values are those of Exp. A
/// kernel calls it from a form that is compiled for the instruction set
/// (linalg/kernels/dispatch.h).
template <int kLanes>
[[gnu::always_inline]] inline void ReplaceByExp(typename Lanes<kLanes>::Real& x) noexcept {
  using Real = typename Lanes<kLanes>::Real;
  using Bits = typename Lanes<kLanes>::Bits;
  // Beyond these the result is 0 or infinite, which the scaling finds by itself. A NaN passes.
  const Real lowest = Real{} - 746;
  const Real highest = Real{} + 710;
  x = x < lowest ? lowest : x;
  x = x > highest ? highest : x;

  // Adding this number leaves the rounded integer in the low bits of the sum.
  constexpr double kRounder = 0x1.8p52;
  constexpr double kInverseLn2 = 0x1.71547652b82fep0;
  constexpr double kLn2High = 0x1.62e42fee00000p-1;  // the upper 32 bits of ln 2
  constexpr double kLn2Low = 0x1.a39ef35793c76p-33;
  const Real shifted = x * kInverseLn2 + kRounder;
  const Real k = shifted - kRounder;
  const Real high = x - k * kLn2High;
  const Real low = k * kLn2Low;
  const Real r = high - low;

  Real series = Real{} + 1.0 / 6227020800;  // 1 / 13!
  series = series * r + 1.0 / 479001600;
  series = series * r + 1.0 / 39916800;
  series = series * r + 1.0 / 3628800;
  series = series * r + 1.0 / 362880;
  series = series * r + 1.0 / 40320;
  series = series * r + 1.0 / 5040;
  series = series * r + 1.0 / 720;
  series = series * r + 1.0 / 120;
  series = series * r + 1.0 / 24;
  series = series * r + 1.0 / 6;
  series = series * r + 1.0 / 2;
  const Real power = 1.0 + (high + (series * (r * r) - low));

  // 2^k as the product of two powers that are both normal numbers.
  constexpr std::uint64_t kBias = 1023;
  constexpr std::uint64_t kOffset = 2048;
  const Bits bits =  // k, in two's complement
      __builtin_bit_cast(Bits, shifted) - std::bit_cast<std::uint64_t>(kRounder);
  // An arithmetic shift made of operations that all vector units have for 64 bits.
  const Bits half = ((bits + kOffset) >> 1) - kOffset / 2;
  const Bits scale1 = (half + kBias) << 52;
  const Bits scale2 = (bits - half + kBias) << 52;
  x = power * __builtin_bit_cast(Real, scale1) * __builtin_bit_cast(Real, scale2);
}

/// e^x, for any double; no errors. Infinite above 709.79, 0 below -745.14, 1 for 0 of either sign,
/// a NaN for a NaN.
inline double Exp(double x) noexcept {
  ReplaceByExp<1>(x);
  return x;
}

}  // namespace Vell
