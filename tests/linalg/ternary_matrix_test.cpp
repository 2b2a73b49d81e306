#include "linalg/ternary_matrix.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "support/matrices.h"

namespace {

using Vell::TernaryMatrix;
using Vell::TernaryVector;

constexpr std::array<std::uint8_t, 4> kMissingMasks = {0x80, 0x20, 0x08, 0x02};
constexpr std::array<std::uint8_t, 4> kValueMasks = {0x40, 0x10, 0x04, 0x01};

std::vector<std::uint8_t> BytesOf(const TernaryVector& vector) {
  return Testing::Elements(vector.Bytes());
}

TEST(TernaryVectorTest, OneSpareByteIsAllocated) {
  struct Case {
    std::int32_t size;
    std::int32_t bytes;
  };
  const std::vector<Case> cases = {{0, 1}, {1, 1}, {3, 1}, {4, 2},  {5, 2},
                                   {7, 2}, {8, 3}, {9, 3}, {32, 9}, {1000, 251}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.size);
    const TernaryVector vector(c.size);
    EXPECT_EQ(vector.Size(), c.size);
    EXPECT_EQ(vector.ByteCount(), c.bytes);
    EXPECT_EQ(BytesOf(vector), std::vector<std::uint8_t>(static_cast<std::size_t>(c.bytes)));
  }
}

TEST(TernaryVectorTest, ElementZeroUsesTheTopTwoBits) {
  TernaryVector vector(1);
  vector.SetMissing(0, true);
  EXPECT_EQ(vector.Bytes()[0], 0x80);
  vector.SetValue(0, true);
  EXPECT_EQ(vector.Bytes()[0], 0xC0);
  vector.SetMissing(0, false);
  EXPECT_EQ(vector.Bytes()[0], 0x40);
}

TEST(TernaryVectorTest, EveryElementHasItsOwnPairOfBits) {
  constexpr std::int32_t kSize = 14;
  for (std::int32_t k = 0; k < kSize; ++k) {
    SCOPED_TRACE(k);
    const auto byte = static_cast<std::size_t>(k / 4);
    const auto pair = static_cast<std::size_t>(k % 4);
    std::vector<std::uint8_t> value(4);
    value[byte] = kValueMasks[pair];
    std::vector<std::uint8_t> missing(4);
    missing[byte] = kMissingMasks[pair];
    std::vector<std::uint8_t> both(4);
    both[byte] = static_cast<std::uint8_t>(kValueMasks[pair] | kMissingMasks[pair]);

    TernaryVector vector(kSize);
    vector.SetValue(k, true);
    EXPECT_EQ(BytesOf(vector), value);
    for (std::int32_t other = 0; other < kSize; ++other) {
      EXPECT_EQ(vector.Value(other), other == k) << other;
      EXPECT_FALSE(vector.IsMissing(other)) << other;
    }
    vector.SetMissing(k, true);
    EXPECT_EQ(BytesOf(vector), both);
    vector.SetValue(k, false);
    EXPECT_EQ(BytesOf(vector), missing);
    for (std::int32_t other = 0; other < kSize; ++other) {
      EXPECT_FALSE(vector.Value(other)) << other;
      EXPECT_EQ(vector.IsMissing(other), other == k) << other;
    }
    vector.SetMissing(k, false);
    EXPECT_EQ(BytesOf(vector), std::vector<std::uint8_t>(4));
  }
}

TEST(TernaryVectorTest, ClearingABitKeepsTheOthers) {
  for (std::int32_t k = 0; k < 8; ++k) {
    SCOPED_TRACE(k);
    TernaryVector vector(8);
    for (std::int32_t other = 0; other < 8; ++other) {
      vector.SetValue(other, true);
      vector.SetMissing(other, true);
    }
    EXPECT_EQ(BytesOf(vector), (std::vector<std::uint8_t>{0xFF, 0xFF, 0}));
    vector.SetValue(k, false);
    vector.SetMissing(7 - k, false);
    for (std::int32_t other = 0; other < 8; ++other) {
      EXPECT_EQ(vector.Value(other), other != k) << other;
      EXPECT_EQ(vector.IsMissing(other), other != 7 - k) << other;
    }
  }
}

TEST(TernaryVectorTest, ResizingGivesZeros) {
  TernaryVector vector(4);
  vector.SetValue(3, true);
  vector.SetMissing(2, true);
  vector.Resize(4);
  EXPECT_EQ(BytesOf(vector), (std::vector<std::uint8_t>{0, 0}));
  vector.SetMissing(0, true);
  vector.Resize(9);
  EXPECT_EQ(vector.Size(), 9);
  EXPECT_EQ(BytesOf(vector), (std::vector<std::uint8_t>{0, 0, 0}));
}

TEST(TernaryVectorTest, ACopyHasBitsOfItsOwn) {
  TernaryVector original(5);
  original.SetMissing(4, true);
  const TernaryVector copy = original;
  original.SetMissing(4, false);
  EXPECT_TRUE(copy.IsMissing(4));
  EXPECT_EQ(copy.Size(), 5);
}

TEST(TernaryMatrixTest, CellsLieRowByRowWithoutGaps) {
  // Cell (i, j) of 3 x 3 cells is element 3 * i + j; its row begins at bit 6 * i.
  for (std::int32_t i = 0; i < 3; ++i) {
    for (std::int32_t j = 0; j < 3; ++j) {
      SCOPED_TRACE(testing::Message() << "cell " << i << ", " << j);
      const auto k = static_cast<std::size_t>(3 * i + j);
      TernaryMatrix matrix(3, 3);
      matrix.SetValue(i, j, true);
      const Vell::TernaryRow row = matrix.Row(i);
      ASSERT_EQ(row.blockSize, 3U);  // 9 cells
      EXPECT_EQ(row.firstBit, static_cast<std::size_t>(6 * i));
      EXPECT_EQ(row.columns, 3);
      std::vector<std::uint8_t> expected(3);
      expected[k / 4] = kValueMasks[k % 4];
      EXPECT_EQ(std::vector<std::uint8_t>(row.block, row.block + 3), expected);
      EXPECT_TRUE(matrix.Value(i, j));
      EXPECT_FALSE(matrix.IsMissing(i, j));

      matrix.SetValue(i, j, false);
      matrix.SetMissing(i, j, true);
      expected[k / 4] = kMissingMasks[k % 4];
      EXPECT_EQ(std::vector<std::uint8_t>(row.block, row.block + 3), expected);
      EXPECT_FALSE(matrix.Value(i, j));
      EXPECT_TRUE(matrix.IsMissing(i, j));
    }
  }
}

TEST(TernaryMatrixTest, CellsWhoseBitNumberNeeds32BitsAreReached) {
  // 2^24 rows of 65 cells: bit numbers beyond 2^31.
  TernaryMatrix matrix(16777216, 65);
  matrix.SetValue(16777215, 64, true);
  matrix.SetMissing(16777215, 63, true);
  EXPECT_TRUE(matrix.Value(16777215, 64));
  EXPECT_FALSE(matrix.IsMissing(16777215, 64));
  std::array<std::int32_t, 65> scratch = {};
  EXPECT_EQ(Testing::Elements(Vell::SetColumns(matrix.Row(16777215), scratch)),
            std::vector<std::int32_t>{64});
  EXPECT_EQ(Testing::Elements(Vell::MissingColumns(matrix.Row(16777215), scratch)),
            std::vector<std::int32_t>{63});
}

TEST(TernaryMatrixTest, RemovingColumnsKeepsTheOrderOfTheRest) {
  // Row i has a value in column i and a missing mark in column 4 - i.
  TernaryMatrix matrix(5, 5);
  for (std::int32_t i = 0; i < 5; ++i) {
    matrix.SetValue(i, i, true);
    matrix.SetMissing(i, 4 - i, true);
  }
  matrix.RemoveColumns(Testing::MakeIndexVector({3, 1}));
  EXPECT_EQ(matrix.Rows(), 5);
  ASSERT_EQ(matrix.Columns(), 3);
  for (std::int32_t i = 0; i < 5; ++i) {
    for (std::int32_t j = 0; j < 3; ++j) {
      EXPECT_EQ(matrix.Value(i, j), 2 * j == i) << i << ", " << j;
      EXPECT_EQ(matrix.IsMissing(i, j), 2 * j == 4 - i) << i << ", " << j;
    }
  }
}

}  // namespace
