// The reader of comma-separated text against a second one that knows the rules as a table of
// states.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/io/csv_reader.h"
#include "foundation/io/csv_writer.h"
#include "foundation/io/text_writer.h"
#include "foundation/shared_handle.h"
#include "fuzz_support.h"
#include "support/memory_stream.h"

namespace {

using Fuzzing::Require;
using Testing::MemoryStream;

enum class Verdict { kValid, kInvalidFormat, kInvalidByte };

/// The fields of each line that ends, and those after the last line feed.
struct Table {
  Verdict verdict = Verdict::kValid;
  std::vector<std::vector<std::string>> lines;
  std::vector<std::string> rest;
};

Table ReadByStates(std::string_view text) {
  enum class State { kStart, kUnquoted, kQuoted, kBehindQuote };
  State state = State::kStart;
  Table table;
  std::string field;
  for (const char c : text) {
    // After a quote within quotes a byte that is no quote must end the field, a NUL too.
    if (c == '\0' && state != State::kBehindQuote) {
      table.verdict = Verdict::kInvalidByte;
      return table;
    }
    const bool endsField = c == ',' || c == '\n';
    if (state == State::kQuoted) {
      if (c == '"') {
        state = State::kBehindQuote;
      } else {
        field += c;
      }
    } else if (endsField) {
      table.rest.push_back(field);
      field.clear();
      state = State::kStart;
      if (c == '\n') {
        table.lines.push_back(table.rest);
        table.rest.clear();
      }
    } else if (c == '"' && state == State::kStart) {
      state = State::kQuoted;
    } else if (c == '"' && state == State::kBehindQuote) {
      field += c;
      state = State::kQuoted;
    } else if (c == '"' || state == State::kBehindQuote) {
      table.verdict = Verdict::kInvalidFormat;
      return table;
    } else {
      field += c;
      state = State::kUnquoted;
    }
  }
  if (state == State::kQuoted) {
    table.verdict = Verdict::kInvalidFormat;
    return table;
  }
  table.rest.push_back(field);
  return table;
}

const std::type_info* ErrorOfVerdict(Verdict verdict) {
  switch (verdict) {
    case Verdict::kInvalidFormat:
      return &typeid(Vell::Exceptions::InvalidCsvFormatException);
    case Verdict::kInvalidByte:
      return &typeid(Vell::Exceptions::InvalidInputException);
    case Verdict::kValid:
      break;
  }
  return nullptr;
}

void CheckMeasuring(const Table& table, Vell::IO::Stream& stream) {
  Vell::IO::CsvShape shape;
  const auto* const error = Fuzzing::ErrorOf([&] { shape = Vell::IO::MeasureCsv(stream); });
  Require(Fuzzing::AreSameError(error, ErrorOfVerdict(table.verdict)), "another error, measuring");
  if (error != nullptr) {
    return;
  }
  std::size_t minimum = table.lines.empty() ? 0 : table.lines.front().size();
  std::size_t maximum = 0;
  for (const std::vector<std::string>& line : table.lines) {
    minimum = std::min(minimum, line.size());
    maximum = std::max(maximum, line.size());
  }
  Require(static_cast<std::size_t>(shape.lineCount) == table.lines.size(), "number of lines");
  Require(static_cast<std::size_t>(shape.minimumFields) == minimum, "fewest fields");
  Require(static_cast<std::size_t>(shape.maximumFields) == maximum, "most fields");
}

/// Reads every field with what ends it.
void ReadFields(Table& table, Vell::IO::Stream& stream) {
  Vell::String field;
  for (;;) {
    Vell::IO::ReadField(field, stream);
    table.rest.emplace_back(field.View());
    const int end = stream.ReadByte();
    if (end == Vell::IO::kEndOfStream) {
      return;
    }
    Require(end == ',' || end == '\n', "a field ends within a line");
    if (end == '\n') {
      table.lines.push_back(table.rest);
      table.rest.clear();
    }
  }
}

void CheckFields(const Table& expected, Vell::IO::Stream& stream) {
  Table table;
  const auto* const error = Fuzzing::ErrorOf([&] { ReadFields(table, stream); });
  Require(Fuzzing::AreSameError(error, ErrorOfVerdict(expected.verdict)), "another error, reading");
  Require(table.lines == expected.lines, "other fields");
  Require(table.rest == expected.rest, "other fields after the last line");
}

/// Each record skipped from its start, and from after its first field.
void CheckSkipping(const Table& table, std::string_view text, std::size_t windowSize) {
  MemoryStream whole(text, windowSize);
  MemoryStream behindField(text, windowSize);
  Vell::String field;
  for (std::size_t i = 0; i < table.lines.size(); ++i) {
    Vell::IO::SkipRecord(whole);
    Vell::IO::ReadField(field, behindField);
    Require(field.View() == table.lines[i].front(), "another first field");
    Vell::IO::SkipRecord(behindField);
    Require(whole.Tell() == behindField.Tell(), "records end at different places");
  }
  Vell::IO::ReadField(field, whole);
  Require(field.View() == table.rest.front(), "skipping loses the place");
}

/// What is written is what is read back.
void CheckWriting(const Table& table) {
  const auto stream = Vell::MakeShared<MemoryStream>();
  Vell::IO::TextWriter writer(stream);
  for (const std::vector<std::string>& line : table.lines) {
    for (std::size_t j = 0; j < line.size(); ++j) {
      if (j > 0) {
        writer.Write(',');
      }
      Vell::IO::WriteField(writer, line[j]);
    }
    writer.EndLine();
  }
  MemoryStream written(stream->Content());
  Table back;
  ReadFields(back, written);
  Require(back.lines == table.lines, "writing and reading give other fields");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text = Fuzzing::TextOf(data, size);
  const std::size_t windowSize = Fuzzing::TakeByte(text) % 64 + std::size_t{1};
  const Table table = ReadByStates(text);
  for (const std::size_t window : {windowSize, MemoryStream::kWhole}) {
    MemoryStream measured(text, window);
    CheckMeasuring(table, measured);
    MemoryStream read(text, window);
    CheckFields(table, read);
    if (table.verdict == Verdict::kValid) {
      CheckSkipping(table, text, window);
    }
  }
  Fuzzing::BlockStream block(text, windowSize);
  CheckMeasuring(table, *block);
  (*block).Seek(0);
  CheckFields(table, *block);
  CheckWriting(table);
  return 0;
}
