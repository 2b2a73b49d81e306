#pragma once

// The innermost step of reading a data file. Cells that are not plain are for data/cell_reader.h.

#include <cstdint>
#include <string_view>

#include "linalg/kernels/packed_writer.h"

namespace Vell {

// Plain cells of a text of comma-separated cells: "0," and "1,", and "," where cells may be empty.
// Each takes at most `count` of them from the front of the text, up to the first that is not plain,
// appends them in packed form, subtracts their number from `count` and returns the text after them.
// A cell whose comma lies beyond the text's end is not plain. No errors.
//
// The writer must have room for `count` cells. Every form for a processor takes the same cells and
// appends the same bits. No byte beyond the text is read.

/// One bit per cell; an empty cell is not plain.
std::string_view TakeBinaryCells(PackedWriter& writer, std::string_view text, std::int32_t& count);

/// Two bits per cell, the missing bit before the value bit; an empty cell is missing.
std::string_view TakeTernaryCells(PackedWriter& writer, std::string_view text, std::int32_t& count);

}  // namespace Vell
