#include "linalg/cholesky.h"

#include <gtest/gtest.h>

#include "support/raised.h"

namespace {

using Vell::SymmetricMatrix;

TEST(CholeskyTest, OneByOneFactorsToTheSquareRoot) {
  SymmetricMatrix a(1);
  a(0, 0) = 4;
  EXPECT_EQ(Vell::Cholesky(a)(0, 0), 2);
}

TEST(CholeskyTest, ZeroPivotIsNotPositive) {
  SymmetricMatrix ones(2);
  ones(0, 0) = ones(1, 0) = ones(1, 1) = 1;
  Testing::ExpectRaises<Vell::Exceptions::NumericException>(
      "Non positive matrix in Cholesky decomposition", [&] { Vell::Cholesky(ones); });
}

}  // namespace
