#include "foundation/exponential.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "support/seeded_random.h"

namespace {

using Vell::Exp;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// |Exp(x) - e^x| in units in the last place of the double nearest to e^x.
long double ErrorInLastPlaces(double x) {
  const long double exact = std::exp(static_cast<long double>(x));
  const auto nearest = static_cast<double>(exact);
  const double lastPlace = std::nextafter(nearest, kInfinity) - nearest;
  return std::fabs(static_cast<long double>(Exp(x)) - exact) / lastPlace;
}

TEST(ExpTest, IsOneAtZeroOfEitherSign) {
  EXPECT_EQ(Exp(0.0), 1.0);
  EXPECT_EQ(Exp(-0.0), 1.0);
}

TEST(ExpTest, EndsInInfinityAndZero) {
  EXPECT_EQ(Exp(kInfinity), kInfinity);
  EXPECT_EQ(Exp(-kInfinity), 0.0);
  EXPECT_EQ(Exp(710), kInfinity);
  EXPECT_EQ(Exp(1e300), kInfinity);
  EXPECT_EQ(Exp(-746), 0.0);
  EXPECT_EQ(Exp(-1e300), 0.0);
}

TEST(ExpTest, NanStaysNan) {
  EXPECT_TRUE(std::isnan(Exp(std::numeric_limits<double>::quiet_NaN())));
}

TEST(ExpTest, StaysFiniteUpToTheLargestDouble) {
  EXPECT_LT(Exp(709.78), kInfinity);  // ln(DBL_MAX) = 709.7827...
  EXPECT_GT(Exp(-745.13), 0.0);       // ln(2^-1075) = -745.1332...
  EXPECT_LE(ErrorInLastPlaces(709.78), 1);
  EXPECT_LE(ErrorInLastPlaces(-745.13), 1);
}

TEST(ExpTest, ErrorIsBelowOneUnitInTheLastPlace) {
  Testing::SeededRandom random(20240302);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 100'000; ++i) {
    const double range = i % 3 == 0 ? 745 : i % 3 == 1 ? 30 : 1e-3;
    const double x = random.Real(-range, std::min(range, 709.0));
    ASSERT_LE(ErrorInLastPlaces(x), 1) << x;
  }
}

template <int kLanes>
void ExpectLanesEqualSingles(Testing::SeededRandom& random) {
  for (int i = 0; i < 1000; ++i) {
    typename Vell::Lanes<kLanes>::Real values{};
    double singles[kLanes];
    for (int lane = 0; lane < kLanes; ++lane) {
      values[lane] = singles[lane] = i == 0 ? 800.0 * (lane - 1) : random.Real(-760, 720);
    }
    Vell::ReplaceByExp<kLanes>(values);
    for (int lane = 0; lane < kLanes; ++lane) {
      ASSERT_EQ(std::bit_cast<std::uint64_t>(static_cast<double>(values[lane])),
                std::bit_cast<std::uint64_t>(Exp(singles[lane])))
          << singles[lane];
    }
  }
}

TEST(ExpTest, GivesTheSameBitsHoweverManyNumbersAreComputedTogether) {
  Testing::SeededRandom random(20240303);
  SCOPED_TRACE(random.Text());
  ExpectLanesEqualSingles<2>(random);
  ExpectLanesEqualSingles<4>(random);
}

}  // namespace
