#pragma once

// The two covariances from which standard errors are taken. Neither has a small-sample correction.

#include "linalg/symmetric_matrix.h"
#include "regression/newton.h"

namespace Hovar {

// Covariances of the coefficients of a finished fit, in squared log-odds: one row and column per
// coefficient.

/// The model-based covariance: the inverse of the information of the fit's last pass, prior
/// precision included, times (1 - alpha) unless the working correlation alpha is exactly 0. A NaN
/// alpha makes all of it NaN. The dispersion is not applied.
/// Errors: "Out of memory".
Vell::SymmetricMatrix ModelCovariance(const FitState& state);

/// The empirical ("sandwich") covariance H^-1 (sum of U_h U_h^T) H^-1 from the hospital scores of
/// the last pass of a fit with correlated records. The factor 1 / (1 - alpha) cancels in it. It is
/// singular with fewer hospitals than coefficients, and of little use with few hospitals. About 2
/// p^3 multiplications for p columns, and p^2 / 2 for each hospital.
/// Errors: "Out of memory".
/// Source: K.-Y. Liang, S. L. Zeger, Biometrika 73 (1986), theorem 2.
Vell::SymmetricMatrix EmpiricalCovariance(const FitState& state);

}  // namespace Hovar
