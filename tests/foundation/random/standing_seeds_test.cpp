#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "foundation/random/chain_seeds.h"
#include "foundation/random/random_generator.h"

namespace Vell {
namespace {

/// Whether a half of the random words is the same in a thousand of them, drawn from this seed.
bool IsHalfStill(const SeedWords& seed, std::uint32_t mask) {
  RandomGenerator::Seed(seed.z, seed.w);
  const std::uint32_t first = RandomGenerator::NextWord() & mask;
  bool isStill = true;
  for (int i = 0; i < 1000; ++i) {
    isStill = isStill && (RandomGenerator::NextWord() & mask) == first;
  }
  RandomGenerator::Reset();
  return isStill;
}

// A trial of all 2^32 words found the marked ones, and of 0, which the generator takes for 1.
TEST(StandsStillTest, AgreesWithTheGenerator) {
  const std::vector<std::pair<std::uint32_t, bool>> firstWords = {{0, false},
                                                                  {1, false},
                                                                  {2'422'800'382, false},
                                                                  {2'422'800'383, true},
                                                                  {2'422'800'384, false},
                                                                  {1'179'647'999, false},
                                                                  {4'294'967'295, false}};
  for (const auto& [word, isStill] : firstWords) {
    EXPECT_EQ(StandsStill(word, RandomGenerator::kMultiplierZ), isStill) << word;
    EXPECT_EQ(IsHalfStill({word, 5}, 0xFFFF0000), isStill) << word;
  }
  const std::vector<std::pair<std::uint32_t, bool>> secondWords = {{0, false},
                                                                   {1, false},
                                                                   {1'179'647'998, false},
                                                                   {1'179'647'999, true},
                                                                   {1'179'648'000, false},
                                                                   {2'359'295'997, false},
                                                                   {2'359'295'998, true},
                                                                   {2'359'295'999, false},
                                                                   {3'538'943'996, false},
                                                                   {3'538'943'997, true},
                                                                   {3'538'943'998, false},
                                                                   {2'422'800'383, false},
                                                                   {4'294'967'295, false}};
  for (const auto& [word, isStill] : secondWords) {
    EXPECT_EQ(StandsStill(word, RandomGenerator::kMultiplierW), isStill) << word;
    EXPECT_EQ(IsHalfStill({3, word}, 0xFFFF), isStill) << word;
  }
}

TEST(StandsStillTest, NoPointLiesWithinTheCircleFromSuchAFirstWord) {
  // The polar method takes two words for a point in the square from -1 to 1 and draws again outside
  // the unit circle. With high bits of all ones both coordinates are above 0.9999.
  RandomGenerator::Seed(2'422'800'383, 5);
  for (int i = 0; i < 100'000; ++i) {
    ASSERT_GE(RandomGenerator::NextWord(), 0xFFFF0000U);
  }
  RandomGenerator::Reset();
}

}  // namespace
}  // namespace Vell
