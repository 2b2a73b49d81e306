#pragma once

// What a fit says of one coefficient; the coefficient file has these three columns for each model.

#include "foundation/growable_array.h"

namespace Hovar {

/// One coefficient. A standard error below 0 is not available: no model was fitted, or it has no
/// error of this kind. All three numbers are in log-odds; a NaN is what a fit that broke down
/// leaves.
struct CoefficientEstimate {
  double estimate = 0.0;  // log-odds
  // From the model's covariance, and from the empirical one (covariance.h).
  double modelStandardError = -1.0;
  double empiricalStandardError = -1.0;
};

/// One entry per column of the design.
using CoefficientEstimates = Vell::GrowableArray<CoefficientEstimate>;

}  // namespace Hovar
