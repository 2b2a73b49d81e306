#include "linalg/packed_matrix.h"

#include "foundation/integer_size.h"

namespace Vell {

std::int32_t PackedCellCount(std::int32_t rows, std::int32_t columns) {
  RequireNotNegative(rows);
  RequireNotNegative(columns);
  return CheckedSize(static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns));
}

}  // namespace Vell
