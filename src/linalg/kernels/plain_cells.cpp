#include "linalg/kernels/plain_cells.h"

#include <bit>

#include "linalg/kernels/dispatch.h"
#include "linalg/kernels/plain_cells_avx512.h"

namespace Vell {
namespace {

// The portable form takes four cells of a digit at a time, any other cell by itself.

/// The cells of one digit and a comma each that stand in the next eight bytes.
struct DigitCells {
  int count = 0;             // 0 .. 4
  std::uint64_t values = 0;  // in bits 0, 16, 32 and 48; meaningless beyond the count
};

DigitCells FindDigitCells(std::string_view text) noexcept {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < 8; ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(text[i])} << 8 * i;
  }
  constexpr std::uint64_t kZeroAndComma = 0x2C30'2C30'2C30'2C30;
  constexpr std::uint64_t kValues = 0x0001'0001'0001'0001;
  const std::uint64_t difference = (word & ~kValues) ^ kZeroAndComma;
  return {std::countr_zero(difference) / 16, word & kValues};  // 64 / 16 without a difference
}

constexpr std::uint64_t Power(int exponent) noexcept { return std::uint64_t{1} << exponent; }

/// Brings the four values together by one multiplication, each shifted by its own power of two to
/// its place from bit 48 on; no two partial products meet in one bit.
template <bool kMayBeEmpty>
std::uint64_t GatherFour(std::uint64_t values) noexcept {
  constexpr std::uint64_t kPowers = kMayBeEmpty ? Power(54) | Power(36) | Power(18) | Power(0)
                                                : Power(51) | Power(34) | Power(17) | Power(0);
  constexpr std::uint64_t kMask = kMayBeEmpty ? 0x55 : 0xF;
  return (values * kPowers >> 48) & kMask;
}

template <bool kMayBeEmpty>
inline constexpr int kCellSize = kMayBeEmpty ? 2 : 1;  // bits

template <bool kMayBeEmpty>
bool TakePlainCell(PackedWriter& writer, std::string_view& text) {
  constexpr std::uint64_t kMissing = 2;
  if (text.size() >= 2 && (text[0] == '0' || text[0] == '1') && text[1] == ',') {
    writer.Append(text[0] == '1' ? 1 : 0, kCellSize<kMayBeEmpty>);
    text.remove_prefix(2);
    return true;
  }
  if (kMayBeEmpty && text.starts_with(',')) {
    writer.Append(kMissing, kCellSize<kMayBeEmpty>);
    text.remove_prefix(1);
    return true;
  }
  return false;
}

template <bool kMayBeEmpty>
std::string_view TakeCellsPortably(PackedWriter& writer, std::string_view text,
                                   std::int32_t& count) {
  constexpr int kSize = kCellSize<kMayBeEmpty>;
  while (count >= 4 && text.size() >= 8) {
    const DigitCells cells = FindDigitCells(text);
    const std::uint64_t four = GatherFour<kMayBeEmpty>(cells.values);
    writer.Append(four >> (4 - cells.count) * kSize, cells.count * kSize);
    text.remove_prefix(2 * static_cast<std::size_t>(cells.count));
    count -= cells.count;
    if (cells.count < 4) {
      if (!TakePlainCell<kMayBeEmpty>(writer, text)) {
        return text;
      }
      --count;
    }
  }
  while (count > 0 && TakePlainCell<kMayBeEmpty>(writer, text)) {
    --count;
  }
  return text;
}

}  // namespace

std::string_view TakeBinaryCells(PackedWriter& writer, std::string_view text, std::int32_t& count) {
  return RunForm<TakeCellsPortably<false>, TakeBinaryCellsAvx512>(writer, text, count);
}

std::string_view TakeTernaryCells(PackedWriter& writer, std::string_view text,
                                  std::int32_t& count) {
  return RunForm<TakeCellsPortably<true>, TakeTernaryCellsAvx512>(writer, text, count);
}

}  // namespace Vell
