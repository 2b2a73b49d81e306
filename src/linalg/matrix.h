#pragma once

// The dense matrix of the decompositions (svd.h, row_echelon.h) and of tables of estimates.
// Designs, which are large, are packed (packed_matrix.h).

#include <cassert>
#include <cstdint>
#include <span>

#include "linalg/vector.h"

namespace Vell {

/// A dense matrix of doubles, row-major: cell (i, j) at i * columns + j. Rows and columns count
/// from 0; an index must exist.
class Matrix {
 public:
  /// A matrix without rows or columns.
  Matrix() = default;

  /// A zero-filled matrix of fewer than 2^31 cells. Counts that could give more must be refused
  /// before: the product is formed in 32 bits, so it can come out too small (65536 x 65536 gives
  /// no cells at all).
  /// Errors: InvalidArgumentException "Invalid argument" for a product that is negative in 32 bits;
  ///         "Out of memory".
  Matrix(std::int32_t rows, std::int32_t columns);

  std::int32_t Rows() const noexcept { return rows_; }
  std::int32_t Columns() const noexcept { return columns_; }
  std::int32_t CellCount() const noexcept { return cells_.Size(); }

  /// Cell (row, column), 0 <= row < Rows() and 0 <= column < Columns().
  double& operator()(std::int32_t row, std::int32_t column) noexcept {
    assert(column >= 0 && column < columns_);
    return cells_[row * columns_ + column];
  }
  double operator()(std::int32_t row, std::int32_t column) const noexcept {
    assert(column >= 0 && column < columns_);
    return cells_[row * columns_ + column];
  }

  /// The cells of one row; valid as long as the matrix and not assigned to.
  std::span<double> Row(std::int32_t row) noexcept;
  std::span<const double> Row(std::int32_t row) const noexcept;

  /// A copy of one column, top to bottom.
  /// Errors: "Out of memory".
  Vector Column(std::int32_t column) const;

  /// Sets every cell.
  void Fill(double value) noexcept;

  /// Exchange two rows, or two columns, cell by cell; a row or column with itself changes nothing.
  void SwapRows(std::int32_t a, std::int32_t b) noexcept;
  void SwapColumns(std::int32_t a, std::int32_t b) noexcept;

 private:
  Vector cells_;
  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
};

}  // namespace Vell
