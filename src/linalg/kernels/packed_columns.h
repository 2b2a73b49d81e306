#pragma once

// What PackedMatrix::RemoveColumns does, for cells of one bit and of two alike.

#include <cstdint>
#include <span>

#include "linalg/vector.h"

namespace Vell {

/// Removes columns from a packed matrix in place: every row is compacted, front to back, and the
/// rows move together. The block keeps its size; the bits that become free are set to 0.
///
/// Shapes: `block` holds rows * columns cells of `bitsPerCell` bits (1 or 2); `removed` lists
///         distinct columns in any order.
/// Errors: InvalidArgumentException "Index out of range" for a column that is not there; "Out of
///         memory". Nothing has changed then.
/// Cost:   one step a cell.
void RemovePackedColumns(std::span<std::uint8_t> block, std::int32_t rows, std::int32_t columns,
                         int bitsPerCell, const IndexVector& removed);

}  // namespace Vell
