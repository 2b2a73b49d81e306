#include "foundation/random/chain_seeds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "foundation/random/random_generator.h"

namespace Vell {
namespace {

constexpr std::uint32_t kMultiplierZ = RandomGenerator::kMultiplierZ;
constexpr std::uint32_t kMultiplierW = RandomGenerator::kMultiplierW;

/// One step of a word, as the generator makes it.
std::uint32_t Step(std::uint32_t word, std::uint32_t multiplier) {
  return multiplier * (word & 0xFFFF) + (word >> 16);
}

constexpr std::uint32_t kModulusZ = 2'422'800'383;  // 36969 * 2^16 - 1
constexpr std::uint32_t kModulusW = 1'179'647'999;  // 18000 * 2^16 - 1

TEST(WordAfterStepsTest, IsWhatTheStepsLeadTo) {
  for (const std::uint32_t multiplier : {kMultiplierZ, kMultiplierW}) {
    for (const std::uint32_t start : {1U, 2U, 65'535U, 65'536U, 362'436'069U, 1'179'647'998U}) {
      std::uint32_t word = start;
      for (std::uint64_t steps = 0; steps < 3000; ++steps) {
        ASSERT_EQ(WordAfterSteps(start, multiplier, steps), word) << start << " " << steps;
        word = Step(word, multiplier);
      }
    }
  }
}

TEST(WordAfterStepsTest, SeedsAboveTheModulusJoinTheCircle) {
  for (const std::uint32_t start : {kModulusZ + 1, kModulusZ + 7, 4'294'967'295U}) {
    std::uint32_t word = start;
    for (int steps = 0; steps < 100; ++steps) {
      word = Step(word, kMultiplierZ);
    }
    EXPECT_EQ(WordAfterSteps(start, kMultiplierZ, 100), word) << start;
  }
}

TEST(WordAfterStepsTest, TheModulusStaysWhatItIs) {
  EXPECT_EQ(Step(kModulusZ, kMultiplierZ), kModulusZ);
  EXPECT_EQ(WordAfterSteps(kModulusZ, kMultiplierZ, 5), kModulusZ);
  EXPECT_EQ(Step(kModulusW, kMultiplierW), kModulusW);
  EXPECT_EQ(WordAfterSteps(kModulusW, kMultiplierW, kStrideW), kModulusW);
}

TEST(WordAfterStepsTest, ACircleClosesAfterHalfTheModulus) {
  EXPECT_EQ(WordAfterSteps(12345, kMultiplierZ, (kModulusZ - 1) / 2), 12345U);
  EXPECT_EQ(WordAfterSteps(12345, kMultiplierW, (kModulusW - 1) / 2), 12345U);
  EXPECT_NE(WordAfterSteps(12345, kMultiplierZ, kStrideZ), 12345U);
}

TEST(SeedOfChainTest, TheFirstChainHasTheSeedOfTheDefinition) {
  EXPECT_EQ(SeedOfChain({0, 7}, 1), (SeedWords{0, 7}));
}

// Python: pow(36969, 748686492 * (k - 1), 36969 * 65536 - 1) * 362436069 % (36969 * 65536 - 1), and
// the same with 18000, 364531279 and 521288629.
TEST(SeedOfChainTest, OthersFollowByStrides) {
  const SeedWords own{362'436'069, 521'288'629};
  EXPECT_EQ(SeedOfChain(own, 2), (SeedWords{112'332'938, 235'904'374}));
  EXPECT_EQ(SeedOfChain(own, 3), (SeedWords{92'445'900, 850'400'957}));
  EXPECT_EQ(SeedOfChain(own, 4), (SeedWords{363'522'061, 722'326'446}));
}

TEST(SeedOfChainTest, ZeroCountsAsOne) {
  EXPECT_EQ(SeedOfChain({0, 0}, 2), SeedOfChain({1, 1}, 2));
}

TEST(SeedOfChainTest, ManyChainsDiffer) {
  std::set<std::pair<std::uint32_t, std::uint32_t>> seeds;
  for (std::uint32_t chain = 1; chain <= 9999; ++chain) {
    const SeedWords seed = SeedOfChain({3, 5}, chain);
    EXPECT_TRUE(seeds.emplace(seed.z, seed.w).second) << chain;
  }
}

TEST(SeedOfChainTest, StridesSpreadChainsOverTheCircle) {
  // The places of n chains on the circle, and the smallest gap between two: for golden strides more
  // than 0.38 / n of the circle.
  for (const std::uint64_t count : {2U, 4U, 8U, 20U, 100U}) {
    for (const auto& [stride, modulus] :
         {std::pair(kStrideZ, kModulusZ), std::pair(kStrideW, kModulusW)}) {
      const std::uint64_t circle = (modulus - 1) / 2;
      std::vector<std::uint64_t> places;
      for (std::uint64_t chain = 0; chain < count; ++chain) {
        places.push_back(chain * stride % circle);
      }
      std::sort(places.begin(), places.end());
      std::uint64_t gap = circle - places.back();
      for (std::size_t i = 1; i < places.size(); ++i) {
        gap = std::min(gap, places[i] - places[i - 1]);
      }
      EXPECT_GT(static_cast<double>(gap) * static_cast<double>(count),
                0.38 * static_cast<double>(circle))
          << count;
    }
  }
}

}  // namespace
}  // namespace Vell
