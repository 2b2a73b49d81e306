#include "profiling/shrunken_ratio.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/exponential.h"
#include "foundation/logarithm.h"
#include "profiling/distributions.h"
#include "profiling/quadrature.h"

namespace Hovar {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

/// log of the expected events of the hospital's patients in one drawn from the distribution of all.
double LogExpected(const HospitalOutcomes& outcomes, const EffectParameters& at) noexcept {
  const auto& rule = GaussHermite<7>::Rule();
  double sum = 0;
  for (std::size_t k = 0; k < rule.nodes.size(); ++k) {
    sum += rule.weights[k] * outcomes.curve->Slope(at.mu + at.tau * rule.nodes[k]);
  }
  constexpr double kLeast = 1e-14;  // beside the number of patients, as for the distribution
  return Vell::Log(std::max(sum, kLeast * outcomes.curve->Patients()));
}

/// The value of log r below which it lies with probability p: log(F / (1 - F)) is interpolated.
double Quantile(const ShrunkenEvidence& evidence, const RatioGrid& grid, double p) {
  const auto distribution = [&](std::size_t j) {
    return evidence.distribution[j] / evidence.studies;
  };
  std::size_t j = 0;
  while (j < kRatioNodes && distribution(j) < p) {
    ++j;
  }
  if (j == 0 || j == kRatioNodes) {
    return grid.node[j == 0 ? 0 : kRatioNodes - 1];
  }
  const double width = grid.node[j] - grid.node[j - 1];
  const double wanted = Vell::Log(p / (1 - p));
  struct End {
    double value, slope;
  };
  const auto end = [&](std::size_t node) {
    constexpr double kTiny = 1e-12;
    const double f = std::clamp(distribution(node), kTiny, 1 - kTiny);
    return End{Vell::Log(f / (1 - f)),
               width * evidence.density[node] / evidence.studies / (f * (1 - f))};
  };
  const End left = end(j - 1);
  const End right = end(j);
  // Monotone: slopes at most three times the secant's (F. N. Fritsch, R. E. Carlson, SIAM Journal
  // on Numerical Analysis 17, 1980, pages 238-246).
  const double rise = right.value - left.value;
  const double a = std::min(left.slope, 3 * rise);
  const double b = std::min(right.slope, 3 * rise);
  double from = 0;
  double to = 1;
  constexpr int kBisections = 50;
  for (int step = 0; step < kBisections; ++step) {
    const double x = (from + to) / 2;
    const double value =
        left.value + x * (a + x * ((3 * rise - 2 * a - b) + x * (a + b - 2 * rise)));
    (value < wanted ? from : to) = x;
  }
  return grid.node[j - 1] + width * (from + to) / 2;
}

double ErrorOfMean(double sum, double squares, double count) {
  return count < 2 ? kNotANumber
                   : std::sqrt(std::max(0.0, squares - sum * sum / count) / (count - 1) / count);
}

}  // namespace

void ShrunkenEvidence::Add(const ShrunkenEvidence& other) noexcept {
  studies += other.studies;
  mean += other.mean;
  meanSquares += other.meanSquares;
  aboveOneSquares += other.aboveOneSquares;
  for (std::size_t j = 0; j < kRatioNodes; ++j) {
    distribution[j] += other.distribution[j];
    density[j] += other.density[j];
  }
  predictive.above += other.predictive.above;
  predictive.equal += other.predictive.equal;
  predictive.below += other.predictive.below;
}

ShrunkenSummary SummariseShrunken(const ShrunkenEvidence& evidence, const RatioGrid& grid,
                                  double midShare) {
  const double n = evidence.studies;
  if (!(n > 0)) {
    constexpr double kNone = kNotANumber;
    return {kNone, {kNone, kNone}, kNone, kNone, kNone, kNone, kNone, kNone, false};
  }
  constexpr double kTail = 0.025;
  const auto above = [&](std::size_t node) { return n - evidence.distribution[node]; };
  ShrunkenSummary summary;
  summary.ratio = evidence.mean / n;
  summary.limits95 = {Vell::Exp(Quantile(evidence, grid, kTail)),
                      Vell::Exp(Quantile(evidence, grid, 1 - kTail))};
  summary.aboveOne = above(grid.one) / n;
  summary.aboveThreshold = above(grid.threshold) / n;
  summary.belowInverse = evidence.distribution[grid.inverse] / n;
  summary.ratioError = ErrorOfMean(evidence.mean, evidence.meanSquares, n);
  summary.aboveOneError = ErrorOfMean(above(grid.one), evidence.aboveOneSquares, n);
  const double smaller = std::min(evidence.predictive.above, evidence.predictive.below);
  summary.predictiveP = std::min(1.0, 2 * (smaller + midShare * evidence.predictive.equal) / n);
  summary.isPredictedHigh = evidence.predictive.above < evidence.predictive.below;
  return summary;
}

RatioGrid MakeRatioGrid(const HospitalOutcomes& outcomes, const HyperPosterior& posterior,
                        double threshold, double uncertainty) noexcept {
  double first = 0;
  double last = 0;
  for (const HyperPoint& point : posterior.points) {
    const ShiftPosterior shift(outcomes, point.at.Mean(outcomes), point.at.tau);
    const double expected = LogExpected(outcomes, point.at);
    first = std::min(first, shift.FirstLogEvents() - expected);
    last = std::max(last, shift.LastLogEvents() - expected);
  }
  const double spare = (uncertainty - 1) * (last - first) / 2;
  return SpanRatioGrid(first - spare, last + spare, threshold);
}

RatioGrid SpanRatioGrid(double first, double last, double threshold) noexcept {
  const double logThreshold = Vell::Log(threshold);
  first = std::min(first, -1.5 * logThreshold) - 1e-3;
  last = std::max(last, 1.5 * logThreshold) + 1e-3;
  RatioGrid grid;
  constexpr std::size_t kEven = kRatioNodes - 3;
  for (std::size_t j = 0; j < kEven; ++j) {
    grid.node[j] = first + static_cast<double>(j) * (last - first) / (kEven - 1);
  }
  grid.node[kEven] = 0;
  grid.node[kEven + 1] = logThreshold;
  grid.node[kEven + 2] = -logThreshold;
  std::sort(grid.node.begin(), grid.node.end());
  const auto placeOf = [&](double value) {
    return static_cast<std::size_t>(std::lower_bound(grid.node.begin(), grid.node.end(), value) -
                                    grid.node.begin());
  };
  grid.one = placeOf(0);
  grid.threshold = placeOf(logThreshold);
  grid.inverse = placeOf(-logThreshold);
  return grid;
}

ShrunkenEvidence JudgeShrunken(const HospitalOutcomes& outcomes, const HyperPosterior& posterior,
                               const RatioGrid& grid, const EffectDraws& draws) noexcept {
  ShrunkenEvidence study;
  study.studies = 1;
  std::size_t draw = 0;
  for (std::size_t k = 0; k < posterior.points.size(); ++k) {
    const HyperPoint& point = posterior.points[k];
    ShiftPosterior shift(outcomes, point.at.Mean(outcomes), point.at.tau);
    const double expected = LogExpected(outcomes, point.at);
    study.mean += point.weight * shift.MeanEvents() * Vell::Exp(-expected);
    for (std::size_t j = 0; j < kRatioNodes; ++j) {
      double density = 0;
      study.distribution[j] +=
          point.weight * shift.DistributionOfLogEvents(grid.node[j] + expected, density);
      study.density[j] += point.weight * density;
    }
    for (; draw < draws.pointOfDraw.size() && draws.pointOfDraw[draw] == k; ++draw) {
      draws.effects[draw] = shift.Quantile(draws.uniform[draw]) - point.at.mu;
    }
  }
  const double aboveOne = 1 - study.distribution[grid.one];
  study.meanSquares = study.mean * study.mean;
  study.aboveOneSquares = aboveOne * aboveOne;
  return study;
}

PredictiveDistribution::PredictiveDistribution(const HyperPosterior& posterior) {
  constexpr double kNegligibleMass = 1e-5;
  constexpr double kReach = 7;
  constexpr std::size_t kValues = 4096;
  struct Component {
    double mean, sd, mass;
  };
  std::vector<Component> components;
  double last = -HUGE_VAL;
  double total = 0;
  first_ = HUGE_VAL;
  for (const TauSlice& slice : posterior.slices) {
    if (slice.mass >= kNegligibleMass) {
      const EffectFit& best = slice.best;
      const double sd = std::sqrt(best.at.tau * best.at.tau + best.variance[0]);
      components.push_back({best.at.mu, sd, slice.mass});
      first_ = std::min(first_, best.at.mu - kReach * sd);
      last = std::max(last, best.at.mu + kReach * sd);
      total += slice.mass;
    }
  }
  width_ = (last - first_) / (kValues - 1);
  values_.resize(kValues);
  for (std::size_t i = 0; i < kValues; ++i) {
    const double eta = first_ + static_cast<double>(i) * width_;
    for (const Component& component : components) {
      values_[i] +=
          component.mass / total * NormalDistribution((eta - component.mean) / component.sd);
    }
  }
}

double PredictiveDistribution::operator()(double eta) const noexcept {
  const double place = (eta - first_) / width_;
  if (place <= 0) {
    return 0;
  }
  const auto interval = static_cast<std::size_t>(std::min(place, 1e9));
  if (interval + 1 >= values_.size()) {
    return 1;
  }
  const double fraction = place - static_cast<double>(interval);
  return values_[interval] + fraction * (values_[interval + 1] - values_[interval]);
}

}  // namespace Hovar
