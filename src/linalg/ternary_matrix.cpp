#include "linalg/ternary_matrix.h"

#include "foundation/memory.h"
#include "linalg/bit_matrix.h"
#include "linalg/kernels/packed_columns.h"

namespace Vell {

void TernaryVector::Resize(std::int32_t size) {
  size_ = 0;
  RequireNotNegative(size);
  bytes_.Resize((size >> 2) + 1);
  size_ = size;
}

void TernaryVector::ChangeSize(std::int32_t size) {
  RequireNotNegative(size);
  bytes_.ChangeSize((size >> 2) + 1);
  size_ = size;
}

TernaryMatrix::TernaryMatrix(std::int32_t rows, std::int32_t columns)
    : cells_(PackedCellCount(rows, columns)), rows_(rows), columns_(columns) {}

void TernaryMatrix::ChangeRowCount(std::int32_t rows) {
  cells_.ChangeSize(PackedCellCount(rows, columns_));
  rows_ = rows;
}

void TernaryMatrix::RemoveColumns(const IndexVector& columns) {
  RemovePackedColumns(cells_.Bytes(), rows_, columns_, 2, columns);
  columns_ -= columns.Size();
}

}  // namespace Vell
