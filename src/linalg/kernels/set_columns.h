#pragma once

// Gathers the columns that are set in one packed row: the innermost step of every fit, imputation
// sweep and prediction, and the only place that decodes packed cells wider than one at a time.
//
// Layout. Cells lie one after the other without regard to row or byte boundaries, the first one in
// the most significant bits. One bit a cell:
//
//     byte 0            byte 1
//     7 6 5 4 3 2 1 0   7 6 5 4 ...
//     c0 c1 c2 ... c7   c8 c9 ...
//
// Two bits a cell, the missing bit above the value bit:
//
//     7 6   5 4   3 2   1 0
//     m0 v0 m1 v1 m2 v2 m3 v3
//
// Cell (i, j) of a matrix with V columns is cell i * V + j, so a row may begin at any bit. The
// block has one spare byte after its last cell, but no more: a machine word is loaded only where it
// lies within the block.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

namespace Vell {

/// Where a row of packed cells lies within its block, which belongs to the matrix and must outlive
/// the row. All functions below only read it.
template <int kBitsPerCell>
struct PackedRow {
  const std::uint8_t* block = nullptr;
  std::size_t blockSize = 0;  // bytes
  std::size_t firstBit = 0;   // of the row's first cell, counted from the block's start
  std::int32_t columns = 0;
};

using BitRow = PackedRow<1>;
using TernaryRow = PackedRow<2>;

/// The bits of a cell that a scan looks at: the value bits or the missing bits of cells of two
/// bits, or all bits, where a cell has one.
inline constexpr std::uint64_t kValuePlane = 0x5555'5555'5555'5555;
inline constexpr std::uint64_t kMissingPlane = 0xAAAA'AAAA'AAAA'AAAA;
inline constexpr std::uint64_t kOnlyPlane = ~std::uint64_t{0};

/// The 8 bytes from `byte` (at most blockSize) on as one number, the first one in the most
/// significant place; bytes beyond the block's end count as 0.
inline std::uint64_t LoadBigEndian(const std::uint8_t* block, std::size_t blockSize,
                                   std::size_t byte) noexcept {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  std::uint8_t bytes[kWord] = {};
  if (byte + kWord <= blockSize) {
    std::memcpy(bytes, block + byte, kWord);
  } else {
    std::memcpy(bytes, block + byte, blockSize - byte);
  }
  std::uint64_t word = 0;
  for (const std::uint8_t b : bytes) {
    word = word << 8 | b;
  }
  return word;
}

/// Calls visit(column) for every column of the row that has a bit of the plane set, ascending.
/// Cost: one step for 56 bits of the row and one for each bit that is set.
template <std::uint64_t kPlane, int kBitsPerCell, typename Visit>
inline void VisitColumns(const PackedRow<kBitsPerCell>& row, Visit visit) {
  // A word that is shifted to the row's first bit holds at least 57 valid bits. 56 of them are used
  // at a time, which is a whole number of cells.
  constexpr std::int64_t kBitsPerStep = 56;
  constexpr std::int32_t kColumnsPerStep = kBitsPerStep / kBitsPerCell;
  std::size_t bit = row.firstBit;
  std::int64_t bitsLeft = std::int64_t{row.columns} * kBitsPerCell;
  for (std::int32_t column = 0; bitsLeft > 0; column += kColumnsPerStep) {
    const auto used = static_cast<int>(std::min(bitsLeft, kBitsPerStep));
    std::uint64_t word = LoadBigEndian(row.block, row.blockSize, bit >> 3) << (bit & 7);
    word &= kPlane & (~std::uint64_t{0} << (64 - used));
    while (word != 0) {
      const int position = std::countl_zero(word);
      visit(column + position / kBitsPerCell);
      word ^= std::uint64_t{1} << (63 - position);
    }
    bit += kBitsPerStep;
    bitsLeft -= kBitsPerStep;
  }
}

/// Writes the columns that have a bit of the plane set, ascending, to `scratch`, which has room for
/// all columns of the row, and returns the part that was filled: a view of `scratch`.
template <std::uint64_t kPlane, int kBitsPerCell>
inline std::span<const std::int32_t> GatherColumns(const PackedRow<kBitsPerCell>& row,
                                                   std::span<std::int32_t> scratch) noexcept {
  std::size_t count = 0;
  VisitColumns<kPlane>(row, [&](std::int32_t column) { scratch[count++] = column; });
  return scratch.first(count);
}

/// The columns of a row whose bit, or whose value bit, is set.
inline std::span<const std::int32_t> SetColumns(const BitRow& row,
                                                std::span<std::int32_t> scratch) noexcept {
  return GatherColumns<kOnlyPlane>(row, scratch);
}
inline std::span<const std::int32_t> SetColumns(const TernaryRow& row,
                                                std::span<std::int32_t> scratch) noexcept {
  return GatherColumns<kValuePlane>(row, scratch);
}

/// The 64 bits from `bit` on, the first one in the most significant place; 0 beyond the block's
/// end.
inline std::uint64_t LoadBits(const std::uint8_t* block, std::size_t blockSize,
                              std::size_t bit) noexcept {
  const std::size_t byte = std::min(bit >> 3, blockSize);
  const auto shift = static_cast<int>(bit & 7);
  const std::uint64_t word = LoadBigEndian(block, blockSize, byte) << shift;
  const std::uint32_t next = byte + 8 < blockSize ? block[byte + 8] : 0;
  return word | next >> (8 - shift);
}

/// The bits of a word in reverse order.
inline std::uint64_t ReverseBits(std::uint64_t word) noexcept {
  constexpr std::uint64_t kOdd = 0x5555'5555'5555'5555;
  constexpr std::uint64_t kPairs = 0x3333'3333'3333'3333;
  constexpr std::uint64_t kNibbles = 0x0F0F'0F0F'0F0F'0F0F;
  word = (word >> 1 & kOdd) | (word & kOdd) << 1;
  word = (word >> 2 & kPairs) | (word & kPairs) << 2;
  word = (word >> 4 & kNibbles) | (word & kNibbles) << 4;
  return __builtin_bswap64(word);
}

/// The even bits of a word, brought together in its lower half.
inline std::uint64_t GatherEvenBits(std::uint64_t word) noexcept {
  word &= 0x5555'5555'5555'5555;
  word = (word | word >> 1) & 0x3333'3333'3333'3333;
  word = (word | word >> 2) & 0x0F0F'0F0F'0F0F'0F0F;
  word = (word | word >> 4) & 0x00FF'00FF'00FF'00FF;
  word = (word | word >> 8) & 0x0000'FFFF'0000'FFFF;
  return (word | word >> 16) & 0x0000'0000'FFFF'FFFF;
}

/// Calls visit(bit) for every set bit of a word, ascending.
template <typename Visit>
inline void VisitBits(std::uint64_t word, Visit visit) {
  for (; word != 0; word &= word - 1) {
    visit(std::countr_zero(word));
  }
}

// Columns of a row 64 to a word: column j is bit j % 64 of word j / 64. There is one word for every
// 64 columns or part of them.

inline constexpr std::int32_t kColumnsPerWord = 64;
constexpr std::int32_t ColumnWordCount(std::int32_t columns) noexcept {
  return (columns + kColumnsPerWord - 1) / kColumnsPerWord;
}

/// The columns of a row that a word stands for, 0 <= word < ColumnWordCount(row.columns).
template <int kBitsPerCell>
inline std::uint64_t ColumnsInWord(const PackedRow<kBitsPerCell>& row, std::int32_t word) noexcept {
  const std::int32_t rest = row.columns - word * kColumnsPerWord;
  return rest >= kColumnsPerWord ? ~std::uint64_t{0} : ~(~std::uint64_t{0} << rest);
}

/// The columns whose bit is set.
inline std::uint64_t SetColumnWord(const BitRow& row, std::int32_t word) noexcept {
  const std::size_t first = row.firstBit + static_cast<std::size_t>(word) * kColumnsPerWord;
  return ReverseBits(LoadBits(row.block, row.blockSize, first)) & ColumnsInWord(row, word);
}

/// The columns whose value bit is set, and those whose missing bit is.
struct TernaryWords {
  std::uint64_t values;
  std::uint64_t missing;
};
inline TernaryWords TernaryColumnWords(const TernaryRow& row, std::int32_t word) noexcept {
  const std::size_t first = row.firstBit + static_cast<std::size_t>(word) * 2 * kColumnsPerWord;
  const std::uint64_t front = LoadBits(row.block, row.blockSize, first);
  const std::uint64_t back = LoadBits(row.block, row.blockSize, first + kColumnsPerWord);
  const std::uint64_t columns = ColumnsInWord(row, word);
  return {ReverseBits(GatherEvenBits(front) << 32 | GatherEvenBits(back)) & columns,
          ReverseBits(GatherEvenBits(front >> 1) << 32 | GatherEvenBits(back >> 1)) & columns};
}
inline std::uint64_t SetColumnWord(const TernaryRow& row, std::int32_t word) noexcept {
  return TernaryColumnWords(row, word).values;
}

/// True when some cell of the row has its missing bit set.
inline bool HasMissingCell(const TernaryRow& row) noexcept {
  bool hasMissing = false;
  VisitColumns<kMissingPlane>(row, [&](std::int32_t) { hasMissing = true; });
  return hasMissing;
}

/// The columns of a row whose missing bit is set.
inline std::span<const std::int32_t> MissingColumns(const TernaryRow& row,
                                                    std::span<std::int32_t> scratch) noexcept {
  return GatherColumns<kMissingPlane>(row, scratch);
}

}  // namespace Vell
