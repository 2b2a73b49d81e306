#include "profiling/ratio_tails.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "foundation/exponential.h"
#include "linalg/kernels/dispatch.h"

namespace Hovar {
namespace {

/// The nodes, and the reference risks behind them.
constexpr std::size_t kPlaces = kEtaNodes + 1;

/// Sums over d = 1, 2, ... of masses[d - 1] x^d times 1, d and d^2, for each of some x.
struct SideSums {
  std::array<double, kPlaces> zeroth{};
  std::array<double, kPlaces> first{};
  std::array<double, kPlaces> second{};
};

struct SideKernel {
  SideSums& sums;
  std::span<const double> x;
  std::span<const double> masses;

  template <int kLanes>
  [[gnu::always_inline]] void operator()() const noexcept {
    std::size_t j = 0;
    for (; j + kLanes <= x.size(); j += kLanes) {
      Sum<kLanes>(j);
    }
    for (; j < x.size(); ++j) {
      Sum<1>(j);
    }
  }

  template <int kLanes>
  [[gnu::always_inline]] void Sum(std::size_t j) const noexcept {
    using Real = typename Vell::Lanes<kLanes>::Real;
    Real factor;
    std::memcpy(&factor, &x[j], sizeof factor);
    Real power = Real{} + 1.0;
    Real zeroth{};
    Real first{};
    Real second{};
    double distance = 0;
    for (const double mass : masses) {
      distance += 1;
      power *= factor;
      const Real term = mass * power;
      const Real weighted = distance * term;
      zeroth += term;
      first += weighted;
      second += distance * weighted;
    }
    std::memcpy(&sums.zeroth[j], &zeroth, sizeof zeroth);
    std::memcpy(&sums.first[j], &first, sizeof first);
    std::memcpy(&sums.second[j], &second, sizeof second);
  }
};

/// The node under which the expected number of events is nearest to O, half an event from the ends.
std::size_t CentralNode(const CumulantTable& cumulants, double events, double patients) {
  const double target =
      std::clamp(events, std::min(0.5, patients / 2), std::max(patients - 0.5, patients / 2));
  std::size_t best = 0;
  for (std::size_t j = 1; j < kEtaNodes; ++j) {
    if (std::fabs(cumulants.first[j] - target) < std::fabs(cumulants.first[best] - target)) {
      best = j;
    }
  }
  return best;
}

/// Sums the masses above O (sign 1) or below it (-1) under the shifts of the grid and under none. On
/// the other side of c, where the sum is not used, it only stays finite.
void SumSide(SideSums& sums, const EtaGrid& grid, double c, const PoissonBinomial& distribution,
             std::int64_t events, std::int64_t sign, std::vector<double>& masses) {
  masses.clear();
  for (std::int64_t k = events + sign; distribution.Mass(k) > 0; k += sign) {
    masses.push_back(distribution.Mass(k));
  }
  std::array<double, kPlaces> x;
  for (std::size_t j = 0; j < kPlaces; ++j) {
    const double eta = j < kEtaNodes ? grid.Node(j) : 0;
    x[j] = Vell::Exp(std::min(0.0, static_cast<double>(sign) * (eta - c)));
  }
  Vell::RunVectorForm(SideKernel{sums, x, masses});
}

/// Tails of one shift.
struct Tails {
  Derivatives above;
  Derivatives equal;
  Derivatives below;
};

/// The tail sum over k = O + sign d, given its moments about O, as a probability and its
/// derivatives: with a = O - K', d/deta of P(S = k | eta) is (k - K') P.
Derivatives TailOf(const SideSums& sums, std::size_t j, double sign, double scale, double a,
                   double variance) {
  const double s0 = scale * sums.zeroth[j];
  const double s1 = scale * sign * sums.first[j];
  const double s2 = scale * sums.second[j];
  return {s0, s1 + a * s0, s2 + 2 * a * s1 + (a * a - variance) * s0};
}

}  // namespace

ReferenceTails TailComputation::Compute(TailTable& table, const EtaGrid& grid,
                                        const CumulantTable& cumulants,
                                        std::span<const double> risks, std::int64_t events) {
  const auto patients = static_cast<double>(risks.size());
  const auto observed = static_cast<double>(events);
  const std::size_t centre = CentralNode(cumulants, observed, patients);
  const double c = grid.Node(centre);
  Tilt(risks, Vell::Exp(c));

  SideSums sums[2];
  SumSide(sums[0], grid, c, distribution_, events, 1, side_);
  SumSide(sums[1], grid, c, distribution_, events, -1, side_);

  const double massAtCentre = distribution_.Mass(events);
  const auto tailsAt = [&](std::size_t place, double eta, double cumulant, double expected,
                           double variance) {
    const double scale = Vell::Exp(observed * (eta - c) - (cumulant - cumulants.value[centre]));
    const double a = observed - expected;
    const double mass = scale * massAtCentre;
    Tails tails;
    tails.equal = {mass, a * mass, (a * a - variance) * mass};
    const bool sumsAbove = eta <= c;
    const Derivatives tail = sumsAbove ? TailOf(sums[0], place, 1, scale, a, variance)
                                       : TailOf(sums[1], place, -1, scale, a, variance);
    const Derivatives rest{1 - tail.value - tails.equal.value, -tail.slope - tails.equal.slope,
                           -tail.curvature - tails.equal.curvature};
    tails.above = sumsAbove ? tail : rest;
    tails.below = sumsAbove ? rest : tail;
    return tails;
  };
  for (std::size_t j = 0; j < kEtaNodes; ++j) {
    const Tails tails =
        tailsAt(j, grid.Node(j), cumulants.value[j], cumulants.first[j], cumulants.second[j]);
    table.above.Set(j, tails.above);
    table.equal.Set(j, tails.equal);
  }
  double expected = 0;
  double variance = 0;
  for (const double p : risks) {
    expected += p;
    variance += p * (1 - p);
  }
  const Tails reference = tailsAt(kEtaNodes, 0, 0, expected, variance);
  return {std::max(0.0, reference.above.value), reference.equal.value,
          std::max(0.0, reference.below.value)};
}

void TailComputation::Tilt(std::span<const double> risks, double factor) {
  tilted_.resize(risks.size());
  for (std::size_t i = 0; i < risks.size(); ++i) {
    const double shifted = risks[i] * factor;
    tilted_[i] = shifted / ((1 - risks[i]) + shifted);
  }
  distribution_.Compute(tilted_);
}

}  // namespace Hovar
