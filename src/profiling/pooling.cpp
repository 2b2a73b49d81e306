#include "profiling/pooling.h"

#include <algorithm>
#include <cmath>

#include "profiling/distributions.h"

namespace Hovar {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

/// The inverse of the matrix of variances: the curvature.
std::array<double, 3> CurvatureOf(const EffectFit& best, MeanModel meanModel) noexcept {
  if (meanModel == MeanModel::kPlain) {
    return {1 / best.variance[0], 0, 0};
  }
  const double c = best.covarianceMuGamma;
  const double determinant = best.variance[0] * best.variance[1] - c * c;
  return {best.variance[1] / determinant, -c / determinant, best.variance[0] / determinant};
}

}  // namespace

void PooledEstimate::Add(double estimate, double variance) noexcept {
  studies += 1;
  sum += estimate;
  squares += estimate * estimate;
  varianceSum += variance;
}

void PooledEstimate::Add(const PooledEstimate& other) noexcept {
  studies += other.studies;
  sum += other.sum;
  squares += other.squares;
  varianceSum += other.varianceSum;
}

double PooledEstimate::Mean() const noexcept { return studies > 0 ? sum / studies : kNotANumber; }

double PooledEstimate::Variance() const noexcept {
  if (!(studies > 0)) {
    return kNotANumber;
  }
  const double between =
      studies < 2 ? 0 : std::max(0.0, squares - sum * sum / studies) / (studies - 1);
  return varianceSum / studies + (1 + 1 / studies) * between;
}

double PooledEstimate::Degrees() const noexcept {
  const double within = varianceSum / studies;
  const double share = (Variance() - within) / Variance();
  return share > 0 ? (studies - 1) / (share * share) : std::numeric_limits<double>::infinity();
}

Interval PooledEstimate::Limits95() const noexcept {
  if (!(studies > 0)) {
    return {kNotANumber, kNotANumber};
  }
  constexpr double kOutside = 0.05;
  const double reach = StudentQuantile(kOutside, Degrees()) * std::sqrt(Variance());
  return {Mean() - reach, Mean() + reach};
}

double PooledEstimate::P() const noexcept {
  return studies > 0 ? StudentTwoSided(std::fabs(Mean()) / std::sqrt(Variance()), Degrees())
                     : kNotANumber;
}

void QuadraticSum::Add(const EffectFit& best, MeanModel meanModel) noexcept {
  const std::array<double, 3> a = CurvatureOf(best, meanModel);
  const double mu = best.at.mu;
  const double gamma = meanModel == MeanModel::kPlain ? 0 : best.at.gamma;
  const double first = a[0] * mu + a[1] * gamma;
  const double second = a[1] * mu + a[2] * gamma;
  constant_ += best.logLikelihood - (mu * first + gamma * second) / 2;
  linear_[0] += first;
  linear_[1] += second;
  for (std::size_t k = 0; k < a.size(); ++k) {
    square_[k] += a[k];
  }
}

void QuadraticSum::Add(const QuadraticSum& other) noexcept {
  constant_ += other.constant_;
  for (std::size_t k = 0; k < linear_.size(); ++k) {
    linear_[k] += other.linear_[k];
  }
  for (std::size_t k = 0; k < square_.size(); ++k) {
    square_[k] += other.square_[k];
  }
}

double QuadraticSum::Maximum() const noexcept {
  const auto [a, b, c] = square_;
  if (c == 0) {
    return constant_ + linear_[0] * linear_[0] / (2 * a);
  }
  const double mu = (c * linear_[0] - b * linear_[1]) / (a * c - b * b);
  const double gamma = (a * linear_[1] - b * linear_[0]) / (a * c - b * b);
  return constant_ + (linear_[0] * mu + linear_[1] * gamma) / 2;
}

void TauTest::Add(const EffectFit& fit, const EffectFit& withoutDifferences,
                  const HyperPosterior& posterior, MeanModel meanModel) noexcept {
  studies_ += 1;
  statistics_ += std::max(0.0, 2 * (fit.logLikelihood - withoutDifferences.logLikelihood));
  atZero_.Add(withoutDifferences, meanModel);
  for (std::size_t j = 0; j < kTauNodes; ++j) {
    slices_[j].Add(posterior.slices[j].best, meanModel);
  }
}

void TauTest::Add(const TauTest& other) noexcept {
  studies_ += other.studies_;
  statistics_ += other.statistics_;
  atZero_.Add(other.atZero_);
  for (std::size_t j = 0; j < kTauNodes; ++j) {
    slices_[j].Add(other.slices_[j]);
  }
}

double TauTest::Statistic(const TauGrid& grid) const noexcept {
  std::array<double, kTauNodes> heights;
  std::size_t best = 0;
  for (std::size_t j = 0; j < kTauNodes; ++j) {
    heights[j] = slices_[j].Maximum() / studies_;
    best = heights[j] > heights[best] ? j : best;
  }
  const double zero = atZero_.Maximum() / studies_;
  // The vertex of the parabola through the highest point and its neighbours. On the left of the
  // first interval, where it begins at 0, the likelihood is its own mirror image.
  double top = heights[best];
  const bool hasMirror = grid.first == 0;
  if ((best > 0 || hasMirror) && best + 1 < kTauNodes) {
    const double left = best > 0 ? heights[best - 1] : heights[0];
    const double right = heights[best + 1];
    const double bend = left - 2 * top + right;
    if (bend < 0) {
      top -= (right - left) * (right - left) / (8 * bend);
    }
  }
  const double statistic = std::max(0.0, 2 * (top - zero));
  return std::min(statistic, MeanStatistic());
}

double TauTest::P(const TauGrid& grid) const noexcept {
  if (!(studies_ > 0)) {
    return kNotANumber;
  }
  constexpr double kNone = 1e-9;
  const double statistic = Statistic(grid);
  if (statistic < kNone) {
    return 1;
  }
  double r = 0;
  double degrees = std::numeric_limits<double>::infinity();
  if (studies_ > 1) {
    const double k = studies_ - 1;
    r = (studies_ + 1) / k * (MeanStatistic() - statistic);
    if (r > 0) {
      const double odds = 1 / r;
      degrees = k > 4 ? 4 + (k - 4) * (1 + (1 - 2 / k) * odds) * (1 + (1 - 2 / k) * odds)
                      : k * (1 + odds) * (1 + odds);
    }
  }
  return StudentTwoSided(std::sqrt(statistic / (1 + r)), degrees) / 2;
}

double TauQuantile(const TauGrid& grid, const std::array<double, kTauNodes>& masses,
                   double p) noexcept {
  // The distribution function at the ends of the intervals: sums of the masses at midpoints, with
  // the first correction of Euler and Maclaurin. At 0 the density is flat.
  constexpr std::size_t kEnds = kTauNodes + 1;
  std::array<double, kEnds> ends{};
  double sum = 0;
  for (std::size_t j = 0; j < kTauNodes; ++j) {
    sum += masses[j];
    const double rise = j + 1 < kTauNodes ? masses[j + 1] - masses[j] : 0;
    ends[j + 1] = sum + rise / 24;
  }
  std::size_t j = 0;
  while (j + 1 < kTauNodes && ends[j + 1] / sum < p) {
    ++j;
  }
  // Within an interval the density is the parabola through it and its neighbours.
  const double here = masses[j];
  const double before = j > 0 ? masses[j - 1] : grid.first == 0 ? here : 0;
  const double after = j + 1 < kTauNodes ? masses[j + 1] : 0;
  double left = 0;
  double right = 1;
  constexpr int kBisections = 50;
  for (int step = 0; step < kBisections; ++step) {
    const double x = (left + right) / 2;
    const double t = x - 0.5;
    const double bend = before - 2 * here + after;
    const double slope = (after - before) / 2;
    const double within = x * here + slope * (t * t - 0.25) / 2 + bend * (t * t * t + 0.125) / 6;
    (ends[j] + within < p * sum ? left : right) = x;
  }
  return grid.first + (static_cast<double>(j) + (left + right) / 2) * grid.width;
}

}  // namespace Hovar
