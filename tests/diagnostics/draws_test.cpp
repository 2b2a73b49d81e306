#include "diagnostics/draws.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Hovar {
namespace {

TEST(DrawsTest, MeansAndVariancesByHand) {
  EXPECT_EQ(Mean({1, 2, 4, 5}), 3);
  EXPECT_EQ(Variance({1, 2, 4, 5}), 10.0 / 3);
  EXPECT_TRUE(std::isnan(Variance({1})));
  EXPECT_EQ(ChainMeans({{1, 3}, {4, 6}}), (Draws{2, 5}));
}

TEST(DrawsTest, PooledDrawsAreOneChainAfterTheOther) {
  EXPECT_EQ(Pooled({{3, 1}, {2, 5}}), (Draws{3, 1, 2, 5}));
}

TEST(DrawsTest, QuantilesInterpolate) {
  // R: quantile(c(1, 2, 4, 8), c(0, 0.05, 0.5, 0.95, 1))
  const Draws ascending{1, 2, 4, 8};
  EXPECT_EQ(Quantile(ascending, 0), 1);
  EXPECT_DOUBLE_EQ(Quantile(ascending, 0.05), 1.15);
  EXPECT_DOUBLE_EQ(Quantile(ascending, 0.5), 3);
  EXPECT_DOUBLE_EQ(Quantile(ascending, 0.95), 7.4);
  EXPECT_EQ(Quantile(ascending, 1), 8);
  EXPECT_EQ(Quantile({6}, 0.3), 6);
}

TEST(DrawsTest, HalvesLeaveTheMiddleOfAnOddNumberOut) {
  EXPECT_EQ(SplitIntoHalves({{1, 2, 3, 4}, {5, 6, 7, 8}}),
            (Chains{{1, 2}, {3, 4}, {5, 6}, {7, 8}}));
  EXPECT_EQ(SplitIntoHalves({{1, 2, 3, 4, 5}}), (Chains{{1, 2}, {4, 5}}));
}

TEST(DrawsTest, EqualOrInfiniteDrawsAreDegenerate) {
  EXPECT_TRUE(AreDegenerate({{2, 2}, {2, 2}}));
  EXPECT_TRUE(AreDegenerate({{1, 2}, {3, std::numeric_limits<double>::infinity()}}));
  EXPECT_TRUE(AreDegenerate({{1, 2}, {3, kNotAvailable}}));
  EXPECT_FALSE(AreDegenerate({{1, 1}, {2, 2}}));
}

}  // namespace
}  // namespace Hovar
