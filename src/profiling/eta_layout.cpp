#include "profiling/eta_layout.h"

#include <algorithm>
#include <cmath>

#include "profiling/cumulants.h"

namespace Hovar {
namespace {

constexpr double kReach = 12;       // of a core, log-odds
constexpr double kDrop = 24.5;      // of the log-likelihood: 7^2 / 2
constexpr double kSmallest = 1e-3;  // length of a core on either side
constexpr int kBisections = 40;

/// The point between inside and outside at which `holds` ends to hold; it holds inside.
template <typename Holds>
double EdgeOf(double inside, double outside, const Holds& holds) {
  if (holds(outside)) {
    return outside;
  }
  for (int step = 0; step < kBisections; ++step) {
    const double middle = (inside + outside) / 2;
    (holds(middle) ? inside : outside) = middle;
  }
  return inside;
}

}  // namespace

EtaGrid MakeEtaGrid(std::span<const double> risks, double events, const EtaRange& range) noexcept {
  const double first = range.centre - kReach;
  const double last = range.centre + kReach;
  const EtaGrid wide(first, first, last, last);
  CumulantTable table;
  TabulateCumulants(table, wide, risks);
  const auto patients = static_cast<double>(risks.size());
  const CumulantCurve curve(table, wide, patients);

  const double target =
      std::clamp(events, std::min(0.5, patients / 2), std::max(patients - 0.5, patients / 2));
  const double best =
      EdgeOf(first, last, [&](double eta) { return curve.At(eta).slope <= target; });
  const Derivatives at = curve.At(best);
  const double least = events * best - at.value - kDrop;
  const auto isLikely = [&](double eta) { return events * eta - curve.At(eta).value >= least; };
  const double wider = std::sqrt(1 + range.uncertainEvents / (4 * std::max(at.curvature, 0.25)));
  const auto reach = [&](double end) {
    const double length = std::fabs(EdgeOf(best, end, isLikely) - best);
    return std::max(kSmallest, wider * length);
  };
  const double coreFirst = std::max(best - reach(first), first - kSmallest);
  const double coreLast = std::min(best + reach(last), last + kSmallest);
  return {std::min(coreFirst, range.centre - range.spread), coreFirst, coreLast,
          std::max(coreLast, range.centre + range.spread)};
}

}  // namespace Hovar
