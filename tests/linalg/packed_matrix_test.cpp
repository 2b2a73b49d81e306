// What matrices and vectors of packed cells have in common, whatever a cell holds.

#include "linalg/packed_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "linalg/bit_matrix.h"
#include "linalg/ternary_matrix.h"
#include "support/matrices.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::ExpectRaises;
using Testing::MakeIndexVector;
using Testing::SeededRandom;
using Vell::BitMatrix;
using Vell::BitVector;
using Vell::TernaryMatrix;
using Vell::TernaryVector;
using Vell::Exceptions::IntegerOverflowException;
using Vell::Exceptions::InvalidArgumentException;

constexpr std::int32_t kMinimum = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMaximum = std::numeric_limits<std::int32_t>::max();

struct Bits {
  using Vector = BitVector;
  using Matrix = BitMatrix;
  /// The cell at a place, one index or two, as a number whose bits are those of the cell.
  static int Cell(const auto& cells, auto... at) { return cells.Get(at...) ? 1 : 0; }
  static void SetCell(auto& cells, int cell, auto... at) { cells.Set(at..., cell != 0); }
};

struct Ternaries {
  using Vector = TernaryVector;
  using Matrix = TernaryMatrix;
  static int Cell(const auto& cells, auto... at) {
    return (cells.Value(at...) ? 1 : 0) + (cells.IsMissing(at...) ? 2 : 0);
  }
  static void SetCell(auto& cells, int cell, auto... at) {
    cells.SetValue(at..., (cell & 1) != 0);
    cells.SetMissing(at..., (cell & 2) != 0);
  }
};

template <typename Kind>
class PackedCellsTest : public testing::Test {};

using Kinds = testing::Types<Bits, Ternaries>;
TYPED_TEST_SUITE(PackedCellsTest, Kinds);

TYPED_TEST(PackedCellsTest, ANegativeSizeIsInvalid) {
  for (const std::int32_t size : {-1, -4, -8, kMinimum}) {
    SCOPED_TRACE(size);
    using Vector = typename TypeParam::Vector;
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { Vector{size}; });
    Vector vector(3);
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { vector.Resize(size); });
  }
}

TYPED_TEST(PackedCellsTest, AMatrixWithoutCellsHasOneByte) {
  using Matrix = typename TypeParam::Matrix;
  EXPECT_EQ(Matrix(0, 0).Row(0).blockSize, 1U);
  EXPECT_EQ(Matrix(0, 7).Row(0).blockSize, 1U);
  EXPECT_EQ(Matrix(7, 0).Row(0).blockSize, 1U);
  EXPECT_EQ(Matrix(0, 7).Columns(), 7);
  EXPECT_EQ(Matrix(7, 0).Rows(), 7);
}

struct Shape {
  std::int32_t rows;
  std::int32_t columns;
};

TYPED_TEST(PackedCellsTest, ANegativeCountIsInvalid) {
  const std::vector<Shape> shapes = {{-1, 1},       {1, -1},         {-1, -1},
                                     {0, -1},       {-1, 0},         {kMinimum, 2},
                                     {2, kMinimum}, {-65536, 65536}, {-1, kMaximum}};
  for (const Shape& shape : shapes) {
    SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns);
    using Matrix = typename TypeParam::Matrix;
    ExpectRaises<InvalidArgumentException>("Invalid argument",
                                           [&] { Matrix(shape.rows, shape.columns); });
    ExpectRaises<InvalidArgumentException>(
        "Invalid argument", [&] { Vell::PackedCellCount(shape.rows, shape.columns); });
  }
}

TYPED_TEST(PackedCellsTest, TwoToThe31CellsAndMoreOverflow) {
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
    using Matrix = typename TypeParam::Matrix;
    ExpectRaises<IntegerOverflowException>("Integer overflow",
                                           [&] { Matrix(shape.rows, shape.columns); });
    ExpectRaises<IntegerOverflowException>(
        "Integer overflow", [&] { Vell::PackedCellCount(shape.rows, shape.columns); });
  }
}

TEST(PackedCellCountTest, FewerCellsAreCounted) {
  EXPECT_EQ(Vell::PackedCellCount(0, 0), 0);
  EXPECT_EQ(Vell::PackedCellCount(0, kMaximum), 0);
  EXPECT_EQ(Vell::PackedCellCount(kMaximum, 0), 0);
  EXPECT_EQ(Vell::PackedCellCount(3, 5), 15);
  EXPECT_EQ(Vell::PackedCellCount(kMaximum, 1), kMaximum);
  EXPECT_EQ(Vell::PackedCellCount(1, kMaximum), kMaximum);
  EXPECT_EQ(Vell::PackedCellCount(46340, 46341), 2147441940);
}

std::vector<std::int32_t> Without(const std::vector<std::int32_t>& removed, std::int32_t columns) {
  std::vector<std::int32_t> kept;
  for (std::int32_t j = 0; j < columns; ++j) {
    if (std::ranges::find(removed, j) == removed.end()) {
      kept.push_back(j);
    }
  }
  return kept;
}

/// The cells of these columns, row by row, in a block that holds zeros after them up to `cells`.
template <typename Kind>
std::vector<std::uint8_t> BytesOfColumns(const typename Kind::Matrix& matrix,
                                         const std::vector<std::int32_t>& columns,
                                         std::int32_t cells) {
  typename Kind::Vector copy(cells);
  std::int32_t next = 0;
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    for (const std::int32_t j : columns) {
      Kind::SetCell(copy, Kind::Cell(matrix, i, j), next++);
    }
  }
  return Testing::Elements(std::as_const(copy).Bytes());
}

TYPED_TEST(PackedCellsTest, RemovingRandomColumnsEqualsCopyingTheRestCellByCell) {
  SeededRandom random(31);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 300; ++repeat) {
    const std::int32_t rows = random.Integer(0, 12);
    const std::int32_t columns = random.Integer(0, 75);
    const auto removed = random.Choose(random.Integer(0, columns), columns);
    SCOPED_TRACE(testing::Message()
                 << rows << " x " << columns << " without " << testing::PrintToString(removed));
    typename TypeParam::Matrix matrix(rows, columns);
    for (std::int32_t i = 0; i < rows; ++i) {
      for (std::int32_t j = 0; j < columns; ++j) {
        TypeParam::SetCell(matrix, random.Integer(0, 3), i, j);
      }
    }
    const std::vector<std::int32_t> kept = Without(removed, columns);
    const auto expected = BytesOfColumns<TypeParam>(matrix, kept, rows * columns);
    const auto before = matrix.Row(0);

    matrix.RemoveColumns(MakeIndexVector(removed));

    ASSERT_EQ(matrix.Rows(), rows);
    ASSERT_EQ(matrix.Columns(), static_cast<std::int32_t>(kept.size()));
    const auto after = matrix.Row(0);
    EXPECT_EQ(after.block, before.block) << "no reallocation";
    EXPECT_EQ(after.blockSize, before.blockSize);
    EXPECT_EQ(std::vector<std::uint8_t>(after.block, after.block + after.blockSize), expected);
  }
}

TYPED_TEST(PackedCellsTest, RemovingNoColumnChangesNothing) {
  typename TypeParam::Matrix matrix(2, 3);
  TypeParam::SetCell(matrix, 1, 1, 2);
  matrix.RemoveColumns(Vell::IndexVector());
  EXPECT_EQ(matrix.Columns(), 3);
  EXPECT_EQ(TypeParam::Cell(matrix, 1, 2), 1);
}

TYPED_TEST(PackedCellsTest, AllColumnsCanBeRemoved) {
  typename TypeParam::Matrix matrix(2, 3);
  TypeParam::SetCell(matrix, 1, 1, 2);
  matrix.RemoveColumns(MakeIndexVector({1, 2, 0}));
  EXPECT_EQ(matrix.Rows(), 2);
  EXPECT_EQ(matrix.Columns(), 0);
}

TYPED_TEST(PackedCellsTest, RemovingAColumnThatIsNotThereIsOutOfRange) {
  using Matrix = typename TypeParam::Matrix;
  const std::vector<std::vector<std::int32_t>> lists = {
      {-1}, {5}, {6}, {0, 5}, {5, 0}, {-1, 4}, {4, -1}, {1, 7, 2}, {kMinimum}, {kMaximum}};
  for (const auto& list : lists) {
    SCOPED_TRACE(testing::PrintToString(list));
    for (const std::int32_t rows : {3, 0}) {
      Matrix matrix(rows, 5);
      ExpectRaises<InvalidArgumentException>("Index out of range",
                                             [&] { matrix.RemoveColumns(MakeIndexVector(list)); });
    }
  }
  Matrix noColumns(3, 0);
  ExpectRaises<InvalidArgumentException>("Index out of range",
                                         [&] { noColumns.RemoveColumns(MakeIndexVector({0})); });
}

}  // namespace
