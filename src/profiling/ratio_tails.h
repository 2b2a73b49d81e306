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

  /// P(S > O | eta) + share P(S = O | eta) by interpolation, at the nearer end of the grid for an
  /// eta beyond it.
  double Upper(const EtaGrid& grid, double eta, double share) const noexcept;
};

/// The tails under the reference risks themselves, eta = 0, each with all its digits.
struct ReferenceTails {
  double above = 0;
  double equal = 1;
  double below = 0;
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

}  // namespace Hovar
