#include "diagnostics/convergence.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <numbers>
#include <numeric>

namespace Hovar {
namespace {

using Chain = std::vector<double>;
using Chains = std::vector<Chain>;

constexpr double kNotAvailable = std::numeric_limits<double>::quiet_NaN();

double MeanOf(const Chain& values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double VarianceOf(const Chain& values) {
  const double mean = MeanOf(values);
  double sum = 0;
  for (const double value : values) {
    sum += (value - mean) * (value - mean);
  }
  return sum / (static_cast<double>(values.size()) - 1);
}

Chain AllOf(const Chains& chains) {
  Chain all;
  for (const Chain& chain : chains) {
    all.insert(all.end(), chain.begin(), chain.end());
  }
  return all;
}

Chain MeansOf(const Chains& chains) {
  Chain means;
  for (const Chain& chain : chains) {
    means.push_back(MeanOf(chain));
  }
  return means;
}

/// True when nothing can be said: a draw that is not finite, or draws that do not differ.
bool IsDegenerate(const Chains& chains) {
  const Chain all = AllOf(chains);
  if (!std::all_of(all.begin(), all.end(), [](double value) { return std::isfinite(value); })) {
    return true;
  }
  const auto [least, most] = std::minmax_element(all.begin(), all.end());
  return *most - *least < std::numeric_limits<double>::epsilon();
}

/// The halves of each chain; of an odd number of draws the middle one is left out.
Chains Split(const Chains& chains) {
  Chains halves;
  for (const Chain& chain : chains) {
    const auto half = static_cast<std::ptrdiff_t>(chain.size() / 2);
    halves.emplace_back(chain.begin(), chain.begin() + half);
    halves.emplace_back(chain.end() - half, chain.end());
  }
  return halves;
}

/// The distances of all draws from their median.
Chains Fold(const Chains& chains) {
  Chain all = AllOf(chains);
  std::sort(all.begin(), all.end());
  const std::size_t middle = all.size() / 2;
  const double median = all.size() % 2 == 1 ? all[middle] : (all[middle - 1] + all[middle]) / 2;
  Chains folded = chains;
  for (Chain& chain : folded) {
    for (double& value : chain) {
      value = std::fabs(value - median);
    }
  }
  return folded;
}

/// The normal scores of the ranks, with G. Blom's constant 3/8; equal draws share their mean rank.
Chains NormalScores(const Chains& chains) {
  constexpr double kOffset = 3.0 / 8;
  const Chain all = AllOf(chains);
  std::vector<std::size_t> order(all.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(),
            [&all](std::size_t a, std::size_t b) { return all[a] < all[b]; });
  Chain scores(all.size());
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
  for (const Chain& chain : chains) {
    const auto end = next + static_cast<std::ptrdiff_t>(chain.size());
    result.emplace_back(next, end);
    next = end;
  }
  return result;
}

double Rhat(const Chains& halves) {
  if (IsDegenerate(halves)) {
    return kNotAvailable;
  }
  const auto draws = static_cast<double>(halves.front().size());
  double within = 0;
  for (const Chain& half : halves) {
    within += VarianceOf(half) / static_cast<double>(halves.size());
  }
  const double between = draws * VarianceOf(MeansOf(halves));
  return std::sqrt((between / within + draws - 1) / draws);
}

using Spectrum = std::vector<std::complex<double>>;

/// The discrete Fourier transform in place, for a power of two: the even and the odd places are
/// transformed on their own and combined, smallest pieces first.
void Transform(Spectrum& values) {
  const std::size_t size = values.size();
  for (std::size_t i = 1, reversed = 0; i < size; ++i) {
    std::size_t bit = size >> 1;
    for (; (reversed & bit) != 0; bit >>= 1) {
      reversed ^= bit;
    }
    reversed ^= bit;
    if (i < reversed) {
      std::swap(values[i], values[reversed]);
    }
  }
  for (std::size_t length = 2; length <= size; length *= 2) {
    const std::size_t half = length / 2;
    for (std::size_t k = 0; k < half; ++k) {
      const auto turn = std::polar(
          1.0, -2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(length));
      for (std::size_t begin = k; begin < size; begin += length) {
        const std::complex<double> odd = turn * values[begin + half];
        values[begin + half] = values[begin] - odd;
        values[begin] += odd;
      }
    }
  }
}

/// The autocovariances of a chain at lags 0, 1, ..., divided by the number of draws at every lag.
Chain Autocovariances(const Chain& chain) {
  if (VarianceOf(chain) == 0) {
    return Chain(chain.size(), 0.0);
  }
  std::size_t size = 1;
  while (size < 2 * chain.size()) {
    size *= 2;
  }
  const double mean = MeanOf(chain);
  Spectrum spectrum(size);
  for (std::size_t i = 0; i < chain.size(); ++i) {
    spectrum[i] = chain[i] - mean;
  }
  Transform(spectrum);
  for (std::complex<double>& value : spectrum) {
    value = std::norm(value);
  }
  // The power spectrum is even, so its transform forward is that backward.
  Transform(spectrum);
  Chain covariances(chain.size());
  for (std::size_t lag = 0; lag < chain.size(); ++lag) {
    covariances[lag] =
        spectrum[lag].real() / static_cast<double>(size) / static_cast<double>(chain.size());
  }
  return covariances;
}

/// The autocorrelations of all halves together.
class CombinedCorrelations {
 public:
  explicit CombinedCorrelations(const Chains& halves) : covariances_(halves.front().size()) {
    for (const Chain& half : halves) {
      const Chain own = Autocovariances(half);
      for (std::size_t lag = 0; lag < own.size(); ++lag) {
        covariances_[lag] += own[lag] / static_cast<double>(halves.size());
      }
    }
    const auto draws = static_cast<double>(covariances_.size());
    within_ = covariances_[0] * draws / (draws - 1);
    total_ = covariances_[0] + VarianceOf(MeansOf(halves));
  }

  double At(std::size_t lag) const { return 1 - (within_ - covariances_[lag]) / total_; }

 private:
  Chain covariances_;
  double within_ = 0;
  double total_ = 0;
};

/// The integrated autocorrelation time, Geyer's initial monotone sequence.
double AutocorrelationTime(const CombinedCorrelations& correlations, std::size_t draws) {
  constexpr std::size_t kMargin = 5;
  Chain rho(draws + 2, 0.0);
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

double SampleSize(const Chains& halves) {
  constexpr std::size_t kFewestDraws = 3;
  const std::size_t draws = halves.front().size();
  if (draws < kFewestDraws || IsDegenerate(halves)) {
    return kNotAvailable;
  }
  const auto count = static_cast<double>(draws * halves.size());
  const double time = AutocorrelationTime(CombinedCorrelations(halves), draws);
  // Draws that alternate can be worth more than independent ones, within reason.
  return count / std::max(time, 1 / std::log10(count));
}

/// The quantile of the ascending values by linear interpolation (type 7 of R. J. Hyndman, Y. Fan,
/// The American Statistician 50, 1996, pages 361-365).
double Quantile(const Chain& ascending, double probability) {
  const double place = static_cast<double>(ascending.size() - 1) * probability;
  const auto low = static_cast<std::size_t>(place);
  const double h = place - static_cast<double>(low);
  if (h == 0 || ascending[low + 1] == ascending[low]) {
    return ascending[low];
  }
  return (1 - h) * ascending[low] + h * ascending[low + 1];
}

double TailSampleSize(const Chains& chains) {
  constexpr double kLowerTail = 0.05;
  constexpr double kUpperTail = 0.95;
  Chain ascending = AllOf(chains);
  std::sort(ascending.begin(), ascending.end());
  std::array<double, 2> sizes{};
  std::size_t next = 0;
  for (const double probability : {kLowerTail, kUpperTail}) {
    const double quantile = Quantile(ascending, probability);
    Chains isBelow = chains;
    for (Chain& chain : isBelow) {
      for (double& value : chain) {
        value = value <= quantile ? 1 : 0;
      }
    }
    sizes[next++] = SampleSize(Split(isBelow));
  }
  return std::isnan(sizes[0]) || std::isnan(sizes[1]) ? kNotAvailable
                                                      : std::min(sizes[0], sizes[1]);
}

double LargerRhat(double one, double other) {
  return std::isnan(one) || std::isnan(other) ? kNotAvailable : std::max(one, other);
}

double Polynomial(std::span<const double> ascendingCoefficients, double x) {
  double value = 0;
  for (std::size_t i = ascendingCoefficients.size(); i > 0; --i) {
    value = value * x + ascendingCoefficients[i - 1];
  }
  return value;
}

}  // namespace

bool Convergence::IsKnown() const noexcept {
  return !std::isnan(rhat) && !std::isnan(bulkSampleSize) && !std::isnan(tailSampleSize);
}

bool Convergence::IsGood() const noexcept {
  return rhat <= kLargestRhat && bulkSampleSize >= kSmallestSampleSize &&
         tailSampleSize >= kSmallestSampleSize;
}

Convergence JudgeConvergence(const std::vector<std::vector<double>>& chains) {
  constexpr std::size_t kFewestDraws = 4;
  if (chains.empty() || chains.front().size() < kFewestDraws || IsDegenerate(chains)) {
    return {kNotAvailable, kNotAvailable, kNotAvailable};
  }
  const Chains scores = NormalScores(Split(chains));
  const double bulk = Rhat(scores);
  const double tails = Rhat(NormalScores(Split(Fold(chains))));
  return {LargerRhat(bulk, tails), SampleSize(scores), TailSampleSize(chains)};
}

double NormalQuantile(double p) noexcept {
  constexpr double kCentre = 0.425;
  constexpr double kFar = 5;
  const double q = p - 0.5;
  if (std::fabs(q) <= kCentre) {
    constexpr std::array<double, 8> kA{3.3871328727963666080e0,  1.3314166789178437745e+2,
                                       1.9715909503065514427e+3, 1.3731693765509461125e+4,
                                       4.5921953931549871457e+4, 6.7265770927008700853e+4,
                                       3.3430575583588128105e+4, 2.5090809287301226727e+3};
    constexpr std::array<double, 8> kB{1.0,
                                       4.2313330701600911252e+1,
                                       6.8718700749205790830e+2,
                                       5.3941960214247511077e+3,
                                       2.1213794301586595867e+4,
                                       3.9307895800092710610e+4,
                                       2.8729085735721942674e+4,
                                       5.2264952788528545610e+3};
    const double r = kCentre * kCentre - q * q;
    return q * Polynomial(kA, r) / Polynomial(kB, r);
  }
  double r = std::sqrt(-std::log(q < 0 ? p : 1 - p));
  double value = 0;
  if (r <= kFar) {
    constexpr std::array<double, 8> kC{1.42343711074968357734e0,  4.63033784615654529590e0,
                                       5.76949722146069140550e0,  3.64784832476320460504e0,
                                       1.27045825245236838258e0,  2.41780725177450611770e-1,
                                       2.27238449892691845833e-2, 7.74545014278341407640e-4};
    constexpr std::array<double, 8> kD{1.0,
                                       2.05319162663775882187e0,
                                       1.67638483018380384940e0,
                                       6.89767334985100004550e-1,
                                       1.48103976427480074590e-1,
                                       1.51986665636164571966e-2,
                                       5.47593808499534494600e-4,
                                       1.05075007164441684324e-9};
    r -= 1.6;
    value = Polynomial(kC, r) / Polynomial(kD, r);
  } else {
    constexpr std::array<double, 8> kE{6.65790464350110377720e0,  5.46378491116411436990e0,
                                       1.78482653991729133580e0,  2.96560571828504891230e-1,
                                       2.65321895265761230930e-2, 1.24266094738807843860e-3,
                                       2.71155556874348757815e-5, 2.01033439929228813265e-7};
    constexpr std::array<double, 8> kF{1.0,
                                       5.99832206555887937690e-1,
                                       1.36929880922735805310e-1,
                                       1.48753612908506148525e-2,
                                       7.86869131145613259100e-4,
                                       1.84631831751005468180e-5,
                                       1.42151175831644588870e-7,
                                       2.04426310338993978564e-15};
    r -= kFar;
    value = Polynomial(kE, r) / Polynomial(kF, r);
  }
  return q < 0 ? -value : value;
}

}  // namespace Hovar
