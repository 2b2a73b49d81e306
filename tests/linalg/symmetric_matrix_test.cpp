#include "linalg/symmetric_matrix.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "support/matrices.h"
#include "support/raised.h"

namespace {

using Testing::Cells;
using Testing::Elements;
using Testing::ExpectRaises;
using Testing::MakeSymmetric;
using Vell::PackedTriangleSize;
using Vell::SymmetricMatrix;
using Vell::Exceptions::IntegerOverflowException;
using Vell::Exceptions::InvalidArgumentException;

// Rows begin at the triangular numbers, up to the last row of the largest triangle; a product that
// leaves 32 bits would not be a constant.
static_assert(Vell::PackedRowStart(0) == 0);
static_assert(Vell::PackedRowStart(1) == 1);
static_assert(Vell::PackedRowStart(4) == 10);
static_assert(Vell::PackedRowStart(46341) == 1073767311);  // 46341 * 23171
static_assert(Vell::PackedRowStart(65534) == 2147385345);  // 32767 * 65535

TEST(SymmetricMatrixTest, ATriangleHasHalfOfOrderTimesOrderPlusOneElements) {
  struct Case {
    std::int32_t order;
    std::int32_t size;
  };
  const std::vector<Case> cases = {
      {0, 0},
      {1, 1},
      {2, 3},
      {3, 6},
      {4, 10},
      {100, 5050},
      {46340, 1073720970},  // 46341 * 23170; the product before halving still fits
      {46341, 1073767311},  // 23171 * 46341; here it would not
      {65535, 2147450880},  // 32768 * 65535, the largest below 2^31
  };
  for (const Case& c : cases) {
    EXPECT_EQ(PackedTriangleSize(c.order), c.size) << "order " << c.order;
  }
}

// Even orders form (order + 1) * (order / 2), odd ones ((order + 1) / 2) * order. The product
// modulo 2^32 is then compared with 2^31 - 1.
TEST(SymmetricMatrixTest, ATriangleThatWrapsIntoTheSignBitOverflows) {
  const std::vector<std::int32_t> orders = {
      65536,       // 65537 * 32768 = 2147516416 = 2^31 + 32768
      65537,       // 32769 * 65537 = 2147581953
      92680,       // 92681 * 46340 = 4294837540
      92681,       // 46341 * 92681 = 4294930221, the last one below 2^32
      113512,      // 113513 * 56756 = 6442543828 = 2^32 + 2147576532
      131071,      // 65536 * 131071 = 8589869056 = 2^32 + 4294901760
      1073741823,  // 2^29 * (2^30 - 1) = 2^59 - 2^29, modulo 2^32: 2^32 - 2^29
      2147483647,  // 2^30 * (2^31 - 1) = 2^61 - 2^30, modulo 2^32: 2^32 - 2^30
  };
  for (const std::int32_t order : orders) {
    SCOPED_TRACE(order);
    ExpectRaises<IntegerOverflowException>("Integer overflow", [&] { PackedTriangleSize(order); });
    ExpectRaises<IntegerOverflowException>("Integer overflow", [&] { SymmetricMatrix{order}; });
  }
}

TEST(SymmetricMatrixTest, ATriangleThatWrapsFurtherIsNotNoticed) {
  EXPECT_EQ(PackedTriangleSize(92682), 55607);        // 92683 * 46341 = 2^32 + 55607
  EXPECT_EQ(PackedTriangleSize(113511), 2147463020);  // 56756 * 113511 = 2^32 + 2147463020
  EXPECT_EQ(PackedTriangleSize(131072), 65536);       // 131073 * 65536 = 2^33 + 65536
  EXPECT_EQ(PackedTriangleSize(131073), 196609);      // 65537 * 131073 = 2^33 + 3 * 65536 + 1
  // (2^31 - 1) * (2^30 - 1) = 2^61 - 2^31 - 2^30 + 1, modulo 2^32: 2^30 + 1
  EXPECT_EQ(PackedTriangleSize(2147483646), 1073741825);
}

TEST(SymmetricMatrixTest, ANegativeOrderIsInvalid) {
  for (const std::int32_t order : {-1, -2, -65536, std::numeric_limits<std::int32_t>::min()}) {
    SCOPED_TRACE(order);
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { PackedTriangleSize(order); });
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { SymmetricMatrix{order}; });
  }
}

TEST(SymmetricMatrixTest, ANewMatrixHoldsZeros) {
  const SymmetricMatrix matrix(3);
  EXPECT_EQ(matrix.Order(), 3);
  EXPECT_EQ(Elements(matrix.Elements()), std::vector<double>(6));
}

TEST(SymmetricMatrixTest, OrderZeroHasNoElements) {
  EXPECT_EQ(SymmetricMatrix().Order(), 0);
  EXPECT_EQ(SymmetricMatrix(0).Order(), 0);
  EXPECT_EQ(SymmetricMatrix(0).Elements().Size(), 0);
}

TEST(SymmetricMatrixTest, TheLowerTriangleLiesRowByRow) {
  SymmetricMatrix matrix(4);
  for (std::int32_t i = 0; i < 4; ++i) {
    for (std::int32_t j = 0; j <= i; ++j) {
      matrix(i, j) = 10 * i + j;
    }
  }
  EXPECT_EQ(Elements(matrix.Elements()),
            (std::vector<double>{0, 10, 11, 20, 21, 22, 30, 31, 32, 33}));
  EXPECT_EQ(matrix.Row(0), matrix.Elements().begin());
  EXPECT_EQ(matrix.Row(3), matrix.Elements().begin() + 6);
  EXPECT_EQ(matrix.Row(3)[1], 31);
}

TEST(SymmetricMatrixTest, TheFullMatrixHasBothTriangles) {
  const SymmetricMatrix packed = MakeSymmetric(3, {1, 2, 3, 4, 5, 6});
  const Vell::Matrix full = Vell::ToFullMatrix(packed);
  EXPECT_EQ(full.Rows(), 3);
  EXPECT_EQ(full.Columns(), 3);
  EXPECT_EQ(Cells(full), (std::vector<double>{1, 2, 4,  //
                                              2, 3, 5,  //
                                              4, 5, 6}));
}

TEST(SymmetricMatrixTest, TheFullMatrixOfOrderZeroOrOneIsTheSame) {
  EXPECT_EQ(Vell::ToFullMatrix(SymmetricMatrix(0)).CellCount(), 0);
  EXPECT_EQ(Cells(Vell::ToFullMatrix(MakeSymmetric(1, {7}))), std::vector<double>{7});
}

TEST(SymmetricMatrixTest, ACopyHasElementsOfItsOwn) {
  SymmetricMatrix original = MakeSymmetric(2, {1, 2, 3});
  const SymmetricMatrix copy = original;
  original(1, 0) = 9;
  EXPECT_EQ(Elements(copy.Elements()), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(copy.Order(), 2);
}

}  // namespace
