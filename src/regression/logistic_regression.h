#pragma once

// A fit from records to estimates: the score type that the settings ask for, Newton's method, and
// the standard errors.

#include "linalg/vector.h"
#include "regression/coefficient_estimate.h"
#include "regression/fit_rows.h"
#include "regression/newton.h"

namespace Hovar {

/// Fits one model from zero coefficients, as the state's settings say, and returns one coefficient
/// (log-odds) per column of the rows. The state must be fresh; it is left for EstimatesOf. A fit
/// that reaches its iteration limit is kept, with a warning in the log.
/// Cost: a pass costs one addition for each pair of set columns of a record; the equations of p
///       columns
/// take about p^3 / 6 multiplications more.
/// Errors: "Non positive matrix in Cholesky decomposition", as with separated records and no prior;
///         "Integer overflow"; "Out of memory".
Vell::Vector FitCoefficients(FitState& state, const FitRows& rows);

/// The coefficients of a fit with the standard errors that its covariances give: model-based ones,
/// and empirical ones where the records of a hospital are correlated. `beta` is what
/// FitCoefficients returned for this state.
/// Errors: "Out of memory".
CoefficientEstimates EstimatesOf(const FitState& state, const Vell::Vector& beta);

/// What all models of an analysis are fitted with.
struct LogisticRegression {
  const Vell::IndexVector& hospitalSize;  // of the data set, whose records stand by hospital
  FitSettings settings;

  /// Fits one model.
  /// Errors: as FitCoefficients.
  template <RowSource Rows>
  CoefficientEstimates Fit(const Rows& rows) const {
    FitState state(settings);
    FitRows fitRows;
    fitRows.Collect(rows, hospitalSize);
    const Vell::Vector beta = FitCoefficients(state, fitRows);
    return EstimatesOf(state, beta);
  }
};

}  // namespace Hovar
