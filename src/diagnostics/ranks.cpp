#include "diagnostics/ranks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "diagnostics/normal_quantile.h"

namespace Hovar {

Chains NormalScores(const Chains& chains) {
  constexpr double kOffset = 3.0 / 8;
  const Draws all = Pooled(chains);
  std::vector<std::size_t> order(all.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(),
            [&all](std::size_t a, std::size_t b) { return all[a] < all[b]; });
  Draws scores(all.size());
  for (std::size_t begin = 0; begin < order.size();) {
    std::size_t end = begin + 1;
    while (end < order.size() && all[order[end]] == all[order[begin]]) {
      ++end;
    }
    const double rank = static_cast<double>(begin + 1 + end) / 2;
    const double score =
        NormalQuantile((rank - kOffset) / (static_cast<double>(all.size()) - 2 * kOffset + 1));
    for (; begin < end; ++begin) {
      scores[order[begin]] = score;
    }
  }
  Chains result;
  auto next = scores.begin();
  for (const Draws& chain : chains) {
    const auto end = next + static_cast<std::ptrdiff_t>(chain.size());
    result.emplace_back(next, end);
    next = end;
  }
  return result;
}

Chains DistancesFromMedian(const Chains& chains) {
  Draws all = Pooled(chains);
  std::sort(all.begin(), all.end());
  const std::size_t middle = all.size() / 2;
  const double median = all.size() % 2 == 1 ? all[middle] : (all[middle - 1] + all[middle]) / 2;
  Chains folded = chains;
  for (Draws& chain : folded) {
    for (double& value : chain) {
      value = std::fabs(value - median);
    }
  }
  return folded;
}

}  // namespace Hovar
