#pragma once

// Generalized estimating equations with an exchangeable working correlation: any two records of one
// hospital have the correlation alpha, records of different hospitals none.
//
// With residuals e_i = y_i - mu_i, s_i = sqrt(w_i), Pearson residuals r_i = e_i / s_i, and n_h the
// records of hospital h that take part, a pass sums, per hospital,
//
//     A_h = sum e_i x_i,   B_h = sum s_i x_i,   S_h = sum r_i,   and over all   Q = sum r_i^2.
//
// With N = sum n_h, M = sum n_h (n_h - 1) and p columns, the moment estimates are
//
//     phi   = Q / (N - p)
//     alpha = (sum S_h^2 - Q) / ((M - p) phi),
//
// and, as the inverse of an exchangeable correlation matrix is a multiple of I - c_h 1 1^T,
//
//     U_h = A_h - c_h S_h B_h,   c_h = alpha / (1 + (n_h - 1) alpha),
//     g   = sum U_h,   H = sum w_i x_i x_i^T - sum c_h B_h B_h^T.
//
// The common factor 1 / (1 - alpha) and the dispersion phi are left out of both g and H, where they
// cancel; the prior enters as it is. ModelCovariance puts the factor back. There is no guard on the
// denominators: with few records alpha can be infinite, a NaN or beyond [-1, 1], and the fit goes
// on with it.
//
// Source: K.-Y. Liang, S. L. Zeger, Longitudinal data analysis using generalized linear models,
// Biometrika 73 (1986), pages 13-22; the estimates of alpha and phi are those of its section 3.4
// with every ordered pair counted.

#include <cstdint>

#include "regression/logistic_kernels.h"
#include "regression/newton.h"

namespace Hovar {

/// The score of records that are correlated within hospitals, whose records stand together.
class ExchangeableScore {
 public:
  /// Every pass leaves its alpha and its hospital scores in `state`, which must outlive the score,
  /// as must the rows.
  /// Errors: "Integer overflow" when hospitals * columns exceeds 2^31 - 1; "Out of memory".
  ExchangeableScore(FitState& state, const FitRows& rows);

  /// Fills H and g at `beta`, and alpha and U in the state; see FitNewton. What they held is
  /// replaced. Besides the sums of independent records a pass costs p^2 / 2 additions for each
  /// hospital.
  /// Errors: "Out of memory".
  void SumPass(NormalEquations& equations, RecordBlock& block, const Vell::Vector& beta);

 private:
  void BeginPass() noexcept;
  void AddBlock(NormalEquations& equations, RecordBlock& block) noexcept;
  void Assemble(NormalEquations& equations);
  double EstimateCorrelation() const noexcept;

  FitState& state_;
  const FitRows& rows_;
  const Vell::IndexVector& clusterSize_;  // n_h
  Vell::Matrix residualSums_;             // A, hospitals x columns
  Vell::Matrix deviationSums_;            // B, hospitals x columns
  Vell::Vector pearsonSums_;              // S
  double pearsonSquares_ = 0;             // Q
  PearsonBlock terms_{};
  // Where the pass is: a hospital, and how many of its records are still to come.
  std::int32_t hospital_ = -1;
  std::int32_t recordsLeft_ = 0;
};

}  // namespace Hovar
