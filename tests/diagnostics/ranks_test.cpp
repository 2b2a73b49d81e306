#include "diagnostics/ranks.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Hovar {
namespace {

TEST(NormalScoresTest, AreThoseOfR) {
  // R: qnorm((c(1, 3.5, 3.5, 2) - 3/8) / 4.25); the two equal draws share the rank 3.5.
  const Chains scores = NormalScores({{-7, 5}, {5, 0}});
  ASSERT_EQ(scores.size(), 2U);
  ASSERT_EQ(scores[0].size(), 2U);
  ASSERT_EQ(scores[1].size(), 2U);
  EXPECT_NEAR(scores[0][0], -1.04913139796397115, 1e-14);
  EXPECT_NEAR(scores[0][1], 0.62890421763219018, 1e-14);
  EXPECT_NEAR(scores[1][0], 0.62890421763219018, 1e-14);
  EXPECT_NEAR(scores[1][1], -0.29930691046566704, 1e-14);
}

TEST(NormalScoresTest, DependOnTheOrderAlone) {
  EXPECT_EQ(NormalScores({{1, 2, 3}, {6, 5, 4}}), NormalScores({{-1e9, 0, 1e-9}, {9, 8.5, 8}}));
}

TEST(DistancesFromMedianTest, ByHand) {
  EXPECT_EQ(DistancesFromMedian({{1, 9, 4}}), (Chains{{3, 5, 0}}));
  EXPECT_EQ(DistancesFromMedian({{1, 9}, {4, 6}}), (Chains{{4, 4}, {1, 1}}));
}

}  // namespace
}  // namespace Hovar
