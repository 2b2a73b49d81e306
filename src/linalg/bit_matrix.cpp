#include "linalg/bit_matrix.h"

#include "foundation/integer_size.h"
#include "foundation/memory.h"
#include "linalg/kernels/packed_columns.h"

namespace Vell {

void BitVector::Resize(std::int32_t size) {
  size_ = 0;
  RequireNotNegative(size);
  bytes_.Resize((size >> 3) + 1);
  size_ = size;
}

void BitVector::ChangeSize(std::int32_t size) {
  RequireNotNegative(size);
  bytes_.ChangeSize((size >> 3) + 1);
  size_ = size;
}

BitMatrix::BitMatrix(std::int32_t rows, std::int32_t columns)
    : cells_(PackedCellCount(rows, columns)), rows_(rows), columns_(columns) {}

void BitMatrix::ChangeRowCount(std::int32_t rows) {
  cells_.ChangeSize(PackedCellCount(rows, columns_));
  rows_ = rows;
}

void BitMatrix::RemoveColumns(const IndexVector& columns) {
  RemovePackedColumns(cells_.Bytes(), rows_, columns_, 1, columns);
  columns_ -= columns.Size();
}

std::int32_t PackedCellCount(std::int32_t rows, std::int32_t columns) {
  RequireNotNegative(rows);
  RequireNotNegative(columns);
  return CheckedSize(static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns));
}

}  // namespace Vell
