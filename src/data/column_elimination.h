#pragma once

// Removes the variables that carry no information before any model is fitted: columns that are zero
// everywhere and columns that are linear combinations of others.
//
// Dependencies are found on the cross counts M = A^T A of the 0/1 data A, whose null space is that
// of A. Its basis, the rows of a k x p matrix N, is reduced with complete pivoting; the k pivot
// columns are the ones on which the null space depends most, and removing them removes every
// dependency: no null vector is left without a pivot. The first coordinate is left out of N, so the
// intercept is never chosen.
//
// Two columns that are equal up to rounding in N (identical columns of the data, say) are as good
// as each other, and rounding decides between them; likewise for several dependencies at once. The
// arithmetic is therefore fixed, operation by operation, so that every platform decides alike.

#include <cstdint>

#include "data/data_set.h"
#include "foundation/growable_array.h"
#include "foundation/string.h"
#include "linalg/matrix.h"
#include "linalg/vector.h"

namespace Hovar {

/// The stages of column elimination, in their order.
enum class EliminationStage {
  kZeroZ,       // Z is zero in all records
  kZeroX,       // X is zero in all complete records
  kDependentZ,  // Z is dependent
  kDependentX,  // X is dependent among the complete records with P = 0
};

/// What is wrong with a column in the records of its stage: the first one that applies.
enum class EliminationReason {
  kZero,       // zero in all of them
  kConstant,   // equal to column 0, the intercept
  kEqual,      // equal to another column that the stage keeps
  kDependent,  // none of these: a linear combination of kept columns, within the tolerance
};

/// A variable that column elimination removed: when, why, and what it was called.
struct EliminatedVariable {
  EliminationStage stage = EliminationStage::kZeroZ;
  EliminationReason reason = EliminationReason::kZero;
  /// Its column before the elimination; 0 is the intercept.
  std::int32_t column = 0;
  /// For kEqual the first column, numbered likewise, that it equals; otherwise -1.
  std::int32_t equalColumn = -1;
  Vell::String zName;
  Vell::String xName;
};

/// Removes, in this order: zero columns of Z; columns of X that are zero in all complete records;
/// dependent columns of Z; columns of X that are dependent among the complete records with P = 0,
/// on which [Y|X,P=0] is fitted. A variable always goes with both its columns. Progress goes to the
/// log, "Check rank" to standard output. `tolerance` is that of FindDependentColumns.
/// Result: `eliminated` holds the removed variables in the order of their removal, which is that of
///         the log. After an error it holds those that were found before it.
/// Errors: Exception "Rank is not maximal" when removal left a dependency; "Error in eliminating
///         dependent columns"; those of the decomposition; "Out of memory".
void EliminateColumns(Vell::GrowableArray<EliminatedVariable>& eliminated, DataSet& dataSet,
                      double tolerance);

/// The same for callers that need nothing but the data set.
void EliminateColumns(DataSet& dataSet, double tolerance);

/// Logs the names of the listed variables and removes them; counts the complete records again.
/// `columns` are distinct and in range, in the order in which their names are logged. Column 0, the
/// intercept, may be among them.
/// Errors: "Index out of range"; "Out of memory".
void RemoveColumns(DataSet& dataSet, const Vell::IndexVector& columns);

/// The columns, ascending, that are set in no record, or in no record without a missing value; all
/// of them where there is no such record. `recordHasMissing` has one entry per row of x.
/// Errors: "Out of memory".
Vell::IndexVector FindZeroColumns(const Vell::BitMatrix& z);
Vell::IndexVector FindZeroColumns(const Vell::TernaryMatrix& x,
                                  const Vell::BitVector& recordHasMissing);

/// The columns of a symmetric p x p matrix of cross counts to remove, in pivot order, so that the
/// others are independent; column 0 is never among them. A singular value counts as zero when it is
/// not above `tolerance` times the largest.
/// Cost:   a singular value decomposition of the p x p matrix and one of the null space.
/// Errors: as EliminateColumns.
Vell::IndexVector FindDependentColumns(const Vell::Matrix& counts, double tolerance);

/// True when two 0/1 columns are equal: as many records have both as have each. `counts` is the
/// matrix of cross counts; a and b are column numbers of it.
bool AreEqualColumns(const Vell::Matrix& counts, std::int32_t a, std::int32_t b) noexcept;

/// True when every singular value is above `tolerance` times the largest. Cost: one singular value
/// decomposition, of the order of p^3 operations for p columns.
/// Errors: those of the decomposition; "Out of memory".
bool IsFullRank(const Vell::Matrix& counts, double tolerance);

}  // namespace Hovar
