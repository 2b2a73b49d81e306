#include "linalg/kernels/packed_columns.h"

#include "foundation/growable_array.h"
#include "foundation/integer_size.h"

namespace Vell {

void RemovePackedColumns(std::span<std::uint8_t> block, std::int32_t rows, std::int32_t columns,
                         int bitsPerCell, const IndexVector& removed) {
  GrowableArray<bool> isRemoved(columns);
  for (const std::int32_t column : removed) {
    RequireIndex(column, columns);
    isRemoved[column] = true;
  }
  const auto bits = static_cast<std::size_t>(bitsPerCell);
  const auto cellMask = static_cast<std::uint8_t>((1U << bits) - 1);
  const auto shiftOf = [bits](std::size_t bit) { return 8 - bits - (bit & 7); };
  std::size_t from = 0;
  std::size_t to = 0;
  for (std::int32_t i = 0; i < rows; ++i) {
    for (std::int32_t j = 0; j < columns; ++j, from += bits) {
      if (isRemoved[j]) {
        continue;
      }
      const auto cell = static_cast<std::uint8_t>(block[from >> 3] >> shiftOf(from) & cellMask);
      // The target lies at or before the source, so what is overwritten has been read.
      std::uint8_t& target = block[to >> 3];
      target =
          static_cast<std::uint8_t>((target & ~(cellMask << shiftOf(to))) | cell << shiftOf(to));
      to += bits;
    }
  }
  for (; to < from; to += bits) {
    block[to >> 3] &= static_cast<std::uint8_t>(~(cellMask << shiftOf(to)));
  }
}

}  // namespace Vell
