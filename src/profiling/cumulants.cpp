#include "profiling/cumulants.h"

#include <algorithm>
#include <cstring>

#include "foundation/exponential.h"
#include "foundation/logarithm.h"
#include "linalg/kernels/dispatch.h"

namespace Hovar {
namespace {

/// Sums over the patients at the nodes, which are handled as many at a time as there are lanes.
struct CumulantKernel {
  CumulantTable& table;
  const EtaValues& factors;  // e^eta
  std::span<const double> risks;

  template <int kLanes>
  [[gnu::always_inline]] void operator()() const noexcept {
    static_assert(kEtaNodes % kLanes == 0);
    for (std::size_t j = 0; j < kEtaNodes; j += kLanes) {
      Tabulate<kLanes>(j);
    }
  }

  template <int kLanes>
  [[gnu::always_inline]] void Tabulate(std::size_t j) const noexcept {
    using Real = typename Vell::Lanes<kLanes>::Real;
    // Grids span 13 log-odds either way at most: a product of so many factors is neither above
    // e^208 nor below e^-208.
    constexpr std::size_t kFactors = 16;
    Real t;
    std::memcpy(&t, &factors[j], sizeof t);
    Real first{};
    Real second{};
    Real third{};
    double logs[kLanes] = {};
    for (std::size_t begin = 0; begin < risks.size(); begin += kFactors) {
      Real product = Real{} + 1.0;
      const std::size_t end = std::min(begin + kFactors, risks.size());
      for (std::size_t i = begin; i < end; ++i) {
        const double p = risks[i];
        const Real shifted = p * t;
        const Real total = (1 - p) + shifted;
        const Real q = shifted / total;
        const Real variance = q * (1.0 - q);
        product *= total;
        first += q;
        second += variance;
        third += variance * (1.0 - 2.0 * q);
      }
      double products[kLanes];
      std::memcpy(products, &product, sizeof product);
      for (int lane = 0; lane < kLanes; ++lane) {
        logs[lane] += Vell::Log(products[lane]);
      }
    }
    std::memcpy(&table.value[j], logs, sizeof logs);
    std::memcpy(&table.first[j], &first, sizeof first);
    std::memcpy(&table.second[j], &second, sizeof second);
    std::memcpy(&table.third[j], &third, sizeof third);
  }
};

}  // namespace

double BoundedRisk(double p) noexcept { return std::clamp(p, kSmallestRisk, 1 - kSmallestRisk); }

void TabulateCumulants(CumulantTable& table, const EtaGrid& grid,
                       std::span<const double> risks) noexcept {
  EtaValues factors;
  for (std::size_t j = 0; j < kEtaNodes; ++j) {
    factors[j] = Vell::Exp(grid.Node(j));
  }
  Vell::RunVectorForm(CumulantKernel{table, factors, risks});
}

CumulantCurve::CumulantCurve(const CumulantTable& table, const EtaGrid& grid,
                             double patients) noexcept
    : grid_(grid), patients_(patients) {
  for (std::size_t j = 0; j < kEtaIntervals; ++j) {
    pieces_[j] =
        Quintic({table.value[j], table.first[j], table.second[j]},
                {table.value[j + 1], table.first[j + 1], table.second[j + 1]}, grid.Width(j));
  }
}

Derivatives CumulantCurve::Beyond(double eta) const noexcept {
  const bool isLeft = eta < grid_.First();
  const Derivatives end = isLeft ? pieces_.front().At(0, 1 / grid_.Width(0))
                                 : pieces_.back().At(1, 1 / grid_.Width(kEtaIntervals - 1));
  if (!(end.slope > 0 && end.slope < patients_)) {
    return {end.value, end.slope, 0};  // nobody
  }
  // n log(1 + odds e^(rate distance)) / rate, less its value at the end.
  const double odds = end.slope / (patients_ - end.slope);
  const double rate = end.curvature * (1 + odds) / end.slope;
  const double factor = Vell::Exp(rate * (eta - (isLeft ? grid_.First() : grid_.Last())));
  const double q = odds * factor / (1 + odds * factor);
  const double value = patients_ / rate * (Vell::Log(1 + odds * factor) - Vell::Log(1 + odds));
  return {end.value + value, patients_ * q, patients_ * q * (1 - q) * rate};
}

}  // namespace Hovar
