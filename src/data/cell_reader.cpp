#include "data/cell_reader.h"

#include <string_view>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/csv_reader.h"
#include "foundation/io/csv_rules.h"
#include "linalg/kernels/plain_cells.h"
#include "messages/error_texts.h"

namespace Hovar {
namespace {

using Vell::IO::EndsField;

/// Reads a cell that must hold 0 or 1, up to the end of its number.
bool ReadBinaryNumber(Vell::IO::Stream& stream) {
  std::int32_t value = 0;
  if (stream.Scan("%d", &value, sizeof value) != 1) {
    throw Vell::Exceptions::EndOfStreamException(Messages::kErrors.unexpectedEnd);
  }
  if (value != 0 && value != 1) {
    throw Vell::Exceptions::InvalidInputException(Messages::kErrors.invalidInput);
  }
  return value == 1;
}

// The careful forms, for any cell.

bool ReadAnyBinaryCell(Vell::IO::Stream& stream) {
  const bool value = ReadBinaryNumber(stream);
  Vell::IO::SkipField(stream);
  return value;
}

Ternary ReadAnyTernaryCell(Vell::IO::Stream& stream) {
  int c = stream.Peek();
  while (c == ' ' || c == '\t') {
    stream.ReadByte();
    c = stream.Peek();
  }
  if (c == '\r') {
    stream.ReadByte();  // white space before a number, or the first half of a line end
    c = stream.Peek() == '\n' ? '\n' : c;
  }
  const bool isMissing = EndsField(c) || c == Vell::IO::kEndOfStream;
  const bool value = !isMissing && ReadBinaryNumber(stream);
  Vell::IO::SkipField(stream);
  return isMissing ? Ternary::kMissing : value ? Ternary::kOne : Ternary::kZero;
}

// The quick forms look at the front of the bytes that were read ahead.

bool IsPlainCell(std::string_view bytes) noexcept {
  return bytes.size() >= 2 && (bytes[0] == '0' || bytes[0] == '1') && EndsField(bytes[1]);
}

bool IsEmptyCell(std::string_view bytes) noexcept { return !bytes.empty() && EndsField(bytes[0]); }

// Rows: plain cells together, then one cell in any form, in turn.

template <typename TakePlainCells, typename ReadCell>
void ReadRow(Vell::PackedWriter& writer, Vell::IO::Stream& stream, std::int32_t count,
             TakePlainCells takePlainCells, ReadCell readCell) {
  while (count > 0) {
    const std::string_view window = stream.Window();
    const std::string_view rest = takePlainCells(writer, window, count);
    stream.TakeFromWindow(window.size() - rest.size());
    if (count > 0) {
      readCell();
      --count;
    }
  }
}

std::uint64_t PackedCell(Ternary cell) noexcept {
  switch (cell) {
    case Ternary::kZero:
      return 0;
    case Ternary::kOne:
      return 1;
    case Ternary::kMissing:
      break;
  }
  return 2;
}

}  // namespace

bool ReadBinaryCell(Vell::IO::Stream& stream) {
  const std::string_view window = stream.Window();
  if (!IsPlainCell(window)) {
    return ReadAnyBinaryCell(stream);
  }
  stream.TakeFromWindow(2);
  return window[0] == '1';
}

Ternary ReadTernaryCell(Vell::IO::Stream& stream) {
  const std::string_view window = stream.Window();
  if (IsPlainCell(window)) {
    stream.TakeFromWindow(2);
    return window[0] == '1' ? Ternary::kOne : Ternary::kZero;
  }
  if (IsEmptyCell(window)) {
    stream.TakeFromWindow(1);
    return Ternary::kMissing;
  }
  return ReadAnyTernaryCell(stream);
}

void ReadBinaryCells(Vell::PackedWriter& writer, Vell::IO::Stream& stream, std::int32_t count) {
  ReadRow(writer, stream, count, Vell::TakeBinaryCells,
          [&] { writer.Append(ReadBinaryCell(stream) ? 1 : 0, 1); });
}

void ReadTernaryCells(Vell::PackedWriter& writer, Vell::IO::Stream& stream, std::int32_t count) {
  ReadRow(writer, stream, count, Vell::TakeTernaryCells,
          [&] { writer.Append(PackedCell(ReadTernaryCell(stream)), 2); });
}

}  // namespace Hovar
