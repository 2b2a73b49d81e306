#include "foundation/io/csv_reader.h"

#include <algorithm>

#include "foundation/exceptions/exceptions.h"
#include "foundation/integer_size.h"
#include "foundation/io/csv_rules.h"
#include "foundation/io/number_scanner.h"
#include "messages/error_texts.h"

namespace Vell::IO {
namespace {

int ReadFieldByte(Stream& stream) {
  const int c = stream.ReadByte();
  if (c == '\0') {
    throw Exceptions::InvalidInputException(Messages::kErrors.invalidInputString);
  }
  return c;
}

/// Reads a field after its opening quote and through its closing one.
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
      throw Exceptions::InvalidCsvFormatException(Messages::kErrors.invalidCsvFormat);
    }
    append(kQuote);
  }
}

/// Reads one field by the rules and passes its bytes to `append`.
template <typename Sink>
void ReadFieldBytes(Stream& stream, Sink append) {
  int c = ReadFieldByte(stream);
  if (c == kQuote) {
    ReadQuoted(stream, append);
    return;
  }
  while (c != kEndOfStream && !EndsField(c)) {
    if (c == kQuote) {
      throw Exceptions::InvalidCsvFormatException(Messages::kErrors.invalidCsvFormat);
    }
    append(static_cast<char>(c));
    c = ReadFieldByte(stream);
  }
  if (c != kEndOfStream) {
    stream.Unget(c);
  }
}

/// The fields of a line (without its line feed) that needs no rules, so that every comma separates.
/// 0 for any other line.
std::uint64_t CountPlainFields(std::string_view line) noexcept {
  std::uint64_t commas = 0;
  std::uint64_t special = 0;
  constexpr std::size_t kStep = 128;  // what an 8-bit counter can count
  while (!line.empty()) {
    const std::string_view part = line.substr(0, kStep);
    std::uint8_t partCommas = 0;
    std::uint8_t partSpecial = 0;
    for (const char c : part) {
      partCommas = static_cast<std::uint8_t>(partCommas + (c == kSeparator ? 1 : 0));
      partSpecial = static_cast<std::uint8_t>(partSpecial | (NeedsRules(c) ? 1 : 0));
    }
    commas += partCommas;
    special += partSpecial;
    line.remove_prefix(part.size());
  }
  return special == 0 ? commas + 1 : 0;
}

/// Takes the next line, with its line feed, if it lies in the window and needs no rules, and
/// returns its fields; otherwise takes nothing and returns 0. The position must be at the start of
/// a line.
std::uint64_t TakePlainLine(Stream& stream) {
  const std::string_view window = stream.Window();
  const std::size_t length = window.find('\n');
  if (length == std::string_view::npos) {
    return 0;
  }
  const std::uint64_t fields = CountPlainFields(window.substr(0, length));
  if (fields > 0) {
    stream.TakeFromWindow(length + 1);
  }
  return fields;
}

/// Counts the lines of a file and their fields as they are met.
class ShapeCounter {
 public:
  void AddLine(std::uint64_t fields) {
    const std::int32_t count = CheckedSize(fields);
    minimum_ = lines_ == 0 ? count : std::min(minimum_, count);
    maximum_ = std::max(maximum_, count);
    ++lines_;
  }
  CsvShape Shape() const { return {minimum_, maximum_, CheckedSize(lines_)}; }

 private:
  std::int32_t minimum_ = 0;
  std::int32_t maximum_ = 0;
  std::uint64_t lines_ = 0;
};

}  // namespace

CsvShape MeasureCsv(Stream& stream) {
  ShapeCounter shape;
  std::uint64_t fields = 0;
  for (;;) {
    if (fields == 0) {
      if (const std::uint64_t plainFields = TakePlainLine(stream); plainFields > 0) {
        shape.AddLine(plainFields);
        continue;
      }
    }
    ReadFieldBytes(stream, [](char) {});
    const int c = stream.ReadByte();
    if (c == kEndOfStream) {
      return shape.Shape();
    }
    ++fields;
    if (c == '\n') {
      shape.AddLine(fields);
      fields = 0;
    }
  }
}

void ReadField(String& field, Stream& stream) {
  field.Clear();
  const std::string_view window = stream.Window();
  std::size_t length = 0;
  while (length < window.size() && !EndsField(window[length]) && !NeedsRules(window[length])) {
    ++length;
  }
  if (length < window.size() && EndsField(window[length])) {
    field.Append(window.substr(0, length));
    stream.TakeFromWindow(length);
    return;
  }
  ReadFieldBytes(stream, [&field](char byte) { field.Append(byte); });
}

void ReadWholeField(String& field, Stream& stream) {
  ReadField(field, stream);
  SkipField(stream);
}

double ReadRealField(Stream& stream) {
  double value = 0;
  if (ScanReal(stream, value) != ScanResult::kNumber) {
    throw Exceptions::EndOfStreamException(Messages::kErrors.unexpectedEnd);
  }
  SkipField(stream);
  return value;
}

int SkipField(Stream& stream) {
  int c = stream.ReadByte();
  while (c != kEndOfStream && !EndsField(c)) {
    c = stream.ReadByte();
  }
  return c;
}

void SkipFields(Stream& stream, std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i) {
    SkipField(stream);
  }
}

void SkipRecord(Stream& stream) {
  const std::string_view window = stream.Window();
  const std::size_t end = window.find('\n');
  if (end != std::string_view::npos && !NeedsRules(window.substr(0, end))) {
    stream.TakeFromWindow(end + 1);
    return;
  }
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
