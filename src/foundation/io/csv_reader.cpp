#include "foundation/io/csv_reader.h"

#include <algorithm>

#include "foundation/exceptions/exceptions.h"
#include "foundation/integer_size.h"

namespace Vell::IO {
namespace {

constexpr char kSeparator = ',';
constexpr char kQuote = '"';

bool EndsField(int c) noexcept { return c == kSeparator || c == '\n'; }

int ReadFieldByte(Stream& stream) {
  const int c = stream.ReadByte();
  if (c == '\0') {
    throw Exceptions::InvalidInputException("Invalid input string");
  }
  return c;
}

/// Reads a field behind its opening quote and through its closing one.
template <typename Sink>
void ReadQuoted(Stream& stream, Sink append) {
  for (;;) {
    int c = ReadFieldByte(stream);
    if (c == kQuote) {
      c = stream.ReadByte();
      if (c == kEndOfStream) {
        return;
      }
      if (EndsField(c)) {
        stream.Unget(c);
        return;
      }
    } else if (c != kEndOfStream) {
      append(static_cast<char>(c));
      continue;
    }
    if (c != kQuote) {
      throw Exceptions::InvalidCsvFormatException("Invalid CSV format");
    }
    append(kQuote);
  }
}

/// Reads one field and passes its bytes to `append`; the only place that knows the quoting rules.
template <typename Sink>
void ReadFieldBytes(Stream& stream, Sink append) {
  int c = ReadFieldByte(stream);
  if (c == kQuote) {
    ReadQuoted(stream, append);
    return;
  }
  while (c != kEndOfStream && !EndsField(c)) {
    if (c == kQuote) {
      throw Exceptions::InvalidCsvFormatException("Invalid CSV format");
    }
    append(static_cast<char>(c));
    c = ReadFieldByte(stream);
  }
  if (c != kEndOfStream) {
    stream.Unget(c);
  }
}

}  // namespace

CsvShape MeasureCsv(Stream& stream) {
  CsvShape shape;
  std::uint64_t fields = 0;
  std::uint64_t lines = 0;
  for (;;) {
    ReadFieldBytes(stream, [](char) {});
    const int c = stream.ReadByte();
    if (c == kEndOfStream) {
      shape.lineCount = CheckedSize(lines);
      return shape;
    }
    ++fields;
    if (c == '\n') {
      const std::int32_t count = CheckedSize(fields);
      shape.minimumFields = lines == 0 ? count : std::min(shape.minimumFields, count);
      shape.maximumFields = std::max(shape.maximumFields, count);
      ++lines;
      fields = 0;
    }
  }
}

void ReadField(String& field, Stream& stream) {
  field.Clear();
  ReadFieldBytes(stream, [&field](char byte) { field.Append(byte); });
}

int SkipField(Stream& stream) {
  int c = stream.ReadByte();
  while (c != kEndOfStream && !EndsField(c)) {
    c = stream.ReadByte();
  }
  return c;
}

void SkipRecord(Stream& stream) {
  int c = kSeparator;
  while (c != kEndOfStream && c != '\n') {
    ReadFieldBytes(stream, [](char) {});
    c = stream.ReadByte();
  }
}

void SkipLine(Stream& stream) {
  int c = stream.ReadByte();
  while (c != kEndOfStream && c != '\n') {
    c = stream.ReadByte();
  }
}

}  // namespace Vell::IO
