#pragma once

// Which hospitals stand out, by three rules side by side:
//
//   limits        the ratio's limits leave 1 out: the hospital's outcomes are hard to explain by chance
//   differences   they are hard to explain even in a hospital drawn from the distribution of all, whose
//                 ordinary differences are not a reason to flag anybody (D. J. Spiegelhalter, Statistics
//                 in Medicine 24, 2005, pages 1185-1202)
//   posterior     the probability that the shrunken ratio exceeds 1 is above 0.975, or below 0.025
//
// each with a second level at 99.8 % and 0.999. Hospitals with too few expected events are never
// flagged.

#include <cstdint>
#include <span>
#include <vector>

namespace Hovar {

/// High is more events than expected.
enum class Flag : std::int8_t { kVeryLow = -2, kLow = -1, kNone = 0, kHigh = 1, kVeryHigh = 2 };

inline constexpr double kFlagLevel = 0.05;  // two-sided
inline constexpr double kStrictFlagLevel = 0.002;

/// By a two-sided p-value and the side on which the hospital lies. None for what is not a number.
Flag FlagByP(double p, bool isHigh) noexcept;

/// By the probability that the ratio exceeds 1.
Flag FlagByPosterior(double aboveOne) noexcept;

/// The flags of one rule, counted.
struct FlagCounts {
  std::int32_t judged = 0;  // hospitals that could be flagged
  std::int32_t low = 0;     // at either level
  std::int32_t high = 0;
  std::int32_t veryLow = 0;  // at the strict one
  std::int32_t veryHigh = 0;
  /// How many chance would flag: were there no differences (limits) or no other than those of the model
  /// (differences), at either and at the strict level, a little less where counts are small; among the
  /// flagged those on the wrong side of 1 (posterior).
  double byChance = 0;
  double strictByChance = 0;

  void Add(Flag flag) noexcept;
};

/// The share of flags of the posterior rule that would be right, and the share of hospitals with a ratio
/// above the threshold that it would flag, for hospitals of these sizes whose effects are normal with this
/// SD: what is to be expected of the rule before anything is seen. `information` has, per hospital, the
/// variance of its events in an average hospital. A share of nothing is not a number.
/// Source: Y. He, F. Selck, S.-L. T. Normand, On the accuracy of classifying hospitals on their performance
/// measures, Statistics in Medicine 33 (2014), pages 1081-1103. Normal approximations throughout.
struct FlagReliability {
  double rightShare = 0;
  double foundShare = 0;
  double meanReliability = 0;  // tau^2 / (tau^2 + 1 / information)
};
FlagReliability ReliabilityOfFlags(std::span<const double> information, double tau,
                                   double threshold);

/// The smallest shift of P, by its size, under which a hospital's flag is not the one without a shift; of two
/// with opposite signs the first one. 0 where none of them turns it.
double TippingPoint(std::span<const double> shifts, std::span<const Flag> flags,
                    Flag withoutShift) noexcept;

}  // namespace Hovar
