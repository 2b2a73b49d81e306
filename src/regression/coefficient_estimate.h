#pragma once

#include "foundation/growable_array.h"

namespace Hovar {

/// One coefficient. A standard error below 0 is not available.
struct CoefficientEstimate {
  double estimate = 0.0;  // log-odds
  double modelStandardError = -1.0;
  double empiricalStandardError = -1.0;
};

/// One entry per column of the design.
using CoefficientEstimates = Vell::GrowableArray<CoefficientEstimate>;

}  // namespace Hovar
