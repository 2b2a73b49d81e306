#pragma once

#include <cstdint>
#include <string_view>

#include "linalg/kernels/packed_writer.h"

namespace Vell {

// The forms of TakeBinaryCells and TakeTernaryCells for VectorWidth::kAvx512. They exist where
// kHasAvx512Forms; see linalg/kernels/dispatch.h.
std::string_view TakeBinaryCellsAvx512(PackedWriter& writer, std::string_view text,
                                       std::int32_t& count) noexcept;
std::string_view TakeTernaryCellsAvx512(PackedWriter& writer, std::string_view text,
                                        std::int32_t& count) noexcept;

}  // namespace Vell
