#include "data/cell_reader.h"

#include <bit>
#include <string_view>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/csv_reader.h"

namespace Hovar {
namespace {

bool EndsCell(int c) noexcept { return c == ',' || c == '\n'; }

/// Reads a cell that must hold 0 or 1, up to the end of its number.
bool ReadBinaryNumber(Vell::IO::Stream& stream) {
  std::int32_t value = 0;
  if (stream.Scan("%d", &value, sizeof value) != 1) {
    throw Vell::Exceptions::EndOfStreamException("Unexpected end of stream");
  }
  if (value != 0 && value != 1) {
    throw Vell::Exceptions::InvalidInputException("Invalid input");
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
  const bool isMissing = EndsCell(c) || c == Vell::IO::kEndOfStream;
  const bool value = !isMissing && ReadBinaryNumber(stream);
  Vell::IO::SkipField(stream);
  return isMissing ? Ternary::kMissing : value ? Ternary::kOne : Ternary::kZero;
}

// The quick forms look at the front of the bytes that were read ahead.

bool IsPlainCell(std::string_view bytes) noexcept {
  return bytes.size() >= 2 && (bytes[0] == '0' || bytes[0] == '1') && EndsCell(bytes[1]);
}

bool IsEmptyCell(std::string_view bytes) noexcept { return !bytes.empty() && EndsCell(bytes[0]); }

/// The cells of one digit and a comma each that stand in the next eight bytes.
struct PlainCells {
  int count = 0;             // 0 .. 4
  std::uint64_t values = 0;  // in bits 0, 16, 32 and 48; meaningless behind the count
};

PlainCells FindPlainCells(std::string_view bytes) noexcept {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < 8; ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << 8 * i;
  }
  constexpr std::uint64_t kZeroAndComma = 0x2C30'2C30'2C30'2C30;
  constexpr std::uint64_t kValues = 0x0001'0001'0001'0001;
  const std::uint64_t difference = (word & ~kValues) ^ kZeroAndComma;
  return {std::countr_zero(difference) / 16, word & kValues};  // 64 / 16 without a difference
}

/// Brings the four values together by one multiplication, each shifted by its own power of two to
/// its place from bit 48 on; no two partial products meet in one bit.
std::uint64_t GatherFour(std::uint64_t values, std::uint64_t powers) noexcept {
  return values * powers >> 48;
}

constexpr std::uint64_t Power(int exponent) noexcept { return std::uint64_t{1} << exponent; }

struct BinaryCells {
  static constexpr int kCellSize = 1;  // bits
  static constexpr std::uint64_t kPowers = Power(51) | Power(34) | Power(17) | Power(0);
  static constexpr std::uint64_t kMask = 0xF;
  static std::uint64_t ReadAny(Vell::IO::Stream& stream) {
    return ReadAnyBinaryCell(stream) ? 1 : 0;
  }
  /// Bytes of an empty cell that may be taken as missing.
  static constexpr bool kMayBeEmpty = false;
};

struct TernaryCells {
  static constexpr int kCellSize = 2;  // bits
  static constexpr std::uint64_t kPowers = Power(54) | Power(36) | Power(18) | Power(0);
  static constexpr std::uint64_t kMask = 0x55;
  static constexpr std::uint64_t kMissing = 2;
  static std::uint64_t ReadAny(Vell::IO::Stream& stream) {
    switch (ReadAnyTernaryCell(stream)) {
      case Ternary::kZero:
        return 0;
      case Ternary::kOne:
        return 1;
      case Ternary::kMissing:
        break;
    }
    return kMissing;
  }
  static constexpr bool kMayBeEmpty = true;
};

/// Takes one cell from the front of the bytes if it is a digit, or empty where it may be.
template <typename Cells>
bool TakePlainCell(Vell::PackedWriter& writer, std::string_view& bytes) {
  if (IsPlainCell(bytes)) {
    writer.Append(bytes[0] == '1' ? 1 : 0, Cells::kCellSize);
    bytes.remove_prefix(2);
    return true;
  }
  if constexpr (Cells::kMayBeEmpty) {
    if (IsEmptyCell(bytes)) {
      writer.Append(Cells::kMissing, Cells::kCellSize);
      bytes.remove_prefix(1);
      return true;
    }
  }
  return false;
}

/// Takes cells from the front of the bytes for as long as they are plain; `count` becomes the
/// number of those that remain to be read.
template <typename Cells>
std::string_view TakePlainCells(Vell::PackedWriter& writer, std::string_view bytes,
                                std::int32_t& count) {
  while (count >= 4 && bytes.size() >= 8) {
    const PlainCells cells = FindPlainCells(bytes);
    const std::uint64_t four = GatherFour(cells.values, Cells::kPowers) & Cells::kMask;
    writer.Append(four >> (4 - cells.count) * Cells::kCellSize, cells.count * Cells::kCellSize);
    bytes.remove_prefix(2 * static_cast<std::size_t>(cells.count));
    count -= cells.count;
    if (cells.count < 4) {
      if (!TakePlainCell<Cells>(writer, bytes)) {
        return bytes;
      }
      --count;
    }
  }
  while (count > 0 && TakePlainCell<Cells>(writer, bytes)) {
    --count;
  }
  return bytes;
}

template <typename Cells>
void ReadCells(Vell::PackedWriter& writer, Vell::IO::Stream& stream, std::int32_t count) {
  while (count > 0) {
    const std::string_view window = stream.Window();
    const std::string_view rest = TakePlainCells<Cells>(writer, window, count);
    stream.TakeFromWindow(window.size() - rest.size());
    if (count > 0) {
      writer.Append(Cells::ReadAny(stream), Cells::kCellSize);
      --count;
    }
  }
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
  if (!IsPlainCell(window)) {
    return ReadAnyTernaryCell(stream);
  }
  stream.TakeFromWindow(2);
  return window[0] == '1' ? Ternary::kOne : Ternary::kZero;
}

void ReadBinaryCells(Vell::PackedWriter& writer, Vell::IO::Stream& stream, std::int32_t count) {
  ReadCells<BinaryCells>(writer, stream, count);
}

void ReadTernaryCells(Vell::PackedWriter& writer, Vell::IO::Stream& stream, std::int32_t count) {
  ReadCells<TernaryCells>(writer, stream, count);
}

}  // namespace Hovar
