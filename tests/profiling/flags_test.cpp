#include "profiling/flags.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using Hovar::Flag;

TEST(FlagsTest, LevelsAndSides) {
  EXPECT_EQ(Hovar::FlagByP(0.051, true), Flag::kNone);
  EXPECT_EQ(Hovar::FlagByP(0.049, true), Flag::kHigh);
  EXPECT_EQ(Hovar::FlagByP(0.049, false), Flag::kLow);
  EXPECT_EQ(Hovar::FlagByP(0.0019, true), Flag::kVeryHigh);
  EXPECT_EQ(Hovar::FlagByP(0.0019, false), Flag::kVeryLow);
  EXPECT_EQ(Hovar::FlagByP(std::nan(""), true), Flag::kNone);
  EXPECT_EQ(Hovar::FlagByPosterior(0.974), Flag::kNone);
  EXPECT_EQ(Hovar::FlagByPosterior(0.976), Flag::kHigh);
  EXPECT_EQ(Hovar::FlagByPosterior(0.9991), Flag::kVeryHigh);
  EXPECT_EQ(Hovar::FlagByPosterior(0.024), Flag::kLow);
  EXPECT_EQ(Hovar::FlagByPosterior(0.0009), Flag::kVeryLow);
  EXPECT_EQ(Hovar::FlagByPosterior(std::nan("")), Flag::kNone);
}

TEST(FlagsTest, CountsHoldBothLevels) {
  Hovar::FlagCounts counts;
  for (const Flag flag : {Flag::kNone, Flag::kHigh, Flag::kVeryHigh, Flag::kVeryLow}) {
    counts.Add(flag);
  }
  EXPECT_EQ(counts.judged, 4);
  EXPECT_EQ(counts.high, 2);
  EXPECT_EQ(counts.veryHigh, 1);
  EXPECT_EQ(counts.low, 1);
  EXPECT_EQ(counts.veryLow, 1);
}

TEST(FlagsTest, TheTippingPointIsTheSmallestShiftThatTurnsTheFlag) {
  const std::vector<double> shifts = {-2, -1, 0, 1, 2};
  const auto tipping = [&](std::vector<Flag> flags) {
    return Hovar::TippingPoint(shifts, flags, Flag::kHigh);
  };
  constexpr Flag kH = Flag::kHigh;
  constexpr Flag kN = Flag::kNone;
  EXPECT_EQ(tipping({kH, kH, kH, kH, kH}), 0);
  EXPECT_EQ(tipping({kN, kN, kH, kH, kN}), -1);
  EXPECT_EQ(tipping({kN, kH, kH, Flag::kVeryHigh, kH}), 1);
  EXPECT_EQ(tipping({kH, kH, kH, kH, kN}), 2);
}

// Estimates without error find all, and flag nobody wrongly; without differences nothing is found. With an
// estimate as uncertain as the effects differ a flag needs an estimate 1.96 sqrt(2) SDs out: its
// chance is 1 - Phi(1.96) on this side, and 0.9875 of them are right, P(u > 0, x > c) / P(x > c) for
// x = u + e. (R: integrate(function(u) dnorm(u) * pnorm(u - 1.96 * sqrt(2)), 0, Inf) / pnorm(-1.96))
TEST(FlagsTest, ReliabilityFollowsFromSizesAndDifferences) {
  const Hovar::FlagReliability sure = Hovar::ReliabilityOfFlags(std::vector{1e8, 1e8}, 0.3, 1.2);
  EXPECT_NEAR(sure.rightShare, 1, 1e-6);
  EXPECT_NEAR(sure.foundShare, 1, 1e-3);
  EXPECT_NEAR(sure.meanReliability, 1, 1e-6);
  const Hovar::FlagReliability half = Hovar::ReliabilityOfFlags(std::vector{25.0}, 0.2, 1.2);
  EXPECT_NEAR(half.meanReliability, 0.5, 1e-12);
  EXPECT_NEAR(half.rightShare, 0.9875, 1e-4);
  const Hovar::FlagReliability none = Hovar::ReliabilityOfFlags(std::vector{25.0}, 0, 1.2);
  EXPECT_TRUE(std::isnan(none.rightShare));
  EXPECT_EQ(none.meanReliability, 0);
}

}  // namespace
