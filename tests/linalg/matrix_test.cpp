#include "linalg/matrix.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/matrices.h"
#include "support/raised.h"

namespace {

using Testing::Cells;
using Testing::Elements;
using Testing::ExpectRaises;
using Testing::MakeMatrix;
using Vell::Matrix;
using Vell::Exceptions::InvalidArgumentException;

TEST(MatrixTest, ANewMatrixHoldsZeros) {
  const Matrix matrix(2, 3);
  EXPECT_EQ(matrix.Rows(), 2);
  EXPECT_EQ(matrix.Columns(), 3);
  EXPECT_EQ(matrix.CellCount(), 6);
  EXPECT_EQ(Cells(matrix), std::vector<double>(6));
}

TEST(MatrixTest, CellsLieRowByRow) {
  Matrix matrix(2, 3);
  for (std::int32_t i = 0; i < 2; ++i) {
    for (std::int32_t j = 0; j < 3; ++j) {
      matrix(i, j) = 10 * i + j;
    }
  }
  const double* const first = matrix.Row(0).data();
  EXPECT_EQ(std::vector<double>(first, first + 6), (std::vector<double>{0, 1, 2, 10, 11, 12}));
  EXPECT_EQ(matrix.Row(1).data(), first + 3);
  EXPECT_EQ(matrix.Row(1).size(), 3U);
}

TEST(MatrixTest, AMatrixWithoutRowsOrColumnsHasNoCells) {
  EXPECT_EQ(Matrix().CellCount(), 0);
  EXPECT_EQ(Matrix(0, 0).CellCount(), 0);
  const Matrix noRows(0, 4);
  EXPECT_EQ(noRows.CellCount(), 0);
  EXPECT_EQ(noRows.Columns(), 4);
  const Matrix noColumns(4, 0);
  EXPECT_EQ(noColumns.CellCount(), 0);
  EXPECT_EQ(noColumns.Rows(), 4);
  EXPECT_TRUE(noColumns.Row(3).empty());
}

// The product of the counts modulo 2^32, read as a signed number.
TEST(MatrixTest, TheNumberOfCellsWrapsAround) {
  EXPECT_EQ(Matrix(65536, 65536).CellCount(), 0);       // 2^32
  EXPECT_EQ(Matrix(131072, 65536).CellCount(), 0);      // 2^33
  EXPECT_EQ(Matrix(65537, 65536).CellCount(), 65536);   // 2^32 + 65536
  EXPECT_EQ(Matrix(65537, 65537).CellCount(), 131073);  // 2^32 + 2 * 65536 + 1
}

TEST(MatrixTest, ANegativeWrappedNumberOfCellsIsInvalid) {
  struct Shape {
    std::int32_t rows;
    std::int32_t columns;
  };
  const std::vector<Shape> shapes = {
      {-1, 3},        {3, -1},        {46341, 46341},  // 2147488281 - 2^32 = -2147479015
      {32768, 65536},                                  // 2^31
      {65536, 32768}, {65535, 65537},                  // 2^32 - 1
  };
  for (const Shape& shape : shapes) {
    SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns);
    ExpectRaises<InvalidArgumentException>("Invalid argument",
                                           [&] { Matrix(shape.rows, shape.columns); });
  }
}

TEST(MatrixTest, AColumnIsCopied) {
  Matrix matrix = MakeMatrix(3, 2, {1, 2, 3, 4, 5, 6});
  const Vell::Vector column = matrix.Column(1);
  matrix(0, 1) = 99;
  EXPECT_EQ(Elements(column), (std::vector<double>{2, 4, 6}));
  EXPECT_EQ(Elements(matrix.Column(0)), (std::vector<double>{1, 3, 5}));
  EXPECT_EQ(Matrix(0, 2).Column(1).Size(), 0);
}

TEST(MatrixTest, FillSetsEveryCell) {
  Matrix matrix(2, 2);
  matrix.Fill(-1.5);
  EXPECT_EQ(Cells(matrix), std::vector<double>(4, -1.5));
}

TEST(MatrixTest, WholeRowsAreSwapped) {
  Matrix matrix = MakeMatrix(3, 2, {1, 2, 3, 4, 5, 6});
  matrix.SwapRows(0, 2);
  EXPECT_EQ(Cells(matrix), (std::vector<double>{5, 6, 3, 4, 1, 2}));
  matrix.SwapRows(1, 1);
  EXPECT_EQ(Cells(matrix), (std::vector<double>{5, 6, 3, 4, 1, 2}));
}

TEST(MatrixTest, WholeColumnsAreSwapped) {
  Matrix matrix = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
  matrix.SwapColumns(2, 0);
  EXPECT_EQ(Cells(matrix), (std::vector<double>{3, 2, 1, 6, 5, 4}));
  matrix.SwapColumns(1, 1);
  EXPECT_EQ(Cells(matrix), (std::vector<double>{3, 2, 1, 6, 5, 4}));
}

TEST(MatrixTest, ACopyHasCellsOfItsOwn) {
  Matrix original = MakeMatrix(1, 2, {1, 2});
  const Matrix copy = original;
  Matrix assigned(5, 5);
  assigned = original;
  original(0, 0) = 9;
  EXPECT_EQ(Cells(copy), (std::vector<double>{1, 2}));
  EXPECT_EQ(Cells(assigned), (std::vector<double>{1, 2}));
  EXPECT_EQ(assigned.Rows(), 1);
  EXPECT_EQ(assigned.Columns(), 2);
}

TEST(MatrixTest, AssigningToItselfChangesNothing) {
  Matrix matrix = MakeMatrix(1, 2, {1, 2});
  const double* const block = matrix.Row(0).data();
  const Matrix& same = matrix;
  matrix = same;
  EXPECT_EQ(matrix.Row(0).data(), block);
  EXPECT_EQ(Cells(matrix), (std::vector<double>{1, 2}));
}

}  // namespace
