#pragma once

// Reading the cells of the data file. A cell holds 0 or 1; where a cell may be missing, one that
// holds nothing but blanks and tabs, up to a comma, a line end or the end of the file, is missing.
// A number is read as the C library reads one ("%d"), so white space before it and text after it
// are skipped.
//
// Nearly all cells are a single digit and a comma. Those are taken many at a time from the bytes
// that the stream has read ahead; every other cell goes through the stream's own number reading.

#include <cstdint>

#include "foundation/io/stream.h"
#include "linalg/kernels/packed_writer.h"

namespace Hovar {

/// What a cell that can be missing holds.
enum class Ternary { kZero, kOne, kMissing };

// Each reads whole cells, with the comma or line feed after them. The stream stands at the start of
// a cell.
// Errors: EndOfStreamException "Unexpected end of stream"; IOException "IO Exception" for text that
//         is no number; InvalidInputException "Invalid input" for a number other than 0 and 1.

/// A cell that cannot be missing: true for 1.
bool ReadBinaryCell(Vell::IO::Stream& stream);
/// A cell that can be missing.
Ternary ReadTernaryCell(Vell::IO::Stream& stream);

/// Append one bit per cell for `count` cells, one after the other. The writer must have room for
/// them.
void ReadBinaryCells(Vell::PackedWriter& writer, Vell::IO::Stream& stream, std::int32_t count);

/// Append two bits per cell, the missing bit before the value bit; the value bit of a missing cell
/// is 0.
void ReadTernaryCells(Vell::PackedWriter& writer, Vell::IO::Stream& stream, std::int32_t count);

}  // namespace Hovar
