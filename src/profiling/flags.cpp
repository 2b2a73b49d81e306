#include "profiling/flags.h"

#include <cmath>
#include <limits>

#include "foundation/logarithm.h"
#include "profiling/distributions.h"
#include "profiling/quadrature.h"

namespace Hovar {
namespace {

Flag FlagAt(bool isFlagged, bool isStrict, bool isHigh) noexcept {
  if (!isFlagged) {
    return Flag::kNone;
  }
  if (isHigh) {
    return isStrict ? Flag::kVeryHigh : Flag::kHigh;
  }
  return isStrict ? Flag::kVeryLow : Flag::kLow;
}

}  // namespace

Flag FlagByP(double p, bool isHigh) noexcept {
  return FlagAt(p < kFlagLevel, p < kStrictFlagLevel, isHigh);
}

Flag FlagByPosterior(double aboveOne) noexcept {
  constexpr double kTail = kFlagLevel / 2;
  constexpr double kStrictTail = kStrictFlagLevel / 2;
  const bool isHigh = aboveOne > 0.5;
  const double tail = isHigh ? 1 - aboveOne : aboveOne;
  return FlagAt(tail < kTail, tail < kStrictTail, isHigh);
}

void FlagCounts::Add(Flag flag) noexcept {
  judged += 1;
  high += flag == Flag::kHigh || flag == Flag::kVeryHigh ? 1 : 0;
  low += flag == Flag::kLow || flag == Flag::kVeryLow ? 1 : 0;
  veryHigh += flag == Flag::kVeryHigh ? 1 : 0;
  veryLow += flag == Flag::kVeryLow ? 1 : 0;
}

FlagReliability ReliabilityOfFlags(std::span<const double> information, double tau,
                                   double threshold) {
  constexpr double kCritical = 1.959963984540054;
  constexpr int kSteps = 400;
  constexpr double kReach = 8;
  const double logThreshold = Vell::Log(threshold);
  double flagged = 0;
  double right = 0;
  double far = 0;
  double found = 0;
  double reliability = 0;
  for (const double v : information) {
    const double share = tau * tau / (tau * tau + 1 / v);
    reliability += share;
    if (!(share > 0)) {
      continue;
    }
    // Flagged high is an estimate above this: its shrunken value is 1.96 posterior SDs above 0.
    const double limit = kCritical / std::sqrt(v * share);
    for (int step = 0; step < kSteps; ++step) {
      const double left = -kReach + 2 * kReach * step / kSteps;
      const double z = left + kReach / kSteps;
      const double mass = NormalDistribution(left + 2 * kReach / kSteps) - NormalDistribution(left);
      const double isFlagged = NormalDistribution((tau * z - limit) * std::sqrt(v));
      flagged += mass * isFlagged;
      right += z > 0 ? mass * isFlagged : 0;
      far += tau * z > logThreshold ? mass : 0;
      found += tau * z > logThreshold ? mass * isFlagged : 0;
    }
  }
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  return {flagged > 0 ? right / flagged : kNone, far > 0 ? found / far : kNone,
          information.empty() ? kNone : reliability / static_cast<double>(information.size())};
}

double TippingPoint(std::span<const double> shifts, std::span<const Flag> flags,
                    Flag withoutShift) noexcept {
  double tipping = 0;
  for (std::size_t k = 0; k < shifts.size(); ++k) {
    const bool isSmaller = tipping == 0 || std::fabs(shifts[k]) < std::fabs(tipping);
    if (flags[k] != withoutShift && shifts[k] != 0 && isSmaller) {
      tipping = shifts[k];
    }
  }
  return tipping;
}

}  // namespace Hovar
