#pragma once

// The quick way of a data file into memory, taken by nearly every file. It must accept nothing that
// the careful way of data_file_reader.h refuses, and give the same data set for what it accepts.

#include <cstdint>

#include "data/data_file_reader.h"
#include "data/data_set.h"
#include "foundation/io/stream.h"

namespace Hovar {

/// Reads a data file without anything unusual in a single pass, from the start of the stream:
/// sizes the data set and fills y, p, z, x, hospitalIds, hospitalStart and, if they are kept, keys.
/// Prints and logs nothing.
///
/// A file is plain when all its lines have the same number of fields, that number suits `poaCount`,
/// no quote and no NUL byte occurs, cells are single digits 0 and 1 (or empty, for indicators and
/// X), there is one variable besides the intercept at least, and the last line ends with a line
/// feed; lines may end with a carriage return and a line feed. For any other file the result is
/// false, and the data set is of no use: what is wrong with the file, if anything, is for the
/// careful way to say, which measures the file before it reads it.
/// Errors: "IO Exception"; "Out of memory".
bool ReadPlainDataFile(DataSet& dataSet, Vell::IO::Stream& stream, std::int32_t poaCount,
                       KeyUse keyUse);

}  // namespace Hovar
