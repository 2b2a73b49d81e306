#include "diagnostics/draws.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Hovar {

double Mean(const Draws& draws) {
  return std::accumulate(draws.begin(), draws.end(), 0.0) / static_cast<double>(draws.size());
}

double Variance(const Draws& draws) {
  const double mean = Mean(draws);
  double sum = 0;
  for (const double draw : draws) {
    sum += (draw - mean) * (draw - mean);
  }
  return sum / (static_cast<double>(draws.size()) - 1);
}

Draws ChainMeans(const Chains& chains) {
  Draws means;
  for (const Draws& chain : chains) {
    means.push_back(Mean(chain));
  }
  return means;
}

Draws Pooled(const Chains& chains) {
  Draws all;
  for (const Draws& chain : chains) {
    all.insert(all.end(), chain.begin(), chain.end());
  }
  return all;
}

double Quantile(const Draws& ascending, double probability) {
  const double place = static_cast<double>(ascending.size() - 1) * probability;
  const auto low = static_cast<std::size_t>(place);
  const double h = place - static_cast<double>(low);
  if (h == 0 || ascending[low + 1] == ascending[low]) {
    return ascending[low];
  }
  return (1 - h) * ascending[low] + h * ascending[low + 1];
}

Chains SplitIntoHalves(const Chains& chains) {
  Chains halves;
  for (const Draws& chain : chains) {
    const auto half = static_cast<std::ptrdiff_t>(chain.size() / 2);
    halves.emplace_back(chain.begin(), chain.begin() + half);
    halves.emplace_back(chain.end() - half, chain.end());
  }
  return halves;
}

bool AreDegenerate(const Chains& chains) {
  const Draws all = Pooled(chains);
  if (!std::all_of(all.begin(), all.end(), [](double value) { return std::isfinite(value); })) {
    return true;
  }
  const auto [least, most] = std::minmax_element(all.begin(), all.end());
  return *most - *least < std::numeric_limits<double>::epsilon();
}

}  // namespace Hovar
