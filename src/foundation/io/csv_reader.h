#pragma once

// Reading comma-separated text by the rules of csv_rules.h. docs/formats.md describes the files.
//
// Fields are read one after the other from a stream's position; what a record consists of is for
// the caller to know. Text that needs no rules is taken from the stream's window without looking at
// its bytes one by one.

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

/// Reads the stream from its position, which must be at the start of a line, to its end and counts.
/// What follows the last line feed must obey the rules but is not counted.
/// Errors: InvalidCsvFormatException "Invalid CSV format" for a quote inside an unquoted field, a
///         quoted field that does not end, and a closing quote followed by anything but a comma, a
///         line feed or the end; InvalidInputException "Invalid input string" for a NUL byte;
///         "Integer overflow" for 2^31 lines or fields; "IO Exception".
CsvShape MeasureCsv(Stream& stream);

/// Reads one field into `field`, whose old text is gone and whose buffer is used again, and leaves
/// the comma or line feed after it in the stream. Quotes are resolved. At the end of the stream the
/// field is empty; whether there is one is for the caller to know.
/// Errors: as MeasureCsv; "Integer overflow" for a field of 2^31 bytes; "Out of memory".
void ReadField(String& field, Stream& stream);

/// Reads a whole field, and the comma or line feed after it.
/// Errors: as ReadField.
void ReadWholeField(String& field, Stream& stream);

/// Reads a whole field that must begin with a number, and the comma or line feed after it. White
/// space before the number, line feeds included, and text after it are skipped; quotes mean
/// nothing.
/// Errors: EndOfStreamException "Unexpected end of stream" when there is no number; "IO Exception".
double ReadRealField(Stream& stream);

/// Reads past the rest of a field, its comma or line feed included, or to the end of the stream.
/// Quotes mean nothing to it. Returns the byte that ended the field, or kEndOfStream.
/// Errors: "IO Exception".
int SkipField(Stream& stream);
/// The same for `count` fields; nothing for a count of 0 or less.
void SkipFields(Stream& stream, std::int64_t count);

/// Reads past the rest of a record by the rules of CSV: a line feed within quotes does not end it.
/// The position must be at the start of a field, or at the comma or line feed that ended one.
/// Errors: as MeasureCsv.
void SkipRecord(Stream& stream);

/// Reads past the rest of a line, its line feed included, or to the end of the stream. Quotes mean
/// nothing to it.
/// Errors: "IO Exception".
void SkipLine(Stream& stream);

}  // namespace Vell::IO
