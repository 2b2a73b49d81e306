#include "linalg/vector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "support/matrices.h"
#include "support/raised.h"

namespace {

using Testing::Elements;
using Testing::ExpectRaises;
using Testing::MakeIndexVector;
using Testing::MakeVector;
using Vell::IndexVector;
using Vell::Vector;
using Vell::Exceptions::InvalidArgumentException;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(VectorTest, ANewVectorHoldsZeros) {
  EXPECT_EQ(Elements(Vector(3)), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(Elements(IndexVector(2)), (std::vector<std::int32_t>{0, 0}));
  EXPECT_EQ(Vector(0).Size(), 0);
  EXPECT_EQ(Vector().Size(), 0);
}

TEST(VectorTest, ANegativeSizeIsInvalid) {
  for (const std::int32_t size : {-1, -1000, std::numeric_limits<std::int32_t>::min()}) {
    SCOPED_TRACE(size);
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { Vector{size}; });
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { IndexVector{size}; });
    IndexVector indices(2);
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { indices.Resize(size); });
    IndexVector reserved(2);
    ExpectRaises<InvalidArgumentException>("Invalid argument", [&] { reserved.Reserve(size); });
  }
}

TEST(VectorTest, ResizingDiscardsTheOldElements) {
  Vector vector = MakeVector({1, 2, 3});
  vector.Resize(4);
  EXPECT_EQ(Elements(vector), (std::vector<double>{0, 0, 0, 0}));
  vector[0] = 7;
  vector.Resize(1);
  EXPECT_EQ(Elements(vector), (std::vector<double>{0}));
  vector.Resize(0);
  EXPECT_EQ(vector.Size(), 0);
}

TEST(VectorTest, ReservingKeepsTheElementsThatFit) {
  IndexVector indices = MakeIndexVector({5, 6, 7});
  indices.Reserve(8);
  EXPECT_EQ(indices.Capacity(), 8);
  EXPECT_EQ(Elements(indices), (std::vector<std::int32_t>{5, 6, 7}));
  indices.Reserve(2);
  EXPECT_EQ(indices.Capacity(), 2);
  EXPECT_EQ(Elements(indices), (std::vector<std::int32_t>{5, 6}));
  indices.Reserve(0);
  EXPECT_EQ(indices.Size(), 0);
}

TEST(VectorTest, ReservingTheSameCapacityKeepsTheBlock) {
  IndexVector indices = MakeIndexVector({5, 6, 7});
  const std::int32_t* const block = indices.begin();
  indices.Reserve(indices.Capacity());
  EXPECT_EQ(indices.begin(), block);
}

TEST(VectorTest, AppendingDoublesAFullBlock) {
  IndexVector indices;
  std::vector<std::int32_t> capacities;
  std::vector<std::int32_t> expected;
  for (std::int32_t i = 0; i < 9; ++i) {
    indices.Append(i * i);
    expected.push_back(i * i);
    capacities.push_back(indices.Capacity());
  }
  EXPECT_EQ(Elements(indices), expected);
  EXPECT_EQ(capacities, (std::vector<std::int32_t>{1, 2, 4, 4, 8, 8, 8, 8, 16}));
}

TEST(VectorTest, ACopyHasElementsOfItsOwn) {
  Vector original = MakeVector({1, 2});
  Vector copy = original;
  Vector assigned(5);
  assigned = original;
  original[0] = 9;
  EXPECT_EQ(Elements(copy), (std::vector<double>{1, 2}));
  EXPECT_EQ(Elements(assigned), (std::vector<double>{1, 2}));
}

TEST(VectorTest, AssigningToItselfChangesNothing) {
  Vector vector = MakeVector({1, 2});
  const double* const block = vector.begin();
  const Vector& same = vector;
  vector = same;
  EXPECT_EQ(vector.begin(), block);
  EXPECT_EQ(Elements(vector), (std::vector<double>{1, 2}));
}

TEST(VectorTest, AddInPlaceAddsElementByElement) {
  Vector a = MakeVector({1, -2, 0.5});
  Vell::AddInPlace(a, MakeVector({10, 20, 0.25}));
  EXPECT_EQ(Elements(a), (std::vector<double>{11, 18, 0.75}));

  Vector empty;
  Vell::AddInPlace(empty, Vector());
  EXPECT_EQ(empty.Size(), 0);
}

TEST(VectorTest, AddInPlaceMayAddAVectorToItself) {
  Vector a = MakeVector({1, -2});
  Vell::AddInPlace(a, a);
  EXPECT_EQ(Elements(a), (std::vector<double>{2, -4}));
}

struct Extremes {
  std::vector<double> elements;
  double minimum;
  double maximum;
  double norm;
};

TEST(VectorTest, ExtremesAreFoundAnywhere) {
  const std::vector<Extremes> cases = {
      {{}, 0, 0, 0},
      {{5}, 5, 5, 5},
      {{-5}, -5, -5, 5},
      // all of one sign, so that a start from 0 would be seen
      {{3, 2, 7}, 2, 7, 7},
      {{-3, -2, -7}, -7, -2, 7},
      // first, middle, last
      {{-9, 1, 8}, -9, 8, 9},
      {{1, -9, 8}, -9, 8, 9},
      {{8, 1, -9}, -9, 8, 9},
      {{-kInfinity, kInfinity, 0}, -kInfinity, kInfinity, kInfinity},
      // a NaN after the first element is ignored
      {{1, kNaN, -4, 3}, -4, 3, 4},
      {{1, 2, kNaN}, 1, 2, 2},
  };
  for (const Extremes& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.elements));
    const Vector vector = MakeVector(c.elements);
    EXPECT_EQ(Vell::Minimum(vector), c.minimum);
    EXPECT_EQ(Vell::Maximum(vector), c.maximum);
    EXPECT_EQ(Vell::MaximumNorm(vector), c.norm);
  }
}

TEST(VectorTest, ANaNCountsAsZeroInTheNorm) {
  EXPECT_EQ(Vell::MaximumNorm(MakeVector({kNaN})), 0);
  EXPECT_EQ(Vell::MaximumNorm(MakeVector({kNaN, -0.5})), 0.5);
}

}  // namespace
