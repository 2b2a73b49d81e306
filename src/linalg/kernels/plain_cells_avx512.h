#pragma once

// Kernels that are written for AVX-512. plain_cells.h has their contracts.

#include <cstdint>
#include <string_view>

#include "linalg/kernels/packed_writer.h"

namespace Vell {

// The forms of TakeBinaryCells and TakeTernaryCells for VectorWidth::kAvx512. They exist where
// kHasAvx512Forms; see linalg/kernels/dispatch.h. On a processor without these instructions a call
// ends the process, so only RunForm calls them.
std::string_view TakeBinaryCellsAvx512(PackedWriter& writer, std::string_view text,
                                       std::int32_t& count) noexcept;
std::string_view TakeTernaryCellsAvx512(PackedWriter& writer, std::string_view text,
                                        std::int32_t& count) noexcept;

}  // namespace Vell
