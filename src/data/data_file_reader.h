#pragma once

// The way of a data file into memory. It decides which files are accepted and what is said of the
// others; how cells are read is in cell_reader.h and, for files without anything unusual, in
// plain_data_reader.h. Both ways give the same data set and the same lines.

#include <cstdint>

#include "data/data_set.h"
#include "foundation/io/stream.h"

namespace Hovar {

/// Whether the records' keys stay in memory, for a run that writes them.
enum class KeyUse { kDrop, kKeep };

/// Fields of a line before the indicators: key, hospital ID and outcome.
inline constexpr std::int32_t kFieldsBeforeIndicators = 3;

/// Reads a data file: CSV with one header line and one line per patient record, records of one
/// hospital together. docs/formats.md describes the columns.
///
/// What the data set held is replaced. The stream is read more than once, so it must be at its
/// beginning and able to seek; it is not closed. `poaCount` is the number of present-on-admission
/// indicator columns, 0 or more. The first line is the header, whose names are taken as the CSV
/// reader returns them; they need not differ. A file of a header line alone gives a data set
/// without records. Progress goes to standard output; counts, and a warning for each record with Y
/// = 0 and P = 1 (whose P becomes 0: a condition that was present on admission implies the
/// outcome), to the log; the data set counts these records.
///
/// Cells hold 0 or 1. An indicator or an X cell that is empty (blanks and tabs aside) is missing;
/// so is one that holds nothing before a carriage return and a line feed.
///
/// Errors: Exception "Variable number of fields", "Wrong number of POA indicators in definition
///         file", "Data wrong format" (bytes after the last record, as where the last line feed is
///         missing), "Data must be grouped by hospital ID"; InvalidInputException "Invalid input"
///         for a number other than 0 and 1; IOException "IO Exception" for a cell that is no
///         number; "Unexpected end of stream"; InvalidArgumentException "Invalid argument" or
///         "Index out of range" for a file without a header line or with fewer fields than the
///         indicators ask for; those of the CSV reader; "Out of memory". The data set is of no use
///         after an error.
void ReadDataFile(DataSet& dataSet, Vell::IO::Stream& stream, std::int32_t poaCount,
                  KeyUse keyUse = KeyUse::kDrop);

}  // namespace Hovar
