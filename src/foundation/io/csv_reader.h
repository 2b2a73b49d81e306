#pragma once

// Reading comma-separated text by the rules of csv_rules.h. docs/formats.md describes the files.

#include <cstdint>

#include "foundation/io/stream.h"
#include "foundation/string.h"

namespace Vell::IO {

/// Fields per line and lines of a file, counting only lines that end with a line feed. An empty
/// file has 0 fields and 0 lines.
struct CsvShape {
  std::int32_t minimumFields = 0;
  std::int32_t maximumFields = 0;
  std::int32_t lineCount = 0;
};

/// Reads the stream from its position to its end and counts.
/// Errors: InvalidCsvFormatException "Invalid CSV format" for a quote inside an unquoted field, a
///         quoted field that does not end, and a closing quote followed by anything but a comma, a
///         line feed or the end; InvalidInputException "Invalid input string" for a NUL byte;
///         "Integer overflow" for 2^31 lines or fields; "IO Exception".
CsvShape MeasureCsv(Stream& stream);

/// Reads one field into `field` and leaves the comma or line feed behind it in the stream.
/// Errors: as MeasureCsv; "Out of memory".
void ReadField(String& field, Stream& stream);

/// Reads a whole field, and the comma or line feed behind it.
/// Errors: as ReadField.
void ReadWholeField(String& field, Stream& stream);

/// Reads a whole field that must begin with a number, and the comma or line feed behind it.
/// Errors: EndOfStreamException "Unexpected end of stream" when there is no number.
double ReadRealField(Stream& stream);

/// Reads past the rest of a field, its comma or line feed included, or to the end of the stream.
/// Quotes mean nothing to it. Returns the byte that ended the field, or kEndOfStream.
int SkipField(Stream& stream);
/// The same for `count` fields.
void SkipFields(Stream& stream, std::int64_t count);

/// Reads past the rest of a record by the rules of CSV: a line feed within quotes does not end it.
/// The position must be at the start of a field, or at the comma or line feed that ended one.
/// Errors: as MeasureCsv.
void SkipRecord(Stream& stream);

/// Reads past the rest of a line, its line feed included, or to the end of the stream. Quotes mean
/// nothing to it.
void SkipLine(Stream& stream);

}  // namespace Vell::IO
