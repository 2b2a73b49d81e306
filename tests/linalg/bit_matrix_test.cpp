#include "linalg/bit_matrix.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "support/matrices.h"

namespace {

using Vell::BitMatrix;
using Vell::BitVector;

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

}  // namespace
