#pragma once

// The reduction that svd.h begins with, in a file of its own because it can be tested by what it
// promises: U and V have orthonormal columns, and U * B * V^T is the matrix.

#include <cmath>

#include "linalg/matrix.h"
#include "linalg/vector.h"

namespace Vell {

/// Reduces an m x n matrix A by Householder reflections to A = U * B * V^T with B upper bidiagonal:
/// the first half of a singular value decomposition (svd.h, which names the source).
///
/// Shapes: `u` is A and becomes U, m x n; `diagonal` and `superdiagonal` have n elements, of which
///         superdiagonal[i] stands between the diagonal elements i - 1 and i, so the first is 0;
///         `v` is n x n and becomes V, not transposed. Any m and n; the diagonal is 0 from m on.
/// Cost:   of the order of n^2 * max(m, n) operations.
/// No errors. Only basic operations and square roots in a fixed order, so equal input gives equal
/// bits. The Householder vectors are scaled by the sum of their absolute values before they are
/// squared.
void Bidiagonalise(Matrix& u, Vector& diagonal, Vector& superdiagonal, Matrix& v);

/// The magnitude of a number with the sign of another, where zero of either sign is positive and a
/// NaN negative.
inline double WithSignOf(double magnitude, double sign) noexcept {
  return sign >= 0 ? std::fabs(magnitude) : -std::fabs(magnitude);
}

}  // namespace Vell
