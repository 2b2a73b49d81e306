#pragma once

// Row echelon form with complete pivoting. Column elimination (data/column_elimination.h) reads
// from it which columns a null space depends on most.

#include "linalg/matrix.h"
#include "linalg/vector.h"

namespace Vell {

/// A matrix in row echelon form and the order in which its columns became pivots.
struct RowEchelon {
  Matrix matrix;
  /// permutation[s] is the original column that stands at column s; the first ones are the pivots.
  IndexVector permutation;
};

/// Reduces a matrix by Gaussian elimination with complete pivoting. In step s the entry of largest
/// absolute value in the rows and columns from s on becomes the pivot, the first one in row-major
/// order among equal ones; its row is divided by it and it is eliminated from the rows below. The
/// reduction ends early when the remaining block holds nothing above 0.
///
/// Shapes: any m x n matrix; the result has the same shape and a permutation of n columns. Rows
///         that held nothing when the reduction ended stay as they are, rounding errors included.
/// NaN:    never larger than anything, so it is not chosen as a pivot, but spreads through its row.
/// Cost:   about m * n * min(m, n) comparisons and as many multiplications.
/// Errors: "Out of memory".
/// Only basic operations in a fixed order, so equal input gives equal bits everywhere.
/// Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed. (2013), section 3.4.8.
RowEchelon ReduceToRowEchelon(Matrix matrix);

}  // namespace Vell
