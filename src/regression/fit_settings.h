#pragma once

// What a user chooses about a fit. The definition of an Analysis is composed of these records.

#include <cstdint>

namespace Hovar {

/// How the records of one hospital are taken to go together; records of different hospitals never
/// do.
enum class WorkingCorrelation {
  kIndependent,   // not at all: a plain logistic regression
  kExchangeable,  // any two with the same correlation: generalized estimating equations
};

/// When a fit ends, and its prior. The numbers are those of a definition, unchecked.
struct RegressionParameters {
  /// A fit has converged when no step component exceeds tolerance times the largest coefficient,
  /// both in absolute value. Without a unit, small, for example 1e-8.
  double tolerance = 0;
  /// The limit of applied steps; at least one is applied, unless the first is exactly 0.
  std::int32_t maxIterations = 0;
  /// lambda, the precision of the zero-mean normal prior of each coefficient, the intercept's
  /// included: the inverse of its variance, in 1 / (log-odds squared). 0 is no prior.
  double priorPrecision = 0;
};

/// All that a fit needs besides the records.
struct FitSettings {
  WorkingCorrelation workingCorrelation = WorkingCorrelation::kIndependent;
  RegressionParameters parameters;
};

}  // namespace Hovar
