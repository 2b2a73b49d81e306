#include "profiling/ratio_interval.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "foundation/exponential.h"
#include "foundation/logarithm.h"

namespace Hovar {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

void AddValues(EtaValues& sums, const EtaValues& values) noexcept {
  for (std::size_t j = 0; j < kEtaNodes; ++j) {
    sums[j] += values[j];
  }
}

void AddProbability(TailTable::Probability& sums, const TailTable::Probability& added) noexcept {
  AddValues(sums.value, added.value);
  AddValues(sums.slope, added.slope);
  AddValues(sums.curvature, added.curvature);
}

/// Finds a limit: the shift at which an averaged tail is the wanted one.
class LimitSearch {
 public:
  LimitSearch(const RatioEvidence& evidence, const EtaGrid& grid)
      : evidence_(evidence),
        grid_(grid),
        share_(evidence.expected / evidence.studies >= kExpectedForMidP ? 0.5 : 1.0) {}

  /// U, which rises with eta, or L, which falls.
  Derivatives Tail(std::size_t j, bool isUpper) const {
    const Derivatives above = evidence_.tails.above.At(j);
    const Derivatives equal = evidence_.tails.equal.At(j);
    const double n = evidence_.studies;
    const Derivatives upper{(above.value + share_ * equal.value) / n,
                            (above.slope + share_ * equal.slope) / n,
                            (above.curvature + share_ * equal.curvature) / n};
    if (isUpper) {
      return upper;
    }
    const double rest = 2 * share_ - 1;  // L = 1 - U + rest P(S = O)
    return {1 - upper.value + rest * equal.value / n, -upper.slope + rest * equal.slope / n,
            -upper.curvature + rest * equal.curvature / n};
  }

  double Lower(double tail) const {
    if (share_ * evidence_.studiesWithoutEvents / evidence_.studies >= tail) {
      return 0;  // U does not fall below that share
    }
    return Solve(tail, true);
  }
  double Upper(double tail) const {
    if (share_ * evidence_.studiesWithoutSurvivors / evidence_.studies >= tail) {
      return evidence_.cases / evidence_.expected;
    }
    return Solve(tail, false);
  }
  double Share() const { return share_; }

 private:
  /// theta(eta), by interpolation of log K', which is nearly straight.
  double Theta(double eta) const {
    const EtaGrid::Place place = grid_.Find(eta);
    const auto logarithm = [&](std::size_t j) {
      const double slope = evidence_.second[j] / evidence_.first[j];
      return Derivatives{Vell::Log(evidence_.first[j]), slope,
                         evidence_.third[j] / evidence_.first[j] - slope * slope};
    };
    const Quintic piece(logarithm(place.interval), logarithm(place.interval + 1),
                        grid_.Width(place.interval));
    return Vell::Exp(piece.Value(place.fraction)) / evidence_.expected;
  }

  /// Beyond the grid tails and expected events go with e^eta as those of a Poisson variable do.
  double Beyond(double tail, bool isLeft, const Derivatives& end) const {
    const double rate = end.slope / end.value;  // d log tail / d eta
    const double distance = rate == 0 ? 0 : (Vell::Log(tail) - Vell::Log(end.value)) / rate;
    if (isLeft) {
      return evidence_.first.front() * Vell::Exp(distance) / evidence_.expected;
    }
    const double spared = evidence_.cases - evidence_.first.back();
    return (evidence_.cases - spared * Vell::Exp(-distance)) / evidence_.expected;
  }

  /// The theta at which a tail has the wanted value. Of the two nodes around it log(A / (1 - A)) is
  /// interpolated: it is smooth, and nearly straight where A is not.
  double Solve(double tail, bool isUpper) const {
    std::size_t j = 0;  // the first node on the right of the root
    while (j < kEtaNodes && (Tail(j, isUpper).value < tail) == isUpper) {
      ++j;
    }
    if (j == 0) {
      return Beyond(tail, true, Tail(0, isUpper));
    }
    if (j == kEtaNodes) {
      return Beyond(tail, false, Tail(kEtaNodes - 1, isUpper));
    }
    const auto logit = [&](std::size_t node) {
      const Derivatives a = Tail(node, isUpper);
      const double value = std::clamp(a.value, kTiny, 1 - kTiny);
      const double spread = value * (1 - value);
      const double slope = a.slope / spread;
      return Derivatives{Vell::Log(value / (1 - value)), slope,
                         a.curvature / spread - slope * slope * (1 - 2 * value)};
    };
    const double width = grid_.Width(j - 1);
    const Quintic piece(logit(j - 1), logit(j), width);
    const double wanted = Vell::Log(tail / (1 - tail));
    double left = 0;
    double right = 1;
    for (int step = 0; step < kBisections; ++step) {
      const double middle = (left + right) / 2;
      ((piece.Value(middle) < wanted) == isUpper ? left : right) = middle;
    }
    return Theta(grid_.Node(j - 1) + width * (left + right) / 2);
  }

  static constexpr double kTiny = 1e-15;
  static constexpr int kBisections = 48;

  const RatioEvidence& evidence_;
  const EtaGrid& grid_;
  double share_;  // of P(S = O) that belongs to either tail
};

double StandardDeviation(double sum, double squares, double count) {
  if (count < 2) {
    return 0;
  }
  return std::sqrt(std::max(0.0, (squares - sum * sum / count) / (count - 1)));
}

}  // namespace

void RatioEvidence::Add(const CumulantTable& cumulants, const TailTable& studyTails,
                        const ReferenceTails& studyReference, double studyCases,
                        double studyObserved, double studyExpected) noexcept {
  studies += 1;
  cases += studyCases;
  observed += studyObserved;
  observedSquares += studyObserved * studyObserved;
  expected += studyExpected;
  expectedSquares += studyExpected * studyExpected;
  studiesWithoutEvents += studyObserved == 0 ? 1 : 0;
  studiesWithoutSurvivors += studyObserved == studyCases ? 1 : 0;
  reference.above += studyReference.above;
  reference.equal += studyReference.equal;
  reference.below += studyReference.below;
  AddProbability(tails.above, studyTails.above);
  AddProbability(tails.equal, studyTails.equal);
  AddValues(first, cumulants.first);
  AddValues(second, cumulants.second);
  AddValues(third, cumulants.third);
}

void RatioEvidence::Add(const RatioEvidence& other) noexcept {
  studies += other.studies;
  cases += other.cases;
  observed += other.observed;
  observedSquares += other.observedSquares;
  expected += other.expected;
  expectedSquares += other.expectedSquares;
  studiesWithoutEvents += other.studiesWithoutEvents;
  studiesWithoutSurvivors += other.studiesWithoutSurvivors;
  reference.above += other.reference.above;
  reference.equal += other.reference.equal;
  reference.below += other.reference.below;
  AddProbability(tails.above, other.tails.above);
  AddProbability(tails.equal, other.tails.equal);
  AddValues(first, other.first);
  AddValues(second, other.second);
  AddValues(third, other.third);
}

Interval RatioLimits(const RatioEvidence& evidence, const EtaGrid& grid, double tail) {
  if (!(evidence.expected > 0)) {
    return {kNotANumber, kNotANumber};
  }
  const LimitSearch search(evidence, grid);
  return {search.Lower(tail), search.Upper(tail)};
}

RatioSummary SummariseRatio(const RatioEvidence& evidence, const EtaGrid& grid) {
  constexpr double kTail95 = 0.025;
  constexpr double kTail998 = 0.001;
  const double n = evidence.studies;
  RatioSummary summary;
  summary.cases = evidence.cases / n;
  summary.observed = evidence.observed / n;
  summary.observedSd = StandardDeviation(evidence.observed, evidence.observedSquares, n);
  summary.expected = evidence.expected / n;
  summary.expectedSd = StandardDeviation(evidence.expected, evidence.expectedSquares, n);
  const bool hasRatio = evidence.expected > 0;
  summary.ratio = hasRatio ? evidence.observed / evidence.expected : kNotANumber;
  summary.limits95 = RatioLimits(evidence, grid, kTail95);
  summary.limits998 = RatioLimits(evidence, grid, kTail998);
  const double equal = LimitSearch(evidence, grid).Share() * evidence.reference.equal;
  const double smaller = std::min(evidence.reference.above, evidence.reference.below) + equal;
  summary.p = hasRatio ? std::min(1.0, 2 * smaller / n) : kNotANumber;
  return summary;
}

std::vector<double> FalseDiscoveryRates(const std::vector<double>& p) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < p.size(); ++i) {
    if (!std::isnan(p[i])) {
      order.push_back(i);
    }
  }
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return p[a] < p[b]; });
  std::vector<double> q(p.size(), kNotANumber);
  const auto count = static_cast<double>(order.size());
  double smallest = 1;
  for (std::size_t rank = order.size(); rank > 0; --rank) {
    const std::size_t i = order[rank - 1];
    smallest = std::min(smallest, p[i] * count / static_cast<double>(rank));
    q[i] = smallest;
  }
  return q;
}

}  // namespace Hovar
