#include "linalg/kernels/cross_counts.h"

#include "linalg/symmetric_matrix.h"

namespace Vell {

CrossCounter::CrossCounter(std::int32_t columns)
    : columns_(columns), counts_(PackedTriangleSize(columns)), scratch_(columns) {}

void CrossCounter::Add(std::span<const std::int32_t> setColumns) noexcept {
  for (std::size_t a = 0; a < setColumns.size(); ++a) {
    std::int32_t* const row = counts_.begin() + PackedRowStart(setColumns[a]);
    for (std::size_t b = 0; b <= a; ++b) {
      ++row[setColumns[b]];
    }
  }
}

Matrix CrossCounter::ToMatrix() const {
  Matrix matrix(columns_, columns_);
  for (std::int32_t i = 0; i < columns_; ++i) {
    for (std::int32_t j = 0; j <= i; ++j) {
      matrix(i, j) = matrix(j, i) = counts_[PackedRowStart(i) + j];
    }
  }
  return matrix;
}

Matrix CrossCounts(const BitMatrix& matrix) {
  CrossCounter counter(matrix.Columns());
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    counter.Add(SetColumns(matrix.Row(i), counter.Scratch()));
  }
  return counter.ToMatrix();
}

}  // namespace Vell
