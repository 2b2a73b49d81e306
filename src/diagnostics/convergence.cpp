#include "diagnostics/convergence.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "diagnostics/effective_sample_size.h"
#include "diagnostics/ranks.h"

namespace Hovar {
namespace {

double LargerRhat(double one, double other) {
  return std::isnan(one) || std::isnan(other) ? kNotAvailable : std::max(one, other);
}

}  // namespace

bool Convergence::IsKnown() const noexcept {
  return !std::isnan(rhat) && !std::isnan(bulkSampleSize) && !std::isnan(tailSampleSize);
}

bool Convergence::IsGood() const noexcept {
  return rhat <= kLargestRhat && bulkSampleSize >= kSmallestSampleSize &&
         tailSampleSize >= kSmallestSampleSize;
}

double Rhat(const Chains& chains) {
  if (AreDegenerate(chains)) {
    return kNotAvailable;
  }
  const auto draws = static_cast<double>(chains.front().size());
  double within = 0;
  for (const Draws& chain : chains) {
    within += Variance(chain) / static_cast<double>(chains.size());
  }
  const double between = draws * Variance(ChainMeans(chains));
  return std::sqrt((between / within + draws - 1) / draws);
}

Convergence JudgeConvergence(const Chains& chains) {
  constexpr std::size_t kFewestDraws = 4;
  if (chains.empty() || chains.front().size() < kFewestDraws || AreDegenerate(chains)) {
    return {kNotAvailable, kNotAvailable, kNotAvailable};
  }
  const Chains scores = NormalScores(SplitIntoHalves(chains));
  const double bulk = Rhat(scores);
  const double tails = Rhat(NormalScores(SplitIntoHalves(DistancesFromMedian(chains))));
  return {LargerRhat(bulk, tails), EffectiveSampleSize(scores), TailEffectiveSampleSize(chains)};
}

}  // namespace Hovar
