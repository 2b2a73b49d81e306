#include "linalg/bit_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "support/matrices.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::ExpectRaises;
using Testing::SeededRandom;
using Vell::BitMatrix;
using Vell::BitVector;
using Vell::Exceptions::IntegerOverflowException;
using Vell::Exceptions::InvalidArgumentException;

constexpr std::int32_t kMinimum = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMaximum = std::numeric_limits<std::int32_t>::max();
constexpr std::array<std::uint8_t, 8> kMasks = {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01};

std::vector<std::uint8_t> BytesOf(const BitVector& vector) {
  return Testing::Elements(vector.Bytes());
}

TEST(BitVectorTest, OneSpareByteIsAllocated) {
  struct Case {
    std::int32_t size;
    std::int32_t bytes;
  };
  const std::vector<Case> cases = {{0, 1},  {1, 1},  {7, 1},  {8, 2},  {9, 2},
                                   {15, 2}, {16, 3}, {17, 3}, {64, 9}, {1000, 126}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.size);
    const BitVector vector(c.size);
    EXPECT_EQ(vector.Size(), c.size);
    EXPECT_EQ(vector.ByteCount(), c.bytes);
    EXPECT_EQ(BytesOf(vector), std::vector<std::uint8_t>(static_cast<std::size_t>(c.bytes)));
  }
}

TEST(BitVectorTest, TheFirstElementIsTheMostSignificantBit) {
  constexpr std::int32_t kSize = 27;
  for (std::int32_t k = 0; k < kSize; ++k) {
    SCOPED_TRACE(k);
    std::vector<std::uint8_t> expected(4);
    expected[static_cast<std::size_t>(k / 8)] = kMasks[static_cast<std::size_t>(k % 8)];

    BitVector vector(kSize);
    vector.Set(k, true);
    EXPECT_EQ(BytesOf(vector), expected);
    for (std::int32_t other = 0; other < kSize; ++other) {
      EXPECT_EQ(vector.Get(other), other == k) << other;
    }
    vector.Set(k, true);
    EXPECT_EQ(BytesOf(vector), expected);
    vector.Set(k, false);
    EXPECT_EQ(BytesOf(vector), std::vector<std::uint8_t>(4));
  }
}

TEST(BitVectorTest, ClearingABitKeepsTheOthers) {
  for (std::int32_t k = 0; k < 16; ++k) {
    SCOPED_TRACE(k);
    BitVector vector(16);
    for (std::int32_t other = 0; other < 16; ++other) {
      vector.Set(other, true);
    }
    vector.Set(k, false);
    for (std::int32_t other = 0; other < 16; ++other) {
      EXPECT_EQ(vector.Get(other), other != k) << other;
    }
    EXPECT_EQ(vector.Bytes()[2], 0) << "the spare byte";
  }
}

TEST(BitVectorTest, ResizingGivesZeros) {
  BitVector vector(8);
  vector.Set(3, true);
  vector.Resize(8);
  EXPECT_EQ(BytesOf(vector), (std::vector<std::uint8_t>{0, 0}));
  vector.Set(7, true);
  vector.Resize(20);
  EXPECT_EQ(vector.Size(), 20);
  EXPECT_EQ(BytesOf(vector), (std::vector<std::uint8_t>{0, 0, 0}));
}

TEST(BitVectorTest, ANegativeSizeIsInvalid) {
  for (const std::int32_t size : {-1, -8, kMinimum}) {
    SCOPED_TRACE(size);
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { BitVector{size}; });
    BitVector vector(3);
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { vector.Resize(size); });
  }
}

TEST(BitVectorTest, ACopyHasBitsOfItsOwn) {
  BitVector original(9);
  original.Set(8, true);
  const BitVector copy = original;
  original.Set(8, false);
  EXPECT_TRUE(copy.Get(8));
  EXPECT_EQ(copy.Size(), 9);
}

TEST(BitMatrixTest, CellsLieRowByRowWithoutGaps) {
  // Cell (i, j) of 3 x 5 cells is bit 5 * i + j.
  for (std::int32_t i = 0; i < 3; ++i) {
    for (std::int32_t j = 0; j < 5; ++j) {
      SCOPED_TRACE(testing::Message() << "cell " << i << ", " << j);
      BitMatrix matrix(3, 5);
      matrix.Set(i, j, true);
      const std::int32_t k = 5 * i + j;
      std::vector<std::uint8_t> expected(2);  // 15 cells
      expected[static_cast<std::size_t>(k / 8)] = kMasks[static_cast<std::size_t>(k % 8)];
      const Vell::BitRow row = matrix.Row(i);
      EXPECT_EQ(row.blockSize, 2U);
      EXPECT_EQ(std::vector<std::uint8_t>(row.block, row.block + row.blockSize), expected);
      EXPECT_EQ(row.firstBit, static_cast<std::size_t>(5 * i));
      EXPECT_EQ(row.columns, 5);
      EXPECT_TRUE(matrix.Get(i, j));
    }
  }
}

TEST(BitMatrixTest, AMatrixWithoutCellsHasOneByte) {
  EXPECT_EQ(BitMatrix(0, 0).Row(0).blockSize, 1U);
  EXPECT_EQ(BitMatrix(0, 7).Row(0).blockSize, 1U);
  EXPECT_EQ(BitMatrix(7, 0).Row(0).blockSize, 1U);
  EXPECT_EQ(BitMatrix(0, 7).Columns(), 7);
  EXPECT_EQ(BitMatrix(7, 0).Rows(), 7);
}

TEST(BitMatrixTest, ANegativeCountIsInvalid) {
  struct Shape {
    std::int32_t rows;
    std::int32_t columns;
  };
  const std::vector<Shape> shapes = {{-1, 1},       {1, -1},         {-1, -1},
                                     {0, -1},       {-1, 0},         {kMinimum, 2},
                                     {2, kMinimum}, {-65536, 65536}, {-1, kMaximum}};
  for (const Shape& shape : shapes) {
    SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns);
    ExpectRaises<InvalidArgumentException>("Invalid argument",
                                           [&] { BitMatrix(shape.rows, shape.columns); });
    ExpectRaises<InvalidArgumentException>(
        "Invalid argument", [&] { Vell::PackedCellCount(shape.rows, shape.columns); });
  }
}

TEST(BitMatrixTest, TwoToThe31CellsAndMoreOverflow) {
  struct Shape {
    std::int32_t rows;
    std::int32_t columns;
  };
  const std::vector<Shape> shapes = {
      {65536, 32768},        // 2^31
      {46341, 46341},        // 2147488281
      {65536, 65536},        // 2^32, which is 0 in 32 bits
      {65537, 65536},        // 65536 in 32 bits
      {kMaximum, 2},         // 2^32 - 2
      {kMaximum, kMaximum},  // 1 in 32 bits
  };
  for (const Shape& shape : shapes) {
    SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns);
    ExpectRaises<IntegerOverflowException>("Integer overflow",
                                           [&] { BitMatrix(shape.rows, shape.columns); });
    ExpectRaises<IntegerOverflowException>(
        "Integer overflow", [&] { Vell::PackedCellCount(shape.rows, shape.columns); });
  }
}

TEST(BitMatrixTest, FewerCellsAreCounted) {
  EXPECT_EQ(Vell::PackedCellCount(0, 0), 0);
  EXPECT_EQ(Vell::PackedCellCount(0, kMaximum), 0);
  EXPECT_EQ(Vell::PackedCellCount(kMaximum, 0), 0);
  EXPECT_EQ(Vell::PackedCellCount(3, 5), 15);
  EXPECT_EQ(Vell::PackedCellCount(kMaximum, 1), kMaximum);
  EXPECT_EQ(Vell::PackedCellCount(1, kMaximum), kMaximum);
  EXPECT_EQ(Vell::PackedCellCount(46340, 46341), 2147441940);
}

TEST(BitMatrixTest, CellsFarFromTheStartAreReached) {
  // 2^24 rows of 65 cells: cell numbers beyond 2^30.
  BitMatrix matrix(16777216, 65);
  matrix.Set(16777215, 64, true);
  EXPECT_TRUE(matrix.Get(16777215, 64));
  EXPECT_FALSE(matrix.Get(16777215, 63));
  std::array<std::int32_t, 65> scratch = {};
  EXPECT_EQ(Testing::Elements(Vell::SetColumns(matrix.Row(16777215), scratch)),
            std::vector<std::int32_t>{64});
}

TEST(BitMatrixTest, RemovingColumnsKeepsTheOrderOfTheRest) {
  // Row i has a set cell in column i only.
  BitMatrix matrix(5, 5);
  for (std::int32_t i = 0; i < 5; ++i) {
    matrix.Set(i, i, true);
  }
  matrix.RemoveColumns(Testing::MakeIndexVector({3, 1}));
  EXPECT_EQ(matrix.Rows(), 5);
  ASSERT_EQ(matrix.Columns(), 3);
  const std::vector<std::vector<bool>> expected = {{true, false, false},
                                                   {false, false, false},
                                                   {false, true, false},
                                                   {false, false, false},
                                                   {false, false, true}};
  for (std::int32_t i = 0; i < 5; ++i) {
    for (std::int32_t j = 0; j < 3; ++j) {
      EXPECT_EQ(matrix.Get(i, j),
                expected[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)])
          << i << ", " << j;
    }
  }
}

TEST(BitMatrixTest, RemovingRandomColumnsEqualsCopyingTheRestCellByCell) {
  SeededRandom random(31);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 300; ++repeat) {
    const std::int32_t rows = random.Integer(0, 12);
    const std::int32_t columns = random.Integer(0, 75);
    const auto removed = random.Choose(random.Integer(0, columns), columns);
    SCOPED_TRACE(testing::Message()
                 << rows << " x " << columns << " without " << testing::PrintToString(removed));
    BitMatrix matrix(rows, columns);
    for (std::int32_t i = 0; i < rows; ++i) {
      for (std::int32_t j = 0; j < columns; ++j) {
        matrix.Set(i, j, random.Bit());
      }
    }
    std::vector<std::int32_t> kept;
    for (std::int32_t j = 0; j < columns; ++j) {
      if (std::ranges::find(removed, j) == removed.end()) {
        kept.push_back(j);
      }
    }
    const BitMatrix original = matrix;
    const Vell::BitRow before = matrix.Row(0);

    matrix.RemoveColumns(Testing::MakeIndexVector(removed));

    ASSERT_EQ(matrix.Rows(), rows);
    ASSERT_EQ(matrix.Columns(), static_cast<std::int32_t>(kept.size()));
    for (std::int32_t i = 0; i < rows; ++i) {
      for (std::int32_t j = 0; j < matrix.Columns(); ++j) {
        ASSERT_EQ(matrix.Get(i, j), original.Get(i, kept[static_cast<std::size_t>(j)]))
            << i << ", " << j;
      }
    }
    const Vell::BitRow after = matrix.Row(0);
    EXPECT_EQ(after.block, before.block) << "no reallocation";
    EXPECT_EQ(after.blockSize, before.blockSize);
    BitVector expected(rows * columns);  // the cells that are left, then zeros
    for (std::int32_t k = 0; k < rows * matrix.Columns(); ++k) {
      expected.Set(k, matrix.Get(k / matrix.Columns(), k % matrix.Columns()));
    }
    EXPECT_EQ(std::vector<std::uint8_t>(after.block, after.block + after.blockSize),
              BytesOf(expected));
  }
}

TEST(BitMatrixTest, RemovingNoColumnChangesNothing) {
  BitMatrix matrix(2, 3);
  matrix.Set(1, 2, true);
  matrix.RemoveColumns(Vell::IndexVector());
  EXPECT_EQ(matrix.Columns(), 3);
  EXPECT_TRUE(matrix.Get(1, 2));
}

TEST(BitMatrixTest, AllColumnsCanBeRemoved) {
  BitMatrix matrix(2, 3);
  matrix.Set(1, 2, true);
  matrix.RemoveColumns(Testing::MakeIndexVector({1, 2, 0}));
  EXPECT_EQ(matrix.Rows(), 2);
  EXPECT_EQ(matrix.Columns(), 0);
}

TEST(BitMatrixTest, RemovingAColumnThatIsNotThereIsOutOfRange) {
  const std::vector<std::vector<std::int32_t>> lists = {
      {-1}, {5}, {6}, {0, 5}, {5, 0}, {-1, 4}, {4, -1}, {1, 7, 2}, {kMinimum}, {kMaximum}};
  for (const auto& list : lists) {
    SCOPED_TRACE(testing::PrintToString(list));
    BitMatrix matrix(3, 5);
    ExpectRaises<InvalidArgumentException>(
        "Index out of range", [&] { matrix.RemoveColumns(Testing::MakeIndexVector(list)); });
    BitMatrix noRows(0, 5);
    ExpectRaises<InvalidArgumentException>(
        "Index out of range", [&] { noRows.RemoveColumns(Testing::MakeIndexVector(list)); });
  }
  BitMatrix noColumns(3, 0);
  ExpectRaises<InvalidArgumentException>(
      "Index out of range", [&] { noColumns.RemoveColumns(Testing::MakeIndexVector({0})); });
}

}  // namespace
