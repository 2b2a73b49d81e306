#include "linalg/row_echelon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "support/dense_algebra.h"
#include "support/matrices.h"
#include "support/seeded_random.h"

namespace {

using Testing::Cells;
using Testing::DenseMatrix;
using Testing::Elements;
using Testing::MakeMatrix;
using Testing::SeededRandom;
using Vell::Matrix;
using Vell::ReduceToRowEchelon;
using Vell::RowEchelon;

struct Reduction {
  std::int32_t rows;
  std::int32_t columns;
  std::vector<double> before;
  std::vector<double> after;
  std::vector<std::int32_t> permutation;
};

TEST(RowEchelonTest, ReductionsByHandAreMet) {
  const std::vector<Reduction> cases = {
      // 4 is the pivot: rows and columns change places to 4 3 / 2 1, then 1 0.75 / 2 1,
      // 1 - 2 * 0.75 = -0.5, which becomes 1
      {2, 2, {1, 2, 3, 4}, {1, 0.75, 0, 1}, {1, 0}},
      // a negative pivot: -8 4 / 2 1 -> 1 -0.5 / 2 1 -> 1 + 1 = 2 -> 1
      {2, 2, {-8, 4, 2, 1}, {1, -0.5, 0, 1}, {0, 1}},
      // one row: divided by its largest entry, which changes places with the first
      {1, 3, {1, -4, 2}, {1, -0.25, -0.5}, {1, 0, 2}},
      // one column
      {3, 1, {1, 4, -2}, {1, 0, 0}, {0}},
      {1, 1, {-3}, {1}, {0}},
      // fewer rows than columns: 8 -> (8 0 4) / (0 2 2), 1 0 0.5; then 2 2 -> 1 1
      {2, 3, {0, 2, 2, 8, 0, 4}, {1, 0, 0.5, 0, 1, 1}, {0, 1, 2}},
      // more rows than columns: 4 2 comes first, 1 0.5; of 2 0 is left 0 - 2 * 0.5 = -1, of 0 2
      // the larger 2, which is the next pivot
      {3, 2, {2, 0, 4, 2, 0, 2}, {1, 0.5, 0, 1, 0, 0}, {0, 1}},
  };
  for (const Reduction& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.before));
    const RowEchelon result = ReduceToRowEchelon(MakeMatrix(c.rows, c.columns, c.before));
    EXPECT_EQ(result.matrix.Rows(), c.rows);
    EXPECT_EQ(result.matrix.Columns(), c.columns);
    EXPECT_EQ(Cells(result.matrix), c.after);
    EXPECT_EQ(Elements(result.permutation), c.permutation);
  }
}

// The entries of largest absolute value are all in play; the pivot's column shows in the
// permutation and its row in what is left of it.
TEST(RowEchelonTest, TheFirstOfEqualPivotsInRowMajorOrderWins) {
  const std::vector<Reduction> cases = {
      // (0, 1) comes before (1, 0): -2 1 / 2 2 -> 1 -0.5 / 2 2 -> 2 + 1 = 3 -> 1
      {2, 2, {1, -2, 2, 2}, {1, -0.5, 0, 1}, {1, 0}},
      // in one row the lower column: 2 -2 stays, not -2 2
      {1, 2, {2, -2}, {1, -1}, {0, 1}},
      {1, 3, {1, 3, -3}, {1, 1.0 / 3, -1}, {1, 0, 2}},
      // in one column the lower row: row (2 1) is the pivot's, not row (2 0)
      {2, 2, {2, 1, 2, 0}, {1, 0.5, 0, 1}, {0, 1}},
      {2, 2, {2, 0, 2, 1}, {1, 0, 0, 1}, {0, 1}},
      // the same again in the second step: the rest is 0 1 1 / 0 1 -1 in columns 1 and 2
      {3, 3, {4, 0, 0, 0, 1, 1, 0, 1, -1}, {1, 0, 0, 0, 1, 1, 0, 0, 1}, {0, 1, 2}},
      {3, 3, {4, 0, 0, 0, 0, 1, 0, 1, 1}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 2, 1}},
  };
  for (const Reduction& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.before));
    const RowEchelon result = ReduceToRowEchelon(MakeMatrix(c.rows, c.columns, c.before));
    EXPECT_EQ(Cells(result.matrix), c.after);
    EXPECT_EQ(Elements(result.permutation), c.permutation);
  }
}

TEST(RowEchelonTest, TheReductionEndsWhenNothingAboveZeroIsLeft) {
  const std::vector<Reduction> cases = {
      // zero from the start
      {2, 3, {0, 0, 0, 0, -0.0, 0}, {0, 0, 0, 0, 0, 0}, {0, 1, 2}},
      // rank 1: after the pivot 4 the rest is 0
      {2, 2, {1, 2, 2, 4}, {1, 0.5, 0, 0}, {1, 0}},
      // rank 2 of 3: 0 0 4 first, then 2 at (2, 0), then nothing
      {3, 3, {0, 0, 4, 0, 0, 2, 2, 0, 0}, {1, 0, 0, 0, 1, 0, 0, 0, 0}, {2, 0, 1}},
  };
  for (const Reduction& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.before));
    const RowEchelon result = ReduceToRowEchelon(MakeMatrix(c.rows, c.columns, c.before));
    EXPECT_EQ(Cells(result.matrix), c.after);
    EXPECT_EQ(Elements(result.permutation), c.permutation);
  }
}

TEST(RowEchelonTest, WithoutRowsThePermutationIsTheIdentity) {
  EXPECT_EQ(Elements(ReduceToRowEchelon(Matrix(0, 3)).permutation),
            (std::vector<std::int32_t>{0, 1, 2}));
  EXPECT_EQ(ReduceToRowEchelon(Matrix(3, 0)).permutation.Size(), 0);
  EXPECT_EQ(ReduceToRowEchelon(Matrix(0, 0)).permutation.Size(), 0);
}

// Checks what makes a row echelon form: unit pivots, zeros below, nothing after the last pivot.
// Returns the number of pivots.
std::int32_t CheckForm(const RowEchelon& result) {
  const Matrix& matrix = result.matrix;
  const std::int32_t steps = std::min(matrix.Rows(), matrix.Columns());
  std::int32_t pivots = 0;
  while (pivots < steps && matrix(pivots, pivots) == 1) {
    ++pivots;
  }
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    for (std::int32_t j = 0; j < (i < pivots ? i : matrix.Columns()); ++j) {
      EXPECT_EQ(matrix(i, j), 0) << i << ", " << j;
    }
    // The pivot was the largest of its row.
    for (std::int32_t j = i + 1; i < pivots && j < matrix.Columns(); ++j) {
      EXPECT_LE(std::fabs(matrix(i, j)), 1) << i << ", " << j;
    }
  }
  std::vector<std::int32_t> sorted = Elements(result.permutation);
  std::ranges::sort(sorted);
  std::vector<std::int32_t> all(static_cast<std::size_t>(matrix.Columns()));
  std::iota(all.begin(), all.end(), 0);
  EXPECT_EQ(sorted, all);
  return pivots;
}

// The largest entry that is left of a row of the original matrix when the rows of the reduced one
// are taken off it pivot by pivot: 0 if it is a combination of them.
long double Remainder(const RowEchelon& result, const Matrix& original, std::int32_t row,
                      std::int32_t pivots) {
  std::vector<long double> rest;
  for (const std::int32_t column : result.permutation) {
    rest.push_back(original(row, column));
  }
  for (std::int32_t s = 0; s < pivots; ++s) {
    const long double factor = rest[static_cast<std::size_t>(s)];
    for (std::int32_t j = s; j < original.Columns(); ++j) {
      rest[static_cast<std::size_t>(j)] -= factor * result.matrix(s, j);
    }
  }
  long double largest = 0;
  for (const long double cell : rest) {
    largest = std::max(largest, std::fabs(cell));
  }
  return largest;
}

TEST(RowEchelonTest, RandomMatricesKeepTheSpanOfTheirRows) {
  SeededRandom random(71);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 200; ++repeat) {
    const std::int32_t rows = random.Integer(1, 12);
    const std::int32_t columns = random.Integer(1, 12);
    const Matrix original = Testing::RandomMatrix(random, rows, columns);
    SCOPED_TRACE(testing::Message() << "matrix " << repeat << ": " << rows << " x " << columns);
    const RowEchelon result = ReduceToRowEchelon(original);
    const std::int32_t pivots = CheckForm(result);
    ASSERT_EQ(pivots, std::min(rows, columns));  // random reals are of full rank
    for (std::int32_t i = 0; i < rows; ++i) {
      ASSERT_LE(Remainder(result, original, i, pivots), 1e-12) << "row " << i;
    }
  }
}

// The steps as they are defined, on a copy in nested vectors: all candidates are listed first, then
// the first of the largest ones is taken.
std::vector<std::int32_t> PivotColumnsByDefinition(const Matrix& original) {
  DenseMatrix a = Testing::ToDense(original);
  const auto columns = static_cast<std::size_t>(original.Columns());
  std::vector<std::int32_t> permutation(columns);
  std::iota(permutation.begin(), permutation.end(), 0);
  for (std::size_t s = 0; s < std::min(a.size(), columns); ++s) {
    std::vector<std::pair<std::size_t, std::size_t>> places;
    for (std::size_t i = s; i < a.size(); ++i) {
      for (std::size_t j = s; j < columns; ++j) {
        places.emplace_back(i, j);
      }
    }
    const auto pivot = std::ranges::max_element(
        places, {}, [&](const auto& place) { return std::fabs(a[place.first][place.second]); });
    if (a[pivot->first][pivot->second] == 0) {
      break;
    }
    std::swap(a[s], a[pivot->first]);
    for (auto& row : a) {
      std::swap(row[s], row[pivot->second]);
    }
    std::swap(permutation[s], permutation[pivot->second]);
    for (std::size_t i = s + 1; i < a.size(); ++i) {
      const long double factor = a[i][s] / a[s][s];
      for (std::size_t j = s; j < columns; ++j) {
        a[i][j] -= factor * a[s][j];
      }
    }
  }
  return permutation;
}

// With entries -1, 0 and 1 the first pivot is 1 or -1 and the second one 1 or 2 in size, so that
// every quotient is exact; only the last division may round, when nothing is left to be chosen.
TEST(RowEchelonTest, EveryThreeByThreeMatrixOfSignsIsReducedByTheRules) {
  constexpr std::int32_t kCells = 9;
  constexpr std::int32_t kMatrices = 19683;  // 3^9
  for (std::int32_t number = 0; number < kMatrices; ++number) {
    Matrix original(3, 3);
    std::int32_t digits = number;
    for (std::int32_t k = 0; k < kCells; ++k, digits /= 3) {
      original(k / 3, k % 3) = digits % 3 - 1;
    }
    const RowEchelon result = ReduceToRowEchelon(original);
    const std::int32_t pivots = CheckForm(result);
    ASSERT_EQ(pivots, Testing::IntegerRank(original)) << testing::PrintToString(Cells(original));
    ASSERT_EQ(Elements(result.permutation), PivotColumnsByDefinition(original))
        << testing::PrintToString(Cells(original));
    for (std::int32_t i = 0; i < 3; ++i) {
      ASSERT_EQ(Remainder(result, original, i, pivots), 0)
          << testing::PrintToString(Cells(original));
    }
  }
}

TEST(RowEchelonTest, EqualInputGivesEqualBits) {
  SeededRandom random(72);
  SCOPED_TRACE(random.Text());
  const Matrix original = Testing::RandomMatrix(random, 9, 14);
  const RowEchelon first = ReduceToRowEchelon(original);
  const RowEchelon second = ReduceToRowEchelon(original);
  EXPECT_EQ(Cells(first.matrix), Cells(second.matrix));
  EXPECT_EQ(Elements(first.permutation), Elements(second.permutation));
}

}  // namespace
