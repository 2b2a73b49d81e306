#pragma once

#include "linalg/vector.h"
#include "regression/coefficient_estimate.h"
#include "regression/exchangeable_score.h"
#include "regression/independent_score.h"
#include "regression/newton.h"

namespace Hovar {

/// Logs a warning when a fit has ended at its iteration limit.
void WarnOfIterationLimit(const FitState& state);

/// Fits one model from zero coefficients, with generalized estimating equations or for independent
/// records, and returns the coefficients. A fit that reaches its iteration limit is kept, with a
/// warning in the log.
/// Errors: "Non positive matrix in Cholesky decomposition"; "Integer overflow"; "Out of memory".
template <RowSource Rows>
Vell::Vector FitCoefficients(FitState& state, const Rows& rows,
                             const Vell::IndexVector& hospitalSize,
                             bool useGeneralizedEstimatingEquations) {
  Vell::Vector beta(rows.ColumnCount());
  if (useGeneralizedEstimatingEquations) {
    ExchangeableScore score(rows, hospitalSize);
    beta = FitNewton(state, std::move(beta), score, rows, hospitalSize);
  } else {
    IndependentScore score;
    beta = FitNewton(state, std::move(beta), score, rows, hospitalSize);
  }
  WarnOfIterationLimit(state);
  return beta;
}

/// Coefficients with the standard errors that the fit's covariances give: model-based ones, and
/// empirical ones with generalized estimating equations.
CoefficientEstimates EstimatesOf(const FitState& state, const Vell::Vector& beta,
                                 bool useGeneralizedEstimatingEquations);

/// The settings that all models of an analysis are fitted with.
struct LogisticRegression {
  bool useGeneralizedEstimatingEquations;
  const Vell::IndexVector& hospitalSize;
  RegressionParameters parameters;

  /// Fits one model. Errors: as FitCoefficients.
  template <RowSource Rows>
  CoefficientEstimates Fit(const Rows& rows) const {
    FitState state(parameters);
    const Vell::Vector beta =
        FitCoefficients(state, rows, hospitalSize, useGeneralizedEstimatingEquations);
    return EstimatesOf(state, beta, useGeneralizedEstimatingEquations);
  }
};

}  // namespace Hovar
