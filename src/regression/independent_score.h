#pragma once

// The score of independent records: a plain logistic regression.

#include "regression/newton.h"

namespace Hovar {

/// Every record is an observation of its own: g_j = sum of (y_i - mu_i) over the records in which
/// column j is set. For y = 1 the residual is 1 - mu = 1 / (1 + e^eta), computed in this form so
/// that it keeps its digits where mu is close to 1.
class IndependentScore {
 public:
  /// The rows must outlive the score.
  explicit IndependentScore(const FitRows& rows) noexcept : rows_(rows) {}

  /// Fills the information, sum of mu_i (1 - mu_i) x_i x_i^T, and the score at `beta`; see
  /// FitNewton. What the equations held is replaced.
  void SumPass(NormalEquations& equations, RecordBlock& block,
               const Vell::Vector& beta) const noexcept;

 private:
  const FitRows& rows_;
};

}  // namespace Hovar
