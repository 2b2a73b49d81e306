#include "linalg/kernels/set_columns.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "linalg/bit_matrix.h"
#include "linalg/ternary_matrix.h"
#include "support/matrices.h"
#include "support/seeded_random.h"

namespace {

using Testing::Elements;
using Testing::SeededRandom;
using Vell::BitMatrix;
using Vell::BitRow;
using Vell::BitVector;
using Vell::TernaryMatrix;
using Vell::TernaryRow;
using Vell::TernaryVector;

using Columns = std::vector<std::int32_t>;

// More than two machine words of bits and more than four of pairs.
constexpr std::int32_t kMaximumWidth = 140;

enum class Fill { kRandom, kAllSet, kNoneSet };
constexpr Fill kFills[] = {Fill::kRandom, Fill::kAllSet, Fill::kNoneSet};

// The bit of a cell within the row; cells outside the row get the opposite, so that a cell that is
// wrongly included or left out is seen.
bool CellBit(Fill fill, bool isInRow, SeededRandom& random) {
  return fill == Fill::kRandom ? random.Bit() : (fill == Fill::kAllSet) == isInRow;
}

// Room for exactly `width` columns in a block of its own, so that one more would be seen.
std::span<std::int32_t> Room(Vell::IndexVector& room, std::int32_t width) {
  room.Resize(width);
  return room.Span();
}

TEST(LoadBigEndianTest, TheFirstByteIsTheMostSignificant) {
  const std::vector<std::uint8_t> block = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0x10};
  EXPECT_EQ(Vell::LoadBigEndian(block.data(), 9, 0), 0x0123'4567'89AB'CDEFU);
  EXPECT_EQ(Vell::LoadBigEndian(block.data(), 9, 1), 0x2345'6789'ABCD'EF10U);
}

TEST(LoadBigEndianTest, BytesBehindTheBlockCountAsZero) {
  const std::vector<std::uint8_t> block = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0x10};
  EXPECT_EQ(Vell::LoadBigEndian(block.data(), 9, 2), 0x4567'89AB'CDEF'1000U);
  EXPECT_EQ(Vell::LoadBigEndian(block.data(), 9, 8), 0x1000'0000'0000'0000U);
  EXPECT_EQ(Vell::LoadBigEndian(block.data(), 9, 9), 0U);
  // a block that ends earlier than the bytes after it
  EXPECT_EQ(Vell::LoadBigEndian(block.data(), 3, 0), 0x0123'4500'0000'0000U);
}

// The bytes are worked by hand from the layout: rows of 5 columns, the first cell on top.
TEST(SetColumnsTest, ABitRowIsReadFromItsFirstBit) {
  const std::vector<std::uint8_t> block = {0b10110'011, 0b01'00000'0, 0};
  Vell::IndexVector room;
  EXPECT_EQ(Elements(Vell::SetColumns(BitRow{block.data(), 3, 0, 5}, Room(room, 5))),
            (Columns{0, 2, 3}));
  EXPECT_EQ(Elements(Vell::SetColumns(BitRow{block.data(), 3, 5, 5}, Room(room, 5))),
            (Columns{1, 2, 4}));
  EXPECT_EQ(Elements(Vell::SetColumns(BitRow{block.data(), 3, 10, 5}, Room(room, 5))), Columns{});
}

// Rows of 3 cells: value; missing, both, neither.
TEST(SetColumnsTest, ATernaryRowHasTwoPlanes) {
  const std::vector<std::uint8_t> block = {0b01'10'11'00, 0b11'00'0000, 0};
  Vell::IndexVector room;
  const TernaryRow first{block.data(), 3, 0, 3};
  EXPECT_EQ(Elements(Vell::SetColumns(first, Room(room, 3))), (Columns{0, 2}));
  EXPECT_EQ(Elements(Vell::MissingColumns(first, Room(room, 3))), (Columns{1, 2}));
  EXPECT_TRUE(Vell::HasMissingCell(first));
  const TernaryRow second{block.data(), 3, 6, 3};
  EXPECT_EQ(Elements(Vell::SetColumns(second, Room(room, 3))), Columns{1});
  EXPECT_EQ(Elements(Vell::MissingColumns(second, Room(room, 3))), Columns{1});
  const TernaryRow valueOnly{block.data(), 3, 0, 1};
  EXPECT_FALSE(Vell::HasMissingCell(valueOnly));
}

// One row at every start and of every width. With `tail` = 0 it is the last one of its block, which
// is allocated with one spare byte and no more; otherwise other cells follow.
/// The columns that are set in the words of a row; `wordOf` gives the word of an index.
template <typename WordOf>
Columns ColumnsOfWords(std::int32_t width, WordOf wordOf) {
  Columns columns;
  for (std::int32_t word = 0; word < Vell::ColumnWordCount(width); ++word) {
    Vell::VisitBits(wordOf(word), [&](int bit) { columns.push_back(64 * word + bit); });
  }
  return columns;
}

void CheckBitRow(std::int32_t start, std::int32_t width, std::int32_t tail, Fill fill,
                 SeededRandom& random) {
  BitVector cells(start + width + tail);
  Columns expected;
  for (std::int32_t k = 0; k < cells.Size(); ++k) {
    cells.Set(k, CellBit(fill, k >= start && k < start + width, random));
  }
  for (std::int32_t j = 0; j < width; ++j) {
    if (cells.Get(start + j)) {
      expected.push_back(j);
    }
  }
  const std::span<const std::uint8_t> bytes = std::as_const(cells).Bytes();
  const BitRow row{bytes.data(), bytes.size(), static_cast<std::size_t>(start), width};
  Vell::IndexVector room;
  ASSERT_EQ(Elements(Vell::SetColumns(row, Room(room, width))), expected)
      << "start " << start << ", width " << width << ", tail " << tail << ", fill "
      << static_cast<int>(fill);
  ASSERT_EQ(
      ColumnsOfWords(width, [&](std::int32_t word) { return Vell::SetColumnWord(row, word); }),
      expected)
      << "start " << start << ", width " << width << ", tail " << tail;
}

TEST(SetColumnsTest, EveryBitRowEqualsItsCells) {
  SeededRandom random(41);
  SCOPED_TRACE(random.Text());
  for (std::int32_t start = 0; start < 72; ++start) {
    for (std::int32_t width = 0; width <= kMaximumWidth; ++width) {
      for (const Fill fill : kFills) {
        ASSERT_NO_FATAL_FAILURE(CheckBitRow(start, width, 0, fill, random));
        ASSERT_NO_FATAL_FAILURE(CheckBitRow(start, width, 1 + width % 71, fill, random));
      }
    }
  }
}

void CheckTernaryRow(std::int32_t start, std::int32_t width, std::int32_t tail, Fill values,
                     Fill marks, SeededRandom& random) {
  TernaryVector cells(start + width + tail);
  Columns expectedValues;
  Columns expectedMissing;
  for (std::int32_t k = 0; k < cells.Size(); ++k) {
    const bool isInRow = k >= start && k < start + width;
    cells.SetValue(k, CellBit(values, isInRow, random));
    cells.SetMissing(k, CellBit(marks, isInRow, random));
  }
  for (std::int32_t j = 0; j < width; ++j) {
    if (cells.Value(start + j)) {
      expectedValues.push_back(j);
    }
    if (cells.IsMissing(start + j)) {
      expectedMissing.push_back(j);
    }
  }
  SCOPED_TRACE(testing::Message() << "start " << start << ", width " << width << ", tail " << tail
                                  << ", fills " << static_cast<int>(values) << " and "
                                  << static_cast<int>(marks));
  const std::span<const std::uint8_t> bytes = std::as_const(cells).Bytes();
  const TernaryRow row{bytes.data(), bytes.size(), 2 * static_cast<std::size_t>(start), width};
  Vell::IndexVector room;
  ASSERT_EQ(Elements(Vell::SetColumns(row, Room(room, width))), expectedValues);
  ASSERT_EQ(Elements(Vell::MissingColumns(row, Room(room, width))), expectedMissing);
  ASSERT_EQ(Vell::HasMissingCell(row), !expectedMissing.empty());
  ASSERT_EQ(
      ColumnsOfWords(width, [&](std::int32_t word) { return Vell::SetColumnWord(row, word); }),
      expectedValues);
  ASSERT_EQ(
      ColumnsOfWords(
          width, [&](std::int32_t word) { return Vell::TernaryColumnWords(row, word).missing; }),
      expectedMissing);
}

TEST(SetColumnsTest, EveryTernaryRowEqualsItsCells) {
  SeededRandom random(42);
  SCOPED_TRACE(random.Text());
  for (std::int32_t start = 0; start < 36; ++start) {
    for (std::int32_t width = 0; width <= kMaximumWidth; ++width) {
      const std::int32_t tail = 1 + width % 37;
      for (const Fill fill : kFills) {
        // The other plane is random, the opposite of this one, and again random.
        ASSERT_NO_FATAL_FAILURE(CheckTernaryRow(start, width, 0, fill, Fill::kRandom, random));
        ASSERT_NO_FATAL_FAILURE(CheckTernaryRow(start, width, tail, Fill::kRandom, fill, random));
      }
      ASSERT_NO_FATAL_FAILURE(
          CheckTernaryRow(start, width, 0, Fill::kAllSet, Fill::kNoneSet, random));
      ASSERT_NO_FATAL_FAILURE(
          CheckTernaryRow(start, width, tail, Fill::kNoneSet, Fill::kAllSet, random));
    }
  }
}

// A single set cell, in every place of every row: the missing mark of one cell is enough.
TEST(SetColumnsTest, ASingleMissingMarkIsFoundAnywhere) {
  for (std::int32_t width = 1; width <= kMaximumWidth; ++width) {
    TernaryMatrix matrix(4, width);
    for (std::int32_t column = 0; column < width; ++column) {
      const std::int32_t row = column % 4;
      matrix.SetMissing(row, column, true);
      for (std::int32_t i = 0; i < 4; ++i) {
        ASSERT_EQ(Vell::HasMissingCell(matrix.Row(i)), i == row)
            << "width " << width << ", column " << column << ", row " << i;
      }
      matrix.SetMissing(row, column, false);
    }
  }
}

// A block without the spare byte is still not left: a word is loaded only where the block has it.
TEST(SetColumnsTest, ABlockOfWholeBytesIsEnough) {
  for (std::int32_t byteCount = 1; byteCount <= 20; ++byteCount) {
    Vell::GrowableArray<std::uint8_t> block(byteCount);
    for (std::uint8_t& byte : block) {
      byte = 0xFF;
    }
    const auto size = static_cast<std::size_t>(byteCount);
    for (std::int32_t start = 0; start < 8; ++start) {
      const std::int32_t width = 8 * byteCount - start;
      Vell::IndexVector room;
      const auto columns = Vell::SetColumns(
          BitRow{block.begin(), size, static_cast<std::size_t>(start), width}, Room(room, width));
      ASSERT_EQ(columns.size(), static_cast<std::size_t>(width)) << byteCount << " from " << start;
      ASSERT_EQ(columns.back(), width - 1) << byteCount << " from " << start;
    }
  }
}

TEST(SetColumnsTest, RowsOfABitMatrixEqualItsCells) {
  SeededRandom random(43);
  SCOPED_TRACE(random.Text());
  for (std::int32_t width = 0; width <= kMaximumWidth; ++width) {
    BitMatrix matrix(9, width);
    for (std::int32_t i = 0; i < 9; ++i) {
      for (std::int32_t j = 0; j < width; ++j) {
        matrix.Set(i, j, random.Bit());
      }
    }
    for (std::int32_t i = 0; i < 9; ++i) {
      Columns expected;
      for (std::int32_t j = 0; j < width; ++j) {
        if (matrix.Get(i, j)) {
          expected.push_back(j);
        }
      }
      Vell::IndexVector room;
      ASSERT_EQ(Elements(Vell::SetColumns(matrix.Row(i), Room(room, width))), expected)
          << "row " << i << ", width " << width;
    }
  }
}

TEST(SetColumnsTest, RowsOfATernaryMatrixEqualItsCells) {
  SeededRandom random(44);
  SCOPED_TRACE(random.Text());
  for (std::int32_t width = 0; width <= kMaximumWidth; ++width) {
    TernaryMatrix matrix(5, width);
    for (std::int32_t i = 0; i < 5; ++i) {
      for (std::int32_t j = 0; j < width; ++j) {
        matrix.SetValue(i, j, random.Bit());
        matrix.SetMissing(i, j, random.Bit());
      }
    }
    for (std::int32_t i = 0; i < 5; ++i) {
      Columns values;
      Columns missing;
      for (std::int32_t j = 0; j < width; ++j) {
        if (matrix.Value(i, j)) {
          values.push_back(j);
        }
        if (matrix.IsMissing(i, j)) {
          missing.push_back(j);
        }
      }
      SCOPED_TRACE(testing::Message() << "row " << i << ", width " << width);
      Vell::IndexVector room;
      ASSERT_EQ(Elements(Vell::SetColumns(matrix.Row(i), Room(room, width))), values);
      ASSERT_EQ(Elements(Vell::MissingColumns(matrix.Row(i), Room(room, width))), missing);
    }
  }
}

TEST(VisitColumnsTest, ColumnsAreVisitedInAscendingOrder) {
  BitMatrix matrix(1, 130);
  const Columns set = {0, 7, 8, 55, 56, 57, 63, 64, 111, 112, 129};
  for (const std::int32_t column : set) {
    matrix.Set(0, column, true);
  }
  Columns visited;
  Vell::VisitColumns<Vell::kOnlyPlane>(matrix.Row(0),
                                       [&](std::int32_t column) { visited.push_back(column); });
  EXPECT_EQ(visited, set);
}

}  // namespace
