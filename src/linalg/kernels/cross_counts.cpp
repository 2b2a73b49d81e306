#include "linalg/kernels/cross_counts.h"

#include "foundation/integer_size.h"
#include "foundation/memory.h"
#include "linalg/symmetric_matrix.h"

namespace Vell {
namespace {

/// The number of counts, formed in 64 bits: PackedTriangleSize does not notice every size that
/// wraps around, and Add would then write beyond the counts. A matrix that Matrix refuses is
/// refused here, before gigabytes are counted that nothing could hold in the end.
std::int32_t CountsOf(std::int32_t columns) {
  RequireNotNegative(columns);
  RequireNotNegative(WrappingProduct(columns, columns));
  const auto n = static_cast<std::uint64_t>(columns);
  return CheckedSize(n * (n + 1) / 2);
}

}  // namespace

CrossCounter::CrossCounter(std::int32_t columns)
    : columns_(columns), counts_(CountsOf(columns)), scratch_(columns) {}

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
