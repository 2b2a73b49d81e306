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
  if (eta < grid_.First()) {
    const Derivatives end = pieces_.front().At(0, grid_.Width(0));
    const double events = end.slope * Vell::Exp(eta - grid_.First());
    return {end.value - end.slope + events, events, events};
  }
  const Derivatives end = pieces_.back().At(1, grid_.Width(kEtaIntervals - 1));
  const double spared = patients_ - end.slope;
  const double left = spared * Vell::Exp(grid_.Last() - eta);
  return {end.value + patients_ * (eta - grid_.Last()) - spared + left, patients_ - left, left};
}

}  // namespace Hovar
