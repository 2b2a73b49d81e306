#pragma once

// Cross counts: what column elimination (data/column_elimination.h) finds dependent columns on.

#include <cstdint>
#include <span>

#include "linalg/bit_matrix.h"
#include "linalg/matrix.h"
#include "linalg/ternary_matrix.h"

namespace Vell {

/// Counts, over records of 0/1 cells, how often each pair of columns is set together: the cross
/// products of the columns. The diagonal counts how often a column is set at all. A record with k
/// set columns costs k (k + 1) / 2 additions, whatever the number of columns.
class CrossCounter {
 public:
  /// Errors: "Invalid argument" for a negative number of columns and wherever a Matrix of
  ///         columns x columns cells is one, as for 46341 to 65535 columns; "Integer overflow" for
  ///         all other numbers from 65536 up; "Out of memory".
  explicit CrossCounter(std::int32_t columns);

  /// Adds one record, given as its ascending set columns, each below the number of columns. Counts
  /// have 32 bits: at most 2^31 - 1 records.
  void Add(std::span<const std::int32_t> setColumns) noexcept;

  /// The counts as a symmetric columns x columns matrix.
  /// Errors: "Out of memory".
  Matrix ToMatrix() const;

  /// Room for the set columns of one record, which belongs to the counter.
  std::span<std::int32_t> Scratch() noexcept { return scratch_.Span(); }

 private:
  std::int32_t columns_;
  IndexVector counts_;  // packed lower triangle by rows
  IndexVector scratch_;
};

// Both: a columns x columns matrix. Errors: those of CrossCounter.

/// The counts over all rows.
Matrix CrossCounts(const BitMatrix& matrix);

/// The counts of the value bits over the rows for which include(row) is true.
template <typename Include>
Matrix CrossCounts(const TernaryMatrix& matrix, Include include) {
  CrossCounter counter(matrix.Columns());
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    if (include(i)) {
      counter.Add(SetColumns(matrix.Row(i), counter.Scratch()));
    }
  }
  return counter.ToMatrix();
}

}  // namespace Vell
