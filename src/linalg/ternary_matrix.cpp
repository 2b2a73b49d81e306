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

TernaryMatrix::TernaryMatrix(std::int32_t rows, std::int32_t columns)
    : cells_(PackedCellCount(rows, columns)), rows_(rows), columns_(columns) {}

void TernaryMatrix::RemoveColumns(const IndexVector& columns) {
  RemovePackedColumns(cells_.Bytes(), rows_, columns_, 2, columns);
  columns_ -= columns.Size();
}

}  // namespace Vell
