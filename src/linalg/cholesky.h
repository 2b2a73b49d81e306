#pragma once

// The Cholesky factor and what is computed from it. It serves Newton's method
// (regression/newton.h), the covariances of a fit (regression/covariance.h) and the draws of the
// sampler (mcmc/beta_yx.h).
//
// Nothing is pivoted, and nothing is said of the condition of the matrix: a factor of a nearly
// singular matrix is as inaccurate as the matrix demands.

#include "linalg/symmetric_matrix.h"
#include "linalg/vector.h"

namespace Vell {

/// Factors a symmetric positive definite matrix A of order n as A = L * L^T.
///
/// Result: L in packed form, with a diagonal > 0. Order 0 gives an empty factor.
/// Errors: NumericException "Non positive matrix in Cholesky decomposition" at the first pivot
///         <= 0, zero included. A NaN is not <= 0 and passes into L. "Out of memory".
/// Cost:   about n^3 / 6 multiplications. Sums run over k ascending, so equal input gives equal
///         bits.
/// Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed. (2013), section 4.2.
SymmetricMatrix Cholesky(const SymmetricMatrix& a);

// The following take a factor L of order n from Cholesky, whose diagonal is never 0, and vectors of
// n elements. A NaN in an argument passes into the result. Errors: "Out of memory".

/// Solves L * L^T * x = b by forward and back substitution, in about n^2 multiplications.
Vector CholeskySolve(const SymmetricMatrix& factor, const Vector& b);

/// Solves L^T * x = b by back substitution; if b has independent standard normal elements, x has
/// the covariance (L * L^T)^-1. About n^2 / 2 multiplications.
Vector SolveTransposed(const SymmetricMatrix& factor, const Vector& b);

/// (L * L^T)^-1, of order n, in packed form. Column j is the solution for unit vector j, of which
/// only the elements from j on are computed: about n^3 / 3 multiplications.
SymmetricMatrix CholeskyInverse(const SymmetricMatrix& factor);

}  // namespace Vell
