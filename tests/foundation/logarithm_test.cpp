#include "foundation/logarithm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/seeded_random.h"

namespace {

using Vell::Log;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// |Log(x) - ln x| in units in the last place of the double nearest to ln x.
long double ErrorInLastPlaces(double x) {
  const long double exact = std::log(static_cast<long double>(x));
  const double nearest = std::fabs(static_cast<double>(exact));
  const double lastPlace = std::nextafter(nearest, kInfinity) - nearest;
  return std::fabs(static_cast<long double>(Log(x)) - exact) / lastPlace;
}

TEST(LogTest, SpecialValues) {
  EXPECT_EQ(Log(0.0), -kInfinity);
  EXPECT_EQ(Log(-0.0), -kInfinity);
  EXPECT_EQ(Log(kInfinity), kInfinity);
  EXPECT_TRUE(std::isnan(Log(-1)));
  EXPECT_TRUE(std::isnan(Log(-kInfinity)));
  EXPECT_TRUE(std::isnan(Log(std::numeric_limits<double>::quiet_NaN())));
  EXPECT_EQ(Log(1), 0);
  EXPECT_FALSE(std::signbit(Log(1)));
}

TEST(LogTest, PowersOfTwoAreMultiplesOfLn2) {
  for (int k = -1074; k <= 1023; ++k) {
    ASSERT_LE(ErrorInLastPlaces(std::ldexp(1.0, k)), 1) << k;
  }
}

TEST(LogTest, ErrorIsBelowOneUnitInTheLastPlace) {
  Testing::SeededRandom random(20240304);
  SCOPED_TRACE(random.Text());
  const double sqrtHalf = std::sqrt(0.5);
  for (int i = 0; i < 200'000; ++i) {
    const double x = i % 4 == 0   ? random.Real(0, 1)
                     : i % 4 == 1 ? 1 + random.Real(-1e-3, 1e-3)
                     : i % 4 == 2 ? std::exp2(random.Real(-1074, 1023))
                                  : sqrtHalf * (1 + random.Real(-1e-12, 1e-12));
    if (x > 0) {
      ASSERT_LT(ErrorInLastPlaces(x), 1) << x;
    }
  }
  EXPECT_LT(ErrorInLastPlaces(std::numeric_limits<double>::max()), 1);
  EXPECT_LT(ErrorInLastPlaces(std::numeric_limits<double>::denorm_min()), 1);
  EXPECT_LT(ErrorInLastPlaces(std::nextafter(1.0, 0.0)), 1);
  EXPECT_LT(ErrorInLastPlaces(std::nextafter(1.0, 2.0)), 1);
}

}  // namespace
