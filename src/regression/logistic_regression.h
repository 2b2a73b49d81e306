#pragma once

#include "linalg/vector.h"
#include "regression/coefficient_estimate.h"
#include "regression/fit_rows.h"
#include "regression/newton.h"

namespace Hovar {

/// Fits one model from zero coefficients, with generalized estimating equations or for independent
/// records, and returns the coefficients. A fit that reaches its iteration limit is kept, with a
/// warning in the log.
/// Errors: "Non positive matrix in Cholesky decomposition"; "Integer overflow"; "Out of memory".
Vell::Vector FitCoefficients(FitState& state, const FitRows& rows,
                             bool useGeneralizedEstimatingEquations);

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
    FitRows fitRows;
    fitRows.Collect(rows, hospitalSize);
    const Vell::Vector beta = FitCoefficients(state, fitRows, useGeneralizedEstimatingEquations);
    return EstimatesOf(state, beta, useGeneralizedEstimatingEquations);
  }
};

}  // namespace Hovar
