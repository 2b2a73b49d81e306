#pragma once

// How surprising a hospital's number of events is under each common shift of the log-odds of its
// patients: P(S > O | eta) and P(S = O | eta) of one completed study.
//
// A shift is an exponential tilt (cumulants.h), so one distribution serves for all of them. It is
// computed once, under the shift c of the grid under which about O events are expected, and then
//
//     P(S = k | eta) = P(S = k | c) e^(k (eta - c) - (K(eta) - K(c))).
//
// The tail that lies away from c is summed, in which the terms fall off from O on; the other one is
// what is left to 1. So the smaller tail has all its digits however far the hospital is from what is
// expected of it.

#include <cstdint>
#include <span>
#include <vector>

#include "profiling/cumulants.h"
#include "profiling/eta_grid.h"
#include "profiling/poisson_binomial.h"

namespace Hovar {

/// The probabilities of more events than O, of O and of fewer, under one shift or averaged over
/// several. Under the reference risks themselves, eta = 0, each has all its digits.
struct ReferenceTails {
  double above = 0;
  double equal = 1;
  double below = 0;
};

/// P(S > O) and P(S = O) with two derivatives by eta, at the nodes of a grid.
struct TailTable {
  struct Probability {
    EtaValues value{};
    EtaValues slope{};
    EtaValues curvature{};

    Derivatives At(std::size_t j) const noexcept { return {value[j], slope[j], curvature[j]}; }
    void Set(std::size_t j, const Derivatives& at) noexcept {
      value[j] = at.value;
      slope[j] = at.slope;
      curvature[j] = at.curvature;
    }
  };
  Probability above;
  Probability equal;

  /// The means of P(S > O | eta) and P(S = O | eta) over a distribution of eta, whose distribution
  /// function is given: sums over quarters of the intervals of what the function gains there times
  /// the interpolated value in the middle. Beyond the grid the value is that at its end.
  template <typename DistributionFunction>
  ReferenceTails MeanOver(const EtaGrid& grid, const DistributionFunction& distribution) const;
};

/// Computes tails; keeps its working memory for the next hospital.
class TailComputation {
 public:
  /// Fills `table` for a hospital with these bounded risks, of which `events` had the event; `cumulants`
  /// is their table on this grid.
  /// Errors: std::bad_alloc.
  ReferenceTails Compute(TailTable& table, const EtaGrid& grid, const CumulantTable& cumulants,
                         std::span<const double> risks, std::int64_t events);

 private:
  /// Computes the distribution under a shift, whose e^eta is given.
  void Tilt(std::span<const double> risks, double factor);

  PoissonBinomial distribution_;
  std::vector<double> tilted_;
  std::vector<double> side_;  // masses from O outwards, O itself left out
};

template <typename DistributionFunction>
ReferenceTails TailTable::MeanOver(const EtaGrid& grid,
                                   const DistributionFunction& distribution) const {
  constexpr int kParts = 4;
  double before = distribution(grid.First());
  ReferenceTails mean{before * above.value.front(), before * equal.value.front(), 0};
  for (std::size_t j = 0; j < kEtaIntervals; ++j) {
    const double width = grid.Width(j);
    const double node = grid.Node(j);
    const Quintic abovePiece(above.At(j), above.At(j + 1), width);
    const Quintic equalPiece(equal.At(j), equal.At(j + 1), width);
    for (int part = 0; part < kParts; ++part) {
      const double after = distribution(node + width * (part + 1) / kParts);
      const double middle = (part + 0.5) / kParts;
      mean.above += (after - before) * abovePiece.Value(middle);
      mean.equal += (after - before) * equalPiece.Value(middle);
      before = after;
    }
  }
  mean.above += (1 - before) * above.value.back();
  mean.equal += (1 - before) * equal.value.back();
  mean.below = 1 - mean.above - mean.equal;
  return mean;
}

}  // namespace Hovar
