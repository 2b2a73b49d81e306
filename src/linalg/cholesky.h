#pragma once

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

/// Solves L * L^T * x = b by forward and back substitution.
Vector CholeskySolve(const SymmetricMatrix& factor, const Vector& b);

/// Solves L^T * x = b by back substitution; if b has independent standard normal elements, x has
/// the covariance (L * L^T)^-1.
Vector SolveTransposed(const SymmetricMatrix& factor, const Vector& b);

/// (L * L^T)^-1, of order n, in packed form.
SymmetricMatrix CholeskyInverse(const SymmetricMatrix& factor);

}  // namespace Vell
