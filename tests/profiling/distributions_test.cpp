#include "profiling/distributions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// R: pnorm.
TEST(DistributionsTest, TheNormalDistributionIsThatOfR) {
  const double cases[][2] = {{0, 0.5},
                             {0.5, 0.69146246127401301},
                             {-1, 0.15865525393145705},
                             {1.96, 0.97500210485177963},
                             {-3.3, 0.00048342414238377744},
                             {5, 0.99999971334842808},
                             {-7.08, 7.2077230864674783e-13},
                             {-8, 6.2209605742717849e-16},
                             {-12, 1.776482112077679e-33},
                             {-30, 4.9067139271481872e-198}};
  for (const auto& [x, p] : cases) {
    EXPECT_NEAR(Hovar::NormalDistribution(x) / p, 1, 1e-12) << x;
  }
  EXPECT_EQ(Hovar::NormalDistribution(-40), 0);
  EXPECT_EQ(Hovar::NormalDistribution(40), 1);
}

// R: 2 * pt(-t, df).
TEST(DistributionsTest, TailsOfStudentsDistributionAreThoseOfR) {
  const double cases[][3] = {{1, 1, 0.5},
                             {2.5, 3, 0.0877066470080655},
                             {0.3, 12.5, 0.769107743968535},
                             {12, 4, 0.000276428548502973},
                             {2, 500, 0.0460406827690314},
                             {1.7, 99999, 0.0891340352797605}};
  for (const auto& [t, degrees, p] : cases) {
    EXPECT_NEAR(Hovar::StudentTwoSided(t, degrees) / p, 1, 1e-9) << t << " " << degrees;
  }
  EXPECT_NEAR(Hovar::StudentTwoSided(1.2, 2e6), 0.23013948258759, 1e-6);
  EXPECT_NEAR(Hovar::StudentTwoSided(1.959963984540054, std::numeric_limits<double>::infinity()),
              0.05, 1e-12);
}

// R: qt.
TEST(DistributionsTest, QuantilesOfStudentsDistributionAreThoseOfR) {
  EXPECT_NEAR(Hovar::StudentQuantile(0.05, 5), 2.57058183563631, 1e-8);
  EXPECT_NEAR(Hovar::StudentQuantile(0.05, 33.3), 2.03381922413405, 1e-8);
  EXPECT_NEAR(Hovar::StudentQuantile(0.001, 2.2), 24.5504896273885, 1e-6);
}

}  // namespace
