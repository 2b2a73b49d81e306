#pragma once

// What the outcomes of a hospital's patients say about a common shift of their log-odds, as
// functions of that shift.
//
// Of n patients with the probabilities p_i let S be the number of events. A shift eta of the
// log-odds of all of them gives patient i the probability
//
//     q_i(eta) = p_i e^eta / (1 - p_i + p_i e^eta),
//
// and with the cumulant generating function K(eta) = sum over i of log(1 - p_i + p_i e^eta)
//
//     P(S = k | eta) = P(S = k) e^(k eta - K(eta))            (exponential tilting)
//     log-likelihood of the outcomes, O of them events = constant + O eta - K(eta)
//     E(S | eta) = K'(eta) = sum q_i,     Var(S | eta) = K''(eta) = sum q_i (1 - q_i).
//
// So K is all that the likelihood needs of the records. It is computed with three derivatives at
// the nodes of a grid, once per completed study, and taken from there by polynomials of degree 5.
// Of an indicator with the variance v the sixth cumulant is v (1 - 30 v + 120 v^2), which is v at
// most, so |K^(6)| <= K'' and where the nodes are h apart interpolation misses the log-likelihood by no
// more than the largest K'' between them times h^6 / 46080. In a core of 31 intervals over 14
// standard errors, V = K'' events, that is 2e-7 / V^2; of the widest grid, 24 log-odds over 47
// intervals, 4e-7 V.
//
// Beyond the ends of the grid K goes on as that of n patients who are all alike, with the same K', K''
// at the end and the same limits: no event on the left, nothing else on the right.
//
// Source: D. R. Cox, D. V. Hinkley, Theoretical Statistics (1974), on exponential families.

#include <cstdint>
#include <span>

#include "profiling/eta_grid.h"

namespace Hovar {

/// Risks are kept this far from 0 and 1 before anything is computed of them: an event of which the
/// coefficients say that it cannot happen would make every shift impossible.
inline constexpr double kSmallestRisk = 1e-12;

/// p within [kSmallestRisk, 1 - kSmallestRisk].
double BoundedRisk(double p) noexcept;

/// K and its first three derivatives at the nodes of a grid.
struct CumulantTable {
  EtaValues value{};
  EtaValues first{};
  EtaValues second{};
  EtaValues third{};
};

/// Tabulates K of patients with these risks, bounded ones.
/// Cost: one division per patient and node.
void TabulateCumulants(CumulantTable& table, const EtaGrid& grid,
                       std::span<const double> risks) noexcept;

/// K(eta), K'(eta), K''(eta) of any eta, from a table.
class CumulantCurve {
 public:
  CumulantCurve() = default;
  /// `patients` is their number n.
  CumulantCurve(const CumulantTable& table, const EtaGrid& grid, double patients) noexcept;

  Derivatives At(double eta) const noexcept {
    if (eta >= grid_.First() && eta <= grid_.Last()) {
      const EtaGrid::Place place = grid_.Find(eta);
      return pieces_[place.interval].At(place.fraction, place.perWidth);
    }
    return Beyond(eta);
  }
  /// K'(eta) alone.
  double Slope(double eta) const noexcept {
    if (eta >= grid_.First() && eta <= grid_.Last()) {
      const EtaGrid::Place place = grid_.Find(eta);
      return pieces_[place.interval].Slope(place.fraction, place.perWidth);
    }
    return Beyond(eta).slope;
  }
  double Patients() const noexcept { return patients_; }
  const EtaGrid& Grid() const noexcept { return grid_; }

 private:
  Derivatives Beyond(double eta) const noexcept;

  EtaGrid grid_;
  std::array<Quintic, kEtaIntervals> pieces_{};
  double patients_ = 0;
};

}  // namespace Hovar
