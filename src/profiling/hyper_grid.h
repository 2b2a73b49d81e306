#pragma once

// What the outcomes of a completed study leave unknown of mu, gamma and tau: their posterior
// distribution on a grid. The prior is flat in mu and gamma, and in tau from 0 to kTauBound; a flat
// prior of a standard deviation is proper enough from three hospitals on and favours none of its values
// (A. Gelman, Prior distributions for variance parameters in hierarchical models, Bayesian Analysis
// 1, 2006, pages 515-534). At tau = 3 the middle two thirds of hospitals differ by a factor of 400 in the
// odds; no bound that matters to hospitals.
//
// The grid has the midpoints of 24 intervals of tau, the same in all studies, over the range in
// which its likelihood is within e^-10 of the maximum in the first study. The likelihood is an even
// function of tau, so the midpoint rule is good at tau = 0 too. Given tau, mu (and gamma) are nearly
// normal and taken by an adaptive Gauss-Hermite rule of 5 nodes, of 3 from 500 hospitals on or with
// gamma, 3 by 3 then.

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "profiling/effect_model.h"

namespace Hovar {

inline constexpr double kTauBound = 3;
inline constexpr std::size_t kTauNodes = 24;

struct TauGrid {
  double first = 0;  // where the first interval begins
  double width = kTauBound / kTauNodes;

  double Node(std::size_t j) const noexcept {
    return first + (static_cast<double>(j) + 0.5) * width;
  }
  double End() const noexcept { return first + kTauNodes * width; }
};

/// The range for a study, whose fit is given.
TauGrid MakeTauGrid(std::span<const HospitalOutcomes> hospitals, const EffectFit& fit,
                    MeanModel meanModel) noexcept;

/// All values of mu and gamma for one tau.
struct TauSlice {
  EffectFit best;   // its maximum
  double mass = 0;  // posterior probability of the interval
};

struct HyperPoint {
  EffectParameters at;
  double weight = 0;  // all together 1
};

struct HyperPosterior {
  EffectFit fit;  // the maximum likelihood estimate
  std::array<TauSlice, kTauNodes> slices;
  std::vector<HyperPoint> points;  // those of weights that matter
};

/// Errors: std::bad_alloc.
HyperPosterior MakeHyperPosterior(std::span<const HospitalOutcomes> hospitals, const TauGrid& grid,
                                  const EffectFit& fit, MeanModel meanModel);

}  // namespace Hovar
