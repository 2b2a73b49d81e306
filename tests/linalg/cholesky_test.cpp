#include "linalg/cholesky.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "support/dense_algebra.h"
#include "support/matrices.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::Absolute;
using Testing::DenseIdentity;
using Testing::DenseMatrix;
using Testing::DenseVector;
using Testing::Elements;
using Testing::MakeSymmetric;
using Testing::MakeVector;
using Testing::MaximumDifference;
using Testing::Product;
using Testing::SeededRandom;
using Testing::ToDense;
using Testing::ToDenseLower;
using Testing::ToDenseSymmetric;
using Testing::Transposed;
using Vell::SymmetricMatrix;
using Vell::Vector;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr long double kEpsilon = std::numeric_limits<double>::epsilon();

// A = L * L^T in integers, so that every step is exact:
//     L =  2          A =   4   12  -16
//          6  1            12   37  -43
//         -8  5  3        -16  -43   98
const std::vector<double> kExactFactor = {2, 6, 1, -8, 5, 3};
const std::vector<double> kExactMatrix = {4, 12, 37, -16, -43, 98};

TEST(CholeskyTest, AnExactSquareIsFactoredExactly) {
  const SymmetricMatrix a = MakeSymmetric(3, kExactMatrix);
  const SymmetricMatrix factor = Vell::Cholesky(a);
  EXPECT_EQ(factor.Order(), 3);
  EXPECT_EQ(Elements(factor.Elements()), kExactFactor);
  EXPECT_EQ(Elements(a.Elements()), kExactMatrix) << "the matrix itself stays as it is";
}

TEST(CholeskyTest, OneByOneFactorsToTheSquareRoot) {
  EXPECT_EQ(Vell::Cholesky(MakeSymmetric(1, {4}))(0, 0), 2);
  EXPECT_EQ(Vell::Cholesky(MakeSymmetric(1, {0.25}))(0, 0), 0.5);
  EXPECT_EQ(Vell::Cholesky(MakeSymmetric(1, {kInfinity}))(0, 0), kInfinity);
  // the smallest positive number is positive: 2^-1074 = (2^-537)^2
  EXPECT_EQ(Vell::Cholesky(MakeSymmetric(1, {0x1p-1074}))(0, 0), 0x1p-537);
}

TEST(CholeskyTest, OrderZeroGivesAnEmptyFactor) {
  const SymmetricMatrix factor = Vell::Cholesky(SymmetricMatrix(0));
  EXPECT_EQ(factor.Order(), 0);
  EXPECT_EQ(factor.Elements().Size(), 0);
  EXPECT_EQ(Vell::CholeskySolve(factor, Vector()).Size(), 0);
  EXPECT_EQ(Vell::SolveTransposed(factor, Vector()).Size(), 0);
  EXPECT_EQ(Vell::CholeskyInverse(factor).Order(), 0);
}

struct NotPositive {
  std::int32_t order;
  std::vector<double> triangle;
};

TEST(CholeskyTest, APivotThatIsNotPositiveIsAnError) {
  const std::vector<NotPositive> cases = {
      {1, {0}},
      {1, {-0.0}},
      {1, {-4}},
      {1, {-0x1p-1074}},
      {1, {-kInfinity}},
      // all ones: the second pivot is 1 - 1 * 1 = 0
      {2, {1, 1, 1}},
      // 1 - 2 * 2 = -3
      {2, {1, 2, 1}},
      {2, {0, 0, 1}},
      {2, {1, 0, 0}},
      // the third pivot: 98 - 64 - 25 = 9 is taken away
      {3, {4, 12, 37, -16, -43, 89}},
      {3, {4, 12, 37, -16, -43, 88}},
      // after an infinite pivot: -1 - (0 / inf)^2
      {2, {kInfinity, 0, -1}},
  };
  for (const NotPositive& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.triangle));
    const SymmetricMatrix a = MakeSymmetric(c.order, c.triangle);
    Testing::ExpectRaises<Vell::Exceptions::NumericException>(
        "Non positive matrix in Cholesky decomposition", [&] { Vell::Cholesky(a); });
    EXPECT_EQ(Elements(a.Elements()), c.triangle) << "the matrix itself stays as it is";
  }
}

TEST(CholeskyTest, ANaNPassesIntoTheFactor) {
  EXPECT_TRUE(std::isnan(Vell::Cholesky(MakeSymmetric(1, {kNaN}))(0, 0)));

  // L(1, 0) = NaN / 2, hence the second pivot is NaN as well
  const SymmetricMatrix below = Vell::Cholesky(MakeSymmetric(2, {4, kNaN, 9}));
  EXPECT_EQ(below(0, 0), 2);
  EXPECT_TRUE(std::isnan(below(1, 0)));
  EXPECT_TRUE(std::isnan(below(1, 1)));

  // everything in a column whose pivot is NaN is NaN; a later pivot is then not <= 0
  const SymmetricMatrix first = Vell::Cholesky(MakeSymmetric(2, {kNaN, 1, -9}));
  EXPECT_TRUE(std::isnan(first(0, 0)));
  EXPECT_TRUE(std::isnan(first(1, 0)));
  EXPECT_TRUE(std::isnan(first(1, 1)));
}

TEST(CholeskyTest, APivotBesideANaNIsStillTested) {
  // The NaN stands in the last row only; the second pivot, -1, comes before it.
  const SymmetricMatrix a = MakeSymmetric(3, {1, 0, -1, kNaN, 0, 1});
  Testing::ExpectRaises<Vell::Exceptions::NumericException>(
      "Non positive matrix in Cholesky decomposition", [&] { Vell::Cholesky(a); });
}

TEST(CholeskySolveTest, AnExactSystemIsSolvedExactly) {
  const SymmetricMatrix factor = MakeSymmetric(3, kExactFactor);
  // A * (1, 2, 3): 4 + 24 - 48, 12 + 74 - 129, -16 - 86 + 294
  const Vector b = MakeVector({-20, -43, 192});
  EXPECT_EQ(Elements(Vell::CholeskySolve(factor, b)), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(Elements(b), (std::vector<double>{-20, -43, 192}));
}

TEST(CholeskySolveTest, TheTransposedFactorIsSolvedExactly) {
  const SymmetricMatrix factor = MakeSymmetric(3, kExactFactor);
  // L^T * (1, 2, 3): 2 + 12 - 24, 2 + 15, 9
  EXPECT_EQ(Elements(Vell::SolveTransposed(factor, MakeVector({-10, 17, 9}))),
            (std::vector<double>{1, 2, 3}));
}

TEST(CholeskySolveTest, TheUpperTriangleOfTheTransposedFactorCounts) {
  // L = 1 0 / 4 2, L^T = 1 4 / 0 2: 2 x1 = 6, x0 + 4 x1 = 2. With L itself x would be (2, -1).
  EXPECT_EQ(Elements(Vell::SolveTransposed(MakeSymmetric(2, {1, 4, 2}), MakeVector({2, 6}))),
            (std::vector<double>{-10, 3}));
}

TEST(CholeskySolveTest, ANaNInTheRightSideReachesTheSolution) {
  const Vector x = Vell::CholeskySolve(MakeSymmetric(2, {1, 0.5, 1}), MakeVector({1, kNaN}));
  EXPECT_TRUE(std::isnan(x[0]));
  EXPECT_TRUE(std::isnan(x[1]));
}

// The inverse of the exact matrix in 36ths: 1777, -488 and 136, 76, -20 and 4.
//     4 * 1777 + 12 * -488 - 16 * 76 = 7108 - 5856 - 1216 = 36
TEST(CholeskyInverseTest, AnInverseByHandIsMet) {
  const SymmetricMatrix inverse = Vell::CholeskyInverse(MakeSymmetric(3, kExactFactor));
  const std::vector<double> expected = {1777, -488, 136, 76, -20, 4};
  ASSERT_EQ(inverse.Order(), 3);
  for (std::int32_t k = 0; k < 6; ++k) {
    EXPECT_NEAR(36 * inverse.Elements()[k], expected[static_cast<std::size_t>(k)], 1e-10) << k;
  }
}

TEST(CholeskyInverseTest, PowersOfTwoAreInvertedExactly) {
  EXPECT_EQ(Elements(Vell::CholeskyInverse(MakeSymmetric(1, {0.5})).Elements()),
            std::vector<double>{4});
  // L = 2 0 / 2 1, A = 4 4 / 4 5, A^-1 = 5 -4 / -4 4 over 4
  EXPECT_EQ(Elements(Vell::CholeskyInverse(MakeSymmetric(2, {2, 2, 1})).Elements()),
            (std::vector<double>{1.25, -1, 1}));
}

// One random positive definite matrix of every small order and a large one, with its factor.
class CholeskyRandomTest : public testing::TestWithParam<std::int32_t> {
 protected:
  std::int32_t Order() const { return GetParam(); }

  // |a . b - its rounded value| of a sum of n products is at most about n * eps * |a| . |b|.
  long double SumBound() const { return (GetParam() + 4) * kEpsilon; }

  SeededRandom random_{static_cast<std::uint64_t>(600 + GetParam())};
  SymmetricMatrix a_ = Testing::RandomPositiveDefinite(random_, GetParam());
  SymmetricMatrix factor_ = Vell::Cholesky(a_);
  testing::ScopedTrace trace_{__FILE__, __LINE__, random_.Text()};
};

// Row i of L has the length sqrt(A(i, i)), which bounds the rounding error of the product.
TEST_P(CholeskyRandomTest, TheFactorTimesItsTransposeIsTheMatrix) {
  const DenseMatrix l = ToDenseLower(factor_);
  const DenseMatrix product = Product(l, Transposed(l));
  for (std::int32_t i = 0; i < Order(); ++i) {
    EXPECT_GT(factor_(i, i), 0);
    for (std::int32_t j = 0; j <= i; ++j) {
      const long double difference =
          product[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] - a_(i, j);
      EXPECT_LE(std::fabs(difference), SumBound() * std::sqrt(a_(i, i) * a_(j, j)))
          << i << ", " << j;
    }
  }
}

TEST_P(CholeskyRandomTest, EqualInputGivesEqualBits) {
  EXPECT_EQ(Elements(Vell::Cholesky(a_).Elements()), Elements(factor_.Elements()));
}

TEST_P(CholeskyRandomTest, TheSolutionSatisfiesTheSystem) {
  const Vector b = Testing::RandomVector(random_, Order());
  const Vector x = Vell::CholeskySolve(factor_, b);
  ASSERT_EQ(x.Size(), Order());
  const DenseMatrix l = ToDenseLower(factor_);
  const DenseVector product = Product(l, Product(Transposed(l), ToDense(x)));
  const DenseMatrix absolute = Absolute(l);
  const DenseVector size =
      Product(absolute, Product(Transposed(absolute), Absolute({ToDense(x)})[0]));
  for (std::size_t i = 0; i < size.size(); ++i) {
    EXPECT_LE(std::fabs(product[i] - b[static_cast<std::int32_t>(i)]), 3 * SumBound() * size[i])
        << i;
  }
}

// The condition of these matrices is below 4000.
TEST_P(CholeskyRandomTest, TheSolutionEqualsThatOfDenseElimination) {
  const Vector b = Testing::RandomVector(random_, Order());
  const DenseMatrix expected = Testing::SolveDense(ToDenseSymmetric(a_), Transposed({ToDense(b)}));
  EXPECT_LE(MaximumDifference(Transposed({ToDense(Vell::CholeskySolve(factor_, b))}), expected),
            1e-12);
}

TEST_P(CholeskyRandomTest, TheTransposedFactorTimesItsSolutionIsTheRightSide) {
  const Vector b = Testing::RandomVector(random_, Order());
  const Vector x = Vell::SolveTransposed(factor_, b);
  ASSERT_EQ(x.Size(), Order());
  const DenseMatrix upper = Transposed(ToDenseLower(factor_));
  const DenseVector product = Product(upper, ToDense(x));
  const DenseVector size = Product(Absolute(upper), Absolute({ToDense(x)})[0]);
  for (std::size_t i = 0; i < size.size(); ++i) {
    EXPECT_LE(std::fabs(product[i] - b[static_cast<std::int32_t>(i)]), SumBound() * size[i]) << i;
  }
}

// With x = L^-T * e(k) for every unit vector, the sum of x * x^T is the covariance that x has for a
// standard normal right side.
TEST_P(CholeskyRandomTest, TransposedSolutionsHaveTheInverseAsCovariance) {
  const auto order = static_cast<std::size_t>(Order());
  DenseMatrix covariance = Testing::DenseZero(order, order);
  for (std::int32_t k = 0; k < Order(); ++k) {
    Vector unit(Order());
    unit[k] = 1;
    const DenseVector x = ToDense(Vell::SolveTransposed(factor_, unit));
    for (std::size_t i = 0; i < order; ++i) {
      for (std::size_t j = 0; j < order; ++j) {
        covariance[i][j] += x[i] * x[j];
      }
    }
  }
  const DenseMatrix inverse = Testing::SolveDense(ToDenseSymmetric(a_), DenseIdentity(order));
  EXPECT_LE(MaximumDifference(covariance, inverse), 1e-12);
}

TEST_P(CholeskyRandomTest, TheInverseEqualsThatOfDenseElimination) {
  const SymmetricMatrix inverse = Vell::CholeskyInverse(factor_);
  ASSERT_EQ(inverse.Order(), Order());
  const DenseMatrix identity = DenseIdentity(static_cast<std::size_t>(Order()));
  const DenseMatrix dense = ToDenseSymmetric(inverse);
  EXPECT_LE(MaximumDifference(dense, Testing::SolveDense(ToDenseSymmetric(a_), identity)), 1e-12);
  EXPECT_LE(MaximumDifference(Product(ToDenseSymmetric(a_), dense), identity), 1e-10);
}

// A negative diagonal element, wherever it stands, means that e(i)^T * A * e(i) is negative.
TEST_P(CholeskyRandomTest, ANegativeDiagonalElementIsFoundAnywhere) {
  for (std::int32_t i = 0; i < Order(); ++i) {
    SymmetricMatrix indefinite = a_;
    indefinite(i, i) = -1e-3;
    Testing::ExpectRaises<Vell::Exceptions::NumericException>(
        "Non positive matrix in Cholesky decomposition", [&] { Vell::Cholesky(indefinite); });
  }
}

INSTANTIATE_TEST_SUITE_P(Orders, CholeskyRandomTest,
                         testing::Values(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 60),
                         testing::PrintToStringParamName());

}  // namespace
