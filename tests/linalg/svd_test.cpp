#include "linalg/svd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "support/dense_algebra.h"
#include "support/files.h"
#include "support/matrices.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::Cells;
using Testing::DenseMatrix;
using Testing::DenseVector;
using Testing::Elements;
using Testing::MakeMatrix;
using Testing::MakeVector;
using Testing::SeededRandom;
using Testing::ToDense;
using Testing::Transposed;
using Vell::Matrix;
using Vell::SvdResult;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTolerance = 1e-10;

// Rounding errors of a decomposition are a small multiple of this, relative to the largest value.
double Precision(const Matrix& a) {
  return 20 * (1 + std::max(a.Rows(), a.Columns())) * std::numeric_limits<double>::epsilon();
}

long double Dot(const DenseVector& a, const DenseVector& b) {
  long double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    sum += a[i] * b[i];
  }
  return sum;
}

// Expects the columns with these numbers to be orthogonal and of length 1.
void ExpectOrthonormal(const Matrix& matrix, const std::vector<std::size_t>& numbers,
                       double precision, const char* name) {
  const DenseMatrix columns = Transposed(ToDense(matrix));
  for (const std::size_t j : numbers) {
    for (const std::size_t k : numbers) {
      EXPECT_LE(std::fabs(Dot(columns[j], columns[k]) - (j == k ? 1 : 0)), precision)
          << "columns " << j << " and " << k << " of " << name;
    }
  }
}

// Decomposes and checks everything that defines a decomposition: A = U * diag(w) * V^T, V
// orthogonal, the columns of U orthonormal where the value is not 0, the values not negative, their
// extremes and the threshold.
SvdResult CheckedDecomposition(const Matrix& a) {
  SvdResult result;
  result.tolerance = kTolerance;
  Vell::Decompose(result, a);

  const std::int32_t n = a.Columns();
  EXPECT_EQ(result.tolerance, kTolerance);
  EXPECT_EQ(result.u.Rows(), a.Rows());
  EXPECT_EQ(result.u.Columns(), n);
  EXPECT_EQ(result.w.Size(), n);
  EXPECT_EQ(result.v.Rows(), n);
  EXPECT_EQ(result.v.Columns(), n);
  if (testing::Test::HasFailure()) {
    return result;
  }
  EXPECT_EQ(result.smallestValue, n == 0 ? 0 : *std::ranges::min_element(result.w));
  EXPECT_EQ(result.largestValue, n == 0 ? 0 : *std::ranges::max_element(result.w));
  EXPECT_EQ(result.threshold, result.largestValue * kTolerance);
  EXPECT_GE(result.smallestValue, 0);

  const double precision = Precision(a);
  std::vector<std::size_t> all;
  std::vector<std::size_t> nonzero;
  DenseMatrix scaled = Transposed(ToDense(result.u));
  for (std::size_t j = 0; j < static_cast<std::size_t>(n); ++j) {
    const double value = result.w[static_cast<std::int32_t>(j)];
    all.push_back(j);
    if (value > 1e-3 * kTolerance * result.largestValue) {
      nonzero.push_back(j);
    }
    for (std::size_t i = 0; a.Rows() > 0 && i < scaled[j].size(); ++i) {
      scaled[j][i] *= value;
    }
  }
  const auto room = static_cast<long double>(precision) * result.largestValue +
                    4.0L * std::numeric_limits<double>::denorm_min();
  if (a.Rows() > 0 && n > 0) {
    EXPECT_LE(Testing::MaximumDifference(
                  Testing::Product(Transposed(scaled), Transposed(ToDense(result.v))), ToDense(a)),
              room)
        << "U * diag(w) * V^T differs from A";
    ExpectOrthonormal(result.u, nonzero, precision, "U");
  }
  ExpectOrthonormal(result.v, all, precision, "V");
  return result;
}

std::vector<double> Descending(const Vell::Vector& values) {
  std::vector<double> result = Elements(values);
  std::ranges::sort(result, std::greater<>());
  return result;
}

// Expects the values in any order, up to rounding relative to the largest.
void ExpectValues(const SvdResult& result, std::vector<double> expected, double precision) {
  std::ranges::sort(expected, std::greater<>());
  const std::vector<double> found = Descending(result.w);
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t j = 0; j < found.size(); ++j) {
    EXPECT_NEAR(found[j], expected[j], precision * expected[0]) << j;
  }
}

struct Example {
  std::string name;
  std::int32_t rows;
  std::int32_t columns;
  std::vector<double> cells;
  std::vector<double> values;
};

void PrintTo(const Example& example, std::ostream* stream) { *stream << example.name; }

class SvdExampleTest : public testing::TestWithParam<Example> {};

TEST_P(SvdExampleTest, TheValuesAreMet) {
  const Example& example = GetParam();
  const Matrix a = MakeMatrix(example.rows, example.columns, example.cells);
  const SvdResult result = CheckedDecomposition(a);
  ExpectValues(result, example.values, Precision(a));
  const auto rank = std::ranges::count_if(example.values, [&](double value) {
    return value > kTolerance * *std::ranges::max_element(example.values);
  });
  EXPECT_EQ(result.Rank(), rank);
}

std::string ExampleName(const testing::TestParamInfo<Example>& info) { return info.param.name; }

// Worked by hand: the values are the square roots of the eigenvalues of A^T * A.
const std::vector<Example> kByHand = {
    {"number", 1, 1, {7}, {7}},
    {"negative_number", 1, 1, {-7}, {7}},
    {"zero_number", 1, 1, {0}, {0}},
    {"diagonal", 2, 2, {3, 0, 0, -2}, {3, 2}},
    {"diagonal_ascending", 3, 3, {1, 0, 0, 0, -2, 0, 0, 0, 3}, {3, 2, 1}},
    {"exchange", 2, 2, {0, 1, 1, 0}, {1, 1}},
    // A^T * A = 25 20 / 20 25 has the eigenvalues 45 and 5
    {"three_zero_four_five", 2, 2, {3, 0, 4, 5}, {6.708203932499369, 2.23606797749979}},
    // equal values: the identity, a permutation, 2 * an orthogonal matrix
    {"identity", 3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {1, 1, 1}},
    {"permutation", 3, 3, {0, 1, 0, 0, 0, 1, 1, 0, 0}, {1, 1, 1}},
    {"hadamard", 4, 4, {1, 1, 1, 1, 1, -1, 1, -1, 1, 1, -1, -1, 1, -1, -1, 1}, {2, 2, 2, 2}},
    // a vector has its length, sqrt(1 + 4 + 4), as row and as column
    {"row", 1, 3, {1, -2, 2}, {3, 0, 0}},
    {"row_of_zeros", 1, 3, {0, 0, 0}, {0, 0, 0}},
    {"column", 3, 1, {1, -2, 2}, {3}},
    {"column_of_zeros", 3, 1, {0, 0, 0}, {0}},
    {"column_ending_in_its_only_entry", 3, 1, {0, 0, -5}, {5}},
    // all ones, m x n: sqrt(m * n)
    {"ones", 4, 4, std::vector<double>(16, 1), {4, 0, 0, 0}},
    {"ones_tall", 8, 2, std::vector<double>(16, 1), {4, 0}},
    {"ones_wide", 2, 8, std::vector<double>(16, 1), {4, 0, 0, 0, 0, 0, 0, 0}},
    // zeros on the diagonal of the bidiagonal form: shifts, and a zero in the middle
    {"shift", 4, 4, {0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0}, {1, 1, 1, 0}},
    {"shift_down", 3, 3, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {1, 1, 0}},
    // rows (3 4 0), (0 0 5), 0: lengths 5 and 5
    {"zero_in_the_middle", 3, 3, {3, 4, 0, 0, 0, 5, 0, 0, 0}, {5, 5, 0}},
    {"zero_column_first", 2, 3, {0, 3, 0, 0, 0, 4}, {4, 3, 0}},
    {"zero_column_last", 3, 2, {3, 0, 4, 0, 0, 0}, {5, 0}},
    {"zero_row_first", 3, 2, {0, 0, 0, 2, 1, 0}, {2, 1}},
    {"zero", 3, 3, std::vector<double>(9), {0, 0, 0}},
    {"zero_wide", 2, 5, std::vector<double>(10), {0, 0, 0, 0, 0}},
    {"zero_tall", 5, 2, std::vector<double>(10), {0, 0}},
    // A^T * A = 3 2 / 2 2 has the eigenvalues (5 + sqrt(17)) / 2 and (5 - sqrt(17)) / 2
    {"count_like", 3, 2, {1, 1, 1, 1, 1, 0}, {2.135779205069857, 0.6621534468619564}},
    // graded over 30 decades
    {"graded", 3, 3, {1e15, 0, 0, 0, 1, 0, 0, 0, 1e-15}, {1e15, 1, 1e-15}},
    // no rows or no columns
    {"empty", 0, 0, {}, {}},
    {"without_rows", 0, 3, {}, {0, 0, 0}},
    {"without_columns", 3, 0, {}, {}},
};
INSTANTIATE_TEST_SUITE_P(ByHand, SvdExampleTest, testing::ValuesIn(kByHand), ExampleName);

std::vector<double> Numbers(const std::string& text) {
  std::istringstream stream(text);
  std::vector<double> result;
  for (std::string number; stream >> number;) {
    result.push_back(std::stod(number));
  }
  return result;
}

// Values by another engine; tests/reference/README.md says how they are made.
std::vector<Example> ReferenceExamples() {
  std::vector<Example> examples;
  const auto rows = Testing::ReadCsv(Testing::ReferenceFile("svd.csv"));
  for (std::size_t line = 1; line < rows.size(); ++line) {
    const auto& row = rows[line];
    examples.push_back({row.at(0), std::stoi(row.at(1)), std::stoi(row.at(2)), Numbers(row.at(3)),
                        Numbers(row.at(4))});
  }
  return examples;
}
INSTANTIATE_TEST_SUITE_P(Reference, SvdExampleTest, testing::ValuesIn(ReferenceExamples()),
                         ExampleName);

TEST(SvdTest, TheThresholdIsTheToleranceTimesTheLargestValue) {
  SvdResult result;
  result.tolerance = 0.25;
  Vell::Decompose(result, MakeMatrix(2, 2, {-8, 0, 0, 1}));
  EXPECT_NEAR(result.largestValue, 8, 1e-14);
  EXPECT_NEAR(result.smallestValue, 1, 1e-14);
  EXPECT_EQ(result.threshold, 0.25 * result.largestValue);
  EXPECT_EQ(result.Rank(), 1);
}

TEST(SvdTest, AValueAtTheThresholdDoesNotCount) {
  SvdResult result;
  result.w = MakeVector({1, 4, 2, 0});
  result.threshold = 2;
  EXPECT_EQ(result.Rank(), 1);
  result.threshold = std::nextafter(2.0, 0.0);
  EXPECT_EQ(result.Rank(), 2);
  result.threshold = 0;
  EXPECT_EQ(result.Rank(), 3);
}

TEST(SvdTest, AZeroMatrixHasRankZeroAtAnyTolerance) {
  for (const double tolerance : {0.0, 1e-10, 1.0}) {
    SvdResult result;
    result.tolerance = tolerance;
    Vell::Decompose(result, Matrix(3, 3));
    EXPECT_EQ(result.largestValue, 0);
    EXPECT_EQ(result.threshold, 0);
    EXPECT_EQ(result.Rank(), 0) << tolerance;
  }
}

TEST(SvdTest, OrderZeroHasAllValuesAndTheThresholdZero) {
  SvdResult result;
  result.tolerance = 0.5;
  result.smallestValue = result.largestValue = result.threshold = 9;
  Vell::Decompose(result, Matrix(0, 0));
  EXPECT_EQ(result.smallestValue, 0);
  EXPECT_EQ(result.largestValue, 0);
  EXPECT_EQ(result.threshold, 0);
  EXPECT_EQ(result.w.Size(), 0);
  EXPECT_EQ(result.Rank(), 0);
}

TEST(SvdTest, AResultCanBeUsedAgain) {
  const Matrix a = MakeMatrix(2, 2, {3, 0, 4, 5});
  SvdResult fresh;
  fresh.tolerance = kTolerance;
  Vell::Decompose(fresh, a);
  SvdResult used;
  used.tolerance = kTolerance;
  Vell::Decompose(used, Matrix(4, 7));
  Vell::Decompose(used, a);
  EXPECT_EQ(Cells(used.u), Cells(fresh.u));
  EXPECT_EQ(Elements(used.w), Elements(fresh.w));
  EXPECT_EQ(Cells(used.v), Cells(fresh.v));
  EXPECT_EQ(used.threshold, fresh.threshold);
}

TEST(SvdTest, RandomMatricesOfEveryShapeAreDecomposed) {
  SeededRandom random(81);
  SCOPED_TRACE(random.Text());
  for (std::int32_t rows = 0; rows <= 9; ++rows) {
    for (std::int32_t columns = 0; columns <= 9; ++columns) {
      SCOPED_TRACE(testing::Message() << rows << " x " << columns);
      const Matrix a = Testing::RandomMatrix(random, rows, columns);
      const SvdResult result = CheckedDecomposition(a);
      EXPECT_EQ(result.Rank(), std::min(rows, columns));
    }
  }
}

// The squares of the values sum to the squares of the entries.
TEST(SvdTest, LargeMatricesAreDecomposed) {
  SeededRandom random(82);
  SCOPED_TRACE(random.Text());
  struct Shape {
    std::int32_t rows;
    std::int32_t columns;
  };
  for (const Shape& shape : {Shape{40, 40}, Shape{60, 25}, Shape{25, 60}}) {
    SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns);
    const Matrix a = Testing::RandomMatrix(random, shape.rows, shape.columns);
    const SvdResult result = CheckedDecomposition(a);
    const std::vector<double> cells = Cells(a);
    const DenseVector entries(cells.begin(), cells.end());
    const DenseVector values = ToDense(result.w);
    EXPECT_NEAR(static_cast<double>(Dot(values, values) / Dot(entries, entries)), 1, 1e-13);
  }
}

TEST(SvdTest, ThePlantedRankIsFound) {
  SeededRandom random(83);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 60; ++repeat) {
    const std::int32_t rows = random.Integer(1, 14);
    const std::int32_t columns = random.Integer(1, 14);
    const std::int32_t rank = random.Integer(0, std::min(rows, columns));
    SCOPED_TRACE(testing::Message() << rows << " x " << columns << " of rank " << rank);
    // A product of two integer matrices that hold the identity, hence of this rank exactly.
    Matrix a(rows, columns);
    for (std::int32_t k = 0; k < rank; ++k) {
      std::vector<double> left(static_cast<std::size_t>(rows));
      for (std::int32_t i = 0; i < rows; ++i) {
        left[static_cast<std::size_t>(i)] = i < rank ? i == k : random.Integer(-3, 3);
      }
      for (std::int32_t j = 0; j < columns; ++j) {
        const double right = j < rank ? j == k : random.Integer(-3, 3);
        for (std::int32_t i = 0; i < rows; ++i) {
          a(i, j) += left[static_cast<std::size_t>(i)] * right;
        }
      }
    }
    EXPECT_EQ(CheckedDecomposition(a).Rank(), rank);
  }
}

// Counts of 0/1 columns as they occur, with a column that is the sum of two others or a copy.
TEST(SvdTest, DependentCountMatricesLoseTheirRank) {
  SeededRandom random(84);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 20; ++repeat) {
    SCOPED_TRACE(repeat);
    constexpr std::int32_t kRecords = 200;
    constexpr std::int32_t kColumns = 8;  // all ones, five at random, one copied, one opposite
    Matrix data(kRecords, kColumns);
    for (std::int32_t i = 0; i < kRecords; ++i) {
      data(i, 0) = 1;
      for (std::int32_t j = 1; j < 6; ++j) {
        data(i, j) = random.Bit();
      }
      data(i, 6) = data(i, 1);
      data(i, 7) = 1 - data(i, 2);
    }
    const DenseMatrix dense = ToDense(data);
    const DenseMatrix product = Testing::Product(Transposed(dense), dense);
    Matrix counts(kColumns, kColumns);
    for (std::int32_t j = 0; j < kColumns; ++j) {
      for (std::int32_t k = 0; k < kColumns; ++k) {
        counts(j, k) =
            static_cast<double>(product[static_cast<std::size_t>(j)][static_cast<std::size_t>(k)]);
      }
    }
    const SvdResult result = CheckedDecomposition(counts);
    EXPECT_EQ(result.Rank(), 6);
    // The columns of V with a zero value span the null space: A * v = 0.
    const DenseMatrix v = Transposed(ToDense(result.v));
    for (std::int32_t j = 0; j < kColumns; ++j) {
      if (result.w[j] <= result.threshold) {
        const DenseVector image = Testing::Product(product, v[static_cast<std::size_t>(j)]);
        EXPECT_LE(std::sqrt(Dot(image, image)), 1e-11) << "column " << j;
      }
    }
  }
}

// All matrices of a shape with entries from `lowest` to 1; their rank is counted in integers.
void CheckAllOfShape(std::int32_t rows, std::int32_t columns, std::int32_t lowest) {
  const std::int32_t cells = rows * columns;
  const std::int32_t choices = 2 - lowest;
  const auto matrices = static_cast<std::int32_t>(std::lround(std::pow(choices, cells)));
  for (std::int32_t number = 0; number < matrices; ++number) {
    Matrix a(rows, columns);
    std::int32_t digits = number;
    for (std::int32_t k = 0; k < cells; ++k, digits /= choices) {
      a(k / columns, k % columns) = digits % choices + lowest;
    }
    ASSERT_EQ(CheckedDecomposition(a).Rank(), Testing::IntegerRank(a))
        << rows << " x " << columns << ": " << testing::PrintToString(Cells(a));
    ASSERT_FALSE(testing::Test::HasFailure())
        << rows << " x " << columns << ": " << testing::PrintToString(Cells(a));
  }
}

TEST(SvdTest, EverySmallMatrixOfSignsHasItsRank) {
  ASSERT_NO_FATAL_FAILURE(CheckAllOfShape(2, 2, -1));
  ASSERT_NO_FATAL_FAILURE(CheckAllOfShape(2, 3, -1));
  ASSERT_NO_FATAL_FAILURE(CheckAllOfShape(3, 2, -1));
  ASSERT_NO_FATAL_FAILURE(CheckAllOfShape(1, 5, -1));
  ASSERT_NO_FATAL_FAILURE(CheckAllOfShape(5, 1, -1));
}

TEST(SvdTest, EverySmallMatrixOfBitsHasItsRank) {
  ASSERT_NO_FATAL_FAILURE(CheckAllOfShape(3, 3, 0));
  ASSERT_NO_FATAL_FAILURE(CheckAllOfShape(2, 4, 0));
  ASSERT_NO_FATAL_FAILURE(CheckAllOfShape(4, 2, 0));
}

// The rank is that of the matrix itself at any size of its entries.
TEST(SvdTest, HugeAndTinyMatricesAreDecomposed) {
  SeededRandom random(85);
  SCOPED_TRACE(random.Text());
  for (const double scale : {0x1p-1000, 1e-300, 1e-200, 1e-150, 1e150, 1e200, 1e300, 0x1p+1000}) {
    for (std::int32_t rows = 1; rows <= 4; ++rows) {
      for (std::int32_t columns = 1; columns <= 4; ++columns) {
        SCOPED_TRACE(testing::Message() << rows << " x " << columns << " times " << scale);
        Matrix a = Testing::RandomMatrix(random, rows, columns);
        for (std::int32_t i = 0; i < rows; ++i) {
          for (double& cell : a.Row(i)) {
            cell *= scale;
          }
        }
        EXPECT_EQ(CheckedDecomposition(a).Rank(), std::min(rows, columns));
      }
    }
  }
}

TEST(SvdTest, APowerOfTwoChangesTheValuesOnly) {
  SeededRandom random(89);
  SCOPED_TRACE(random.Text());
  const Matrix a = Testing::RandomMatrix(random, 6, 5);
  SvdResult plain;
  Vell::Decompose(plain, a);
  for (const int exponent : {-900, -40, -1, 1, 40, 900}) {
    SCOPED_TRACE(exponent);
    Matrix scaled = a;
    for (std::int32_t i = 0; i < 6; ++i) {
      for (double& cell : scaled.Row(i)) {
        cell = std::ldexp(cell, exponent);
      }
    }
    SvdResult result;
    Vell::Decompose(result, scaled);
    EXPECT_EQ(Cells(result.u), Cells(plain.u));
    EXPECT_EQ(Cells(result.v), Cells(plain.v));
    for (std::int32_t j = 0; j < 5; ++j) {
      EXPECT_EQ(result.w[j], std::ldexp(plain.w[j], exponent)) << j;
    }
  }
}

TEST(SvdTest, EntriesOfVeryDifferentSizesAreDecomposed) {
  SeededRandom random(86);
  SCOPED_TRACE(random.Text());
  for (int repeat = 0; repeat < 200; ++repeat) {
    const std::int32_t rows = random.Integer(1, 5);
    const std::int32_t columns = random.Integer(1, 5);
    Matrix a = Testing::RandomMatrix(random, rows, columns);
    for (std::int32_t i = 0; i < rows; ++i) {
      for (double& cell : a.Row(i)) {
        cell *= std::pow(10.0, random.Integer(-75, 75));
      }
    }
    SCOPED_TRACE(testing::Message()
                 << rows << " x " << columns << ": " << testing::PrintToString(Cells(a)));
    CheckedDecomposition(a);
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

// Not a number and infinities have no decomposition. It ends all the same: with values that mean
// nothing, or with one of the two errors.
TEST(SvdTest, EntriesThatAreNotFiniteComeToAnEnd) {
  struct Shape {
    std::int32_t rows;
    std::int32_t columns;
  };
  SeededRandom random(87);
  SCOPED_TRACE(random.Text());
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (const Shape& shape : {Shape{1, 1}, Shape{3, 3}, Shape{2, 4}, Shape{4, 2}}) {
      for (std::int32_t k = 0; k < shape.rows * shape.columns; ++k) {
        SCOPED_TRACE(testing::Message()
                     << bad << " as cell " << k << " of " << shape.rows << " x " << shape.columns);
        Matrix a = Testing::RandomMatrix(random, shape.rows, shape.columns);
        a(k / shape.columns, k % shape.columns) = bad;
        SvdResult result;
        result.tolerance = kTolerance;
        Testing::OutputCapture capture;
        bool isRaised = false;
        try {
          Vell::Decompose(result, a);
        } catch (const Vell::Exceptions::NumericException&) {
          isRaised = true;
        }
        const std::string error = capture.TakeError();
        if (isRaised) {
          EXPECT_TRUE(error == "Error: Too many iterations in singular value decomposition\n" ||
                      error == "Error: Negative singular values in singular value decomposition\n")
              << error;
        } else {
          EXPECT_EQ(error, "");
          EXPECT_EQ(result.w.Size(), shape.columns);
        }
      }
    }
  }
}

// No comparison with a NaN holds, so nothing is ever split off or converges.
TEST(SvdTest, ValueThatNeverConvergesIsGivenUpAfterThirtyIterations) {
  for (const std::int32_t order : {2, 3, 7}) {
    SCOPED_TRACE(order);
    Matrix a(order, order);
    a.Fill(kNaN);
    SvdResult result;
    result.tolerance = kTolerance;
    Testing::ExpectRaises<Vell::Exceptions::NumericException>(
        "Too many iterations in singular value decomposition", [&] { Vell::Decompose(result, a); });
  }
}

TEST(SvdTest, EqualInputGivesEqualBits) {
  SeededRandom random(88);
  SCOPED_TRACE(random.Text());
  const Matrix a = Testing::RandomMatrix(random, 12, 9);
  SvdResult first;
  Vell::Decompose(first, a);
  SvdResult second;
  Vell::Decompose(second, a);
  EXPECT_EQ(Cells(first.u), Cells(second.u));
  EXPECT_EQ(Elements(first.w), Elements(second.w));
  EXPECT_EQ(Cells(first.v), Cells(second.v));
}

}  // namespace
