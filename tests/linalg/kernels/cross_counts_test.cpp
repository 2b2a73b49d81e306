#include "linalg/kernels/cross_counts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "support/allocation_fault.h"
#include "support/matrices.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::Cells;
using Testing::SeededRandom;
using Vell::BitMatrix;
using Vell::CrossCounter;
using Vell::Matrix;
using Vell::TernaryMatrix;

// By definition: how many of the rows have both cells set, for every pair of columns.
std::vector<double> NaiveCounts(std::int32_t rows, std::int32_t columns,
                                const std::function<bool(std::int32_t)>& isIncluded,
                                const std::function<bool(std::int32_t, std::int32_t)>& isSet) {
  std::vector<double> counts;
  for (std::int32_t j = 0; j < columns; ++j) {
    for (std::int32_t k = 0; k < columns; ++k) {
      double& count = counts.emplace_back(0);
      for (std::int32_t i = 0; i < rows; ++i) {
        count += isIncluded(i) && isSet(i, j) && isSet(i, k) ? 1 : 0;
      }
    }
  }
  return counts;
}

void ExpectSquare(const Matrix& counts, std::int32_t columns) {
  EXPECT_EQ(counts.Rows(), columns);
  EXPECT_EQ(counts.Columns(), columns);
}

TEST(CrossCounterTest, EachPairOfSetColumnsCountsOncePerRecord) {
  CrossCounter counter(4);
  const std::vector<std::int32_t> first = {0, 1, 3};
  const std::vector<std::int32_t> second = {0, 3};
  const std::vector<std::int32_t> third = {0};
  counter.Add(first);
  counter.Add(second);
  counter.Add({});
  counter.Add(third);
  const Matrix counts = counter.ToMatrix();
  ExpectSquare(counts, 4);
  EXPECT_EQ(Cells(counts), (std::vector<double>{3, 1, 0, 2,  //
                                                1, 1, 0, 1,  //
                                                0, 0, 0, 0,  //
                                                2, 1, 0, 2}));
}

TEST(CrossCounterTest, WithoutRecordsAllCountsAreZero) {
  EXPECT_EQ(Cells(CrossCounter(2).ToMatrix()), std::vector<double>(4));
  ExpectSquare(CrossCounter(0).ToMatrix(), 0);
}

TEST(CrossCounterTest, TheScratchHoldsOneRecord) {
  CrossCounter counter(70);
  EXPECT_EQ(counter.Scratch().size(), 70U);
}

TEST(CrossCounterTest, ANegativeNumberOfColumnsIsInvalid) {
  for (const std::int32_t columns : {-1, -2, std::numeric_limits<std::int32_t>::min()}) {
    SCOPED_TRACE(columns);
    Testing::ExpectRaises<Vell::Exceptions::InvalidArgumentException>(
        "Invalid argument", [&] { CrossCounter{columns}; });
  }
}

// 65536 * 65537 / 2 = 2^31 + 32768. The last three are 55607, 65536 and 2^30 + 1 in 32 bits.
TEST(CrossCounterTest, CountsOfTooManyColumnsOverflow) {
  for (const std::int32_t columns : {65536, 65537, 92682, 131072, 2147483646}) {
    SCOPED_TRACE(columns);
    Testing::ExpectRaises<Vell::Exceptions::IntegerOverflowException>(
        "Integer overflow", [&] { CrossCounter{columns}; });
  }
}

// The squares are -2147479015, -131071 and -166831 in 32 bits, sizes that Matrix refuses. The first
// two would have 2^30 and more counts.
TEST(CrossCounterTest, ColumnsOfAMatrixThatWrapsToANegativeSizeAreRefusedWithoutMemory) {
  for (const std::int32_t columns : {46341, 65535, 92681}) {
    SCOPED_TRACE(columns);
    const Testing::AllocationFault fault(1);
    Testing::ExpectRaises<Vell::Exceptions::InvalidArgumentException>(
        "Invalid argument", [&] { CrossCounter{columns}; });
    EXPECT_FALSE(fault.HasFired());
  }
}

TEST(CrossCountsTest, BitMatricesAreCountedOverAllRows) {
  SeededRandom random(51);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 40; ++repeat) {
    const std::int32_t rows = random.Integer(0, 30);
    const std::int32_t columns = repeat < 10 ? repeat : random.Integer(1, 70);
    SCOPED_TRACE(testing::Message() << rows << " x " << columns);
    BitMatrix matrix(rows, columns);
    for (std::int32_t i = 0; i < rows; ++i) {
      for (std::int32_t j = 0; j < columns; ++j) {
        matrix.Set(i, j, random.Bit());
      }
    }
    const Matrix counts = Vell::CrossCounts(matrix);
    ExpectSquare(counts, columns);
    ASSERT_EQ(Cells(counts), NaiveCounts(
                                 rows, columns, [](std::int32_t) { return true; },
                                 [&](std::int32_t i, std::int32_t j) { return matrix.Get(i, j); }));
  }
}

// The missing bits are set at random too: they are not looked at, only the filter decides.
TEST(CrossCountsTest, TernaryMatricesAreCountedOverTheIncludedRows) {
  SeededRandom random(52);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 40; ++repeat) {
    const std::int32_t rows = random.Integer(0, 30);
    const std::int32_t columns = repeat < 10 ? repeat : random.Integer(1, 70);
    SCOPED_TRACE(testing::Message() << rows << " x " << columns);
    TernaryMatrix matrix(rows, columns);
    Vell::BitVector isIncluded(rows);
    for (std::int32_t i = 0; i < rows; ++i) {
      isIncluded.Set(i, random.Bit());
      for (std::int32_t j = 0; j < columns; ++j) {
        matrix.SetValue(i, j, random.Bit());
        matrix.SetMissing(i, j, random.Bit());
      }
    }
    const auto include = [&](std::int32_t i) { return isIncluded.Get(i); };
    const Matrix counts = Vell::CrossCounts(matrix, include);
    ExpectSquare(counts, columns);
    ASSERT_EQ(Cells(counts),
              NaiveCounts(rows, columns, include,
                          [&](std::int32_t i, std::int32_t j) { return matrix.Value(i, j); }));
  }
}

TEST(CrossCountsTest, WhenNoRowIsIncludedAllCountsAreZero) {
  TernaryMatrix matrix(2, 2);
  matrix.SetValue(0, 0, true);
  matrix.SetValue(1, 1, true);
  EXPECT_EQ(Cells(Vell::CrossCounts(matrix, [](std::int32_t) { return false; })),
            std::vector<double>(4));
}

TEST(CrossCountsTest, TheFilterIsAskedOnceForEveryRow) {
  std::vector<std::int32_t> asked;
  Vell::CrossCounts(TernaryMatrix(3, 2), [&](std::int32_t i) {
    asked.push_back(i);
    return true;
  });
  EXPECT_EQ(asked, (std::vector<std::int32_t>{0, 1, 2}));
}

}  // namespace
