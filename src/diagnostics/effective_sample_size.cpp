#include "diagnostics/effective_sample_size.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numeric>

#include "diagnostics/fourier.h"

namespace Hovar {
namespace {

/// The autocorrelations of all chains together.
class CombinedCorrelations {
 public:
  explicit CombinedCorrelations(const Chains& chains) : covariances_(chains.front().size()) {
    for (const Draws& chain : chains) {
      const Draws own = Autocovariances(chain);
      for (std::size_t lag = 0; lag < own.size(); ++lag) {
        covariances_[lag] += own[lag] / static_cast<double>(chains.size());
      }
    }
    const auto draws = static_cast<double>(covariances_.size());
    within_ = covariances_[0] * draws / (draws - 1);
    total_ = covariances_[0] + Variance(ChainMeans(chains));
  }

  double At(std::size_t lag) const { return 1 - (within_ - covariances_[lag]) / total_; }

 private:
  Draws covariances_;
  double within_ = 0;
  double total_ = 0;
};

/// The integrated autocorrelation time, Geyer's initial monotone sequence.
double AutocorrelationTime(const CombinedCorrelations& correlations, std::size_t draws) {
  constexpr std::size_t kMargin = 5;
  Draws rho(draws + 2, 0.0);
  double even = 1;
  double odd = correlations.At(1);
  rho[0] = even;
  rho[1] = odd;
  std::size_t t = 0;
  while (t + kMargin < draws && even + odd > 0) {
    t += 2;
    even = correlations.At(t);
    odd = correlations.At(t + 1);
    if (even + odd >= 0) {
      rho[t] = even;
      rho[t + 1] = odd;
    }
  }
  const std::size_t last = t;
  if (even > 0) {
    rho[last] = even;
  }
  for (t = 2; t + 2 <= last; t += 2) {
    if (rho[t] + rho[t + 1] > rho[t - 2] + rho[t - 1]) {
      rho[t] = (rho[t - 2] + rho[t - 1]) / 2;
      rho[t + 1] = rho[t];
    }
  }
  // Chains too short for a second pair count their first correlation once more.
  const auto end = rho.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(last, 1));
  return -1 + 2 * std::accumulate(rho.begin(), end, 0.0) + rho[last];
}

}  // namespace

Draws Autocovariances(const Draws& draws) {
  if (Variance(draws) == 0) {
    return Draws(draws.size(), 0.0);
  }
  std::size_t size = 1;
  while (size < 2 * draws.size()) {
    size *= 2;
  }
  const double mean = Mean(draws);
  Spectrum spectrum(size);
  for (std::size_t i = 0; i < draws.size(); ++i) {
    spectrum[i] = draws[i] - mean;
  }
  TransformFourier(spectrum);
  for (std::complex<double>& value : spectrum) {
    value = std::norm(value);
  }
  // The power spectrum is even, so its transform forward is that backward.
  TransformFourier(spectrum);
  Draws covariances(draws.size());
  for (std::size_t lag = 0; lag < draws.size(); ++lag) {
    covariances[lag] =
        spectrum[lag].real() / static_cast<double>(size) / static_cast<double>(draws.size());
  }
  return covariances;
}

double EffectiveSampleSize(const Chains& chains) {
  constexpr std::size_t kFewestDraws = 3;
  const std::size_t draws = chains.front().size();
  if (draws < kFewestDraws || AreDegenerate(chains)) {
    return kNotAvailable;
  }
  const auto count = static_cast<double>(draws * chains.size());
  const double time = AutocorrelationTime(CombinedCorrelations(chains), draws);
  return count / std::max(time, 1 / std::log10(count));
}

double TailEffectiveSampleSize(const Chains& chains) {
  constexpr double kLowerTail = 0.05;
  constexpr double kUpperTail = 0.95;
  Draws ascending = Pooled(chains);
  std::sort(ascending.begin(), ascending.end());
  std::array<double, 2> sizes{};
  std::size_t next = 0;
  for (const double probability : {kLowerTail, kUpperTail}) {
    const double quantile = Quantile(ascending, probability);
    Chains isBelow = chains;
    for (Draws& chain : isBelow) {
      for (double& value : chain) {
        value = value <= quantile ? 1 : 0;
      }
    }
    sizes[next++] = EffectiveSampleSize(SplitIntoHalves(isBelow));
  }
  return std::isnan(sizes[0]) || std::isnan(sizes[1]) ? kNotAvailable
                                                      : std::min(sizes[0], sizes[1]);
}

}  // namespace Hovar
