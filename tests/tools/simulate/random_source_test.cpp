// The random numbers of the data generator.

#include "random_source.h"

#include <gtest/gtest.h>

#include <array>

#include "studies.h"

namespace Hovar::Simulate {
namespace {

TEST(RandomSourceTest, WordsAreThoseOfThePublishedGenerators) {
  // Computed by a separate implementation of the two generators' recurrences in Python, whose
  // 10000th word from the default seed 5489 was checked to be 9981545732273789042.
  RandomSource first(1, Purpose::kVariables);
  EXPECT_EQ(first.Word(), 0x884fa46695b1825bULL);
  EXPECT_EQ(first.Word(), 0xe487e49e27adbc38ULL);
  RandomSource second(2, Purpose::kRecords);
  EXPECT_EQ(second.Word(), 0xa30af8957506e51bULL);
  RandomSource last(18446744073709551615ULL, Purpose::kWarnings);
  EXPECT_EQ(last.Word(), 0x287bbb1ba959858bULL);
}

TEST(RandomSourceTest, ThresholdsAreProbabilitiesTimesTwoToThe64) {
  EXPECT_EQ(Threshold(0.5), 0x8000000000000000ULL);
  EXPECT_EQ(Threshold(0.25), 0x4000000000000000ULL);
  EXPECT_EQ(Threshold(std::ldexp(1.0, -64)), 1ULL);
  EXPECT_EQ(Threshold(1.0 - std::ldexp(1.0, -53)), 0xFFFFFFFFFFFFF800ULL);
  EXPECT_EQ(Threshold(0.0), 0ULL);
  EXPECT_EQ(Threshold(-0.5), 0ULL);
  EXPECT_EQ(Threshold(std::nan("")), 0ULL);
  EXPECT_EQ(Threshold(1.0), 0xFFFFFFFFFFFFFFFFULL);
  EXPECT_EQ(Threshold(INFINITY), 0xFFFFFFFFFFFFFFFFULL);
}

TEST(RandomSourceTest, BelowIsUniform) {
  RandomSource random(5, Purpose::kRecords);
  std::array<std::int64_t, 7> counts{};
  for (int i = 0; i < 70000; ++i) {
    const std::uint64_t number = random.Below(counts.size());
    ASSERT_LT(number, counts.size());
    ++counts[static_cast<std::size_t>(number)];
  }
  for (const std::int64_t count : counts) {
    ExpectShare(count, 70000, 1.0 / 7.0, "one of seven numbers");
  }
}

TEST(RandomSourceTest, BelowDrawsSurplusWordsAgain) {
  // Without that, the words from 5 * 2^61 on would be folded onto the numbers below 3 * 2^61, and
  // these would have the chance 3/4 instead of 3/5.
  const std::uint64_t count = 5ULL << 61;
  RandomSource random(6, Purpose::kRecords);
  std::int64_t low = 0;
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t number = random.Below(count);
    ASSERT_LT(number, count);
    low += number < (3ULL << 61) ? 1 : 0;
  }
  ExpectShare(low, 20000, 0.6, "low numbers");
}

TEST(RandomSourceTest, NormalHasTheSharesOfTheNormalDistribution) {
  RandomSource random(7, Purpose::kHospitals);
  constexpr int kDraws = 100000;
  std::array<std::int64_t, 5> below{};
  constexpr std::array<double, 5> kQuantiles = {-1.5, -0.5, 0.0, 1.0, 2.0};
  for (int i = 0; i < kDraws; ++i) {
    const double number = random.Normal();
    for (std::size_t k = 0; k < below.size(); ++k) {
      below[k] += number < kQuantiles[k] ? 1 : 0;
    }
  }
  for (std::size_t k = 0; k < below.size(); ++k) {
    const double share = 0.5 * std::erfc(-kQuantiles[k] / std::sqrt(2.0));
    ExpectShare(below[k], kDraws, share, "below " + std::to_string(kQuantiles[k]));
  }
}

}  // namespace
}  // namespace Hovar::Simulate
