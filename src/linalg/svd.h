#pragma once

// The singular value decomposition. Column elimination (data/column_elimination.h) counts with it
// how many columns are independent, and finds their null space.

#include "linalg/matrix.h"
#include "linalg/vector.h"

namespace Vell {

/// A singular value decomposition A = U * diag(w) * V^T of an m x n matrix, with a rank threshold.
struct SvdResult {
  /// Relative tolerance of the rank, set before the decomposition.
  double tolerance = 0;
  /// The extreme singular values; 0 without any.
  double smallestValue = 0;
  double largestValue = 0;
  /// largestValue * tolerance. A singular value counts towards the rank when it is strictly above.
  double threshold = 0;
  Matrix u;  // m x n
  Vector w;  // n, all >= 0, not sorted
  Matrix v;  // n x n, not transposed

  /// Number of singular values above the threshold.
  std::int32_t Rank() const noexcept;
};

/// Decomposes A by Householder reduction to bidiagonal form and implicit-shift QR steps.
///
/// Shapes: `result.tolerance` is read, everything else of the result is replaced. Any m and n, also
///         m < n (then at least n - m singular values are 0) and order 0, which has all values and
///         the threshold 0.
/// Errors: NumericException "Too many iterations in singular value decomposition" when one value
///         takes more than 30 steps; "Negative singular values in singular value decomposition";
///         "Out of memory".
/// Only basic operations and square roots in a fixed order, so equal input gives equal bits
/// everywhere.
/// Source: G. H. Golub, C. Reinsch, Singular value decomposition and least squares solutions,
///         Numerische Mathematik 14 (1970), pages 403-420. Departing from the procedure there, each
///         Householder vector is scaled by the sum of the absolute values of its part of the
///         matrix, and the matrix by a power of two, so that no square over- or underflows, and
///         negligible elements are recognised by |x| + norm == norm.
void Decompose(SvdResult& result, const Matrix& a);

}  // namespace Vell
