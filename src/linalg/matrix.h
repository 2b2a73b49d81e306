#pragma once

#include <cassert>
#include <cstdint>
#include <span>

#include "linalg/vector.h"

namespace Vell {

/// A dense matrix of doubles, row-major: cell (i, j) at i * columns + j.
class Matrix {
 public:
  Matrix() = default;

  /// A zero-filled matrix. The number of cells is formed as a 32-bit product that wraps around, and
  /// nothing but a negative result is refused: 65536 x 65536 gives a matrix without cells. Callers
  /// keep far away from such sizes.
  /// Errors: InvalidArgumentException "Invalid argument"; "Out of memory".
  Matrix(std::int32_t rows, std::int32_t columns);

  std::int32_t Rows() const noexcept { return rows_; }
  std::int32_t Columns() const noexcept { return columns_; }
  std::int32_t CellCount() const noexcept { return cells_.Size(); }

  double& operator()(std::int32_t row, std::int32_t column) noexcept {
    assert(column >= 0 && column < columns_);
    return cells_[row * columns_ + column];
  }
  double operator()(std::int32_t row, std::int32_t column) const noexcept {
    assert(column >= 0 && column < columns_);
    return cells_[row * columns_ + column];
  }

  std::span<double> Row(std::int32_t row) noexcept;
  std::span<const double> Row(std::int32_t row) const noexcept;

  /// A copy of one column.
  Vector Column(std::int32_t column) const;

  /// Sets every cell.
  void Fill(double value) noexcept;

  void SwapRows(std::int32_t a, std::int32_t b) noexcept;
  void SwapColumns(std::int32_t a, std::int32_t b) noexcept;

 private:
  Vector cells_;
  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
};

}  // namespace Vell
