#include "diagnostics/effective_sample_size.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

namespace Hovar {
namespace {

const Chains& Example() {
  static const Chains kChains{{0.3, 1.2, -0.4, 0.9, 2.0, 1.1, 0.2, -0.6, 0.5, 1.6},
                              {1.0, 0.1, -1.3, -0.2, 0.8, 0.4, 1.5, 0.7, -0.9, 0.6}};
  return kChains;
}

TEST(AutocovariancesTest, AgreeWithR) {
  // R: acf(x, type = "covariance", lag.max = 9)
  const Draws expected{0.62960, 0.03256,  -0.30708, -0.21632, 0.01024,
                       0.21480, -0.00864, -0.06008, 0.05468,  -0.03496};
  const Draws covariances = Autocovariances(Example()[0]);
  ASSERT_EQ(covariances.size(), expected.size());
  for (std::size_t lag = 0; lag < expected.size(); ++lag) {
    EXPECT_NEAR(covariances[lag], expected[lag], 1e-15) << lag;
  }
}

TEST(AutocovariancesTest, OfEqualDrawsAreZero) {
  EXPECT_EQ(Autocovariances({0.5, 0.5, 0.5}), (Draws{0, 0, 0}));
}

TEST(EffectiveSampleSizeTest, AgreesWithThePackagePosterior) {
  // R: posterior:::.ess and posterior::ess_tail
  EXPECT_NEAR(EffectiveSampleSize(Example()), 17.478129546022092, 1e-12);
  EXPECT_NEAR(TailEffectiveSampleSize(Example()), 10, 1e-12);
}

TEST(EffectiveSampleSizeTest, AlternatingDrawsAreWorthMoreWithinALimit) {
  Chains chains(2);
  for (int i = 1; i <= 40; ++i) {
    const int sign = i % 2 == 0 ? 1 : -1;
    chains[0].push_back(sign * i);
    chains[1].push_back(sign * (41 - i));
  }
  EXPECT_DOUBLE_EQ(EffectiveSampleSize(chains), 80 * std::log10(80));
}

TEST(EffectiveSampleSizeTest, TooFewOrEqualDrawsHaveNone) {
  EXPECT_TRUE(std::isnan(EffectiveSampleSize({{1, 2}, {2, 3}})));
  EXPECT_TRUE(std::isnan(EffectiveSampleSize({{1, 1, 1}, {1, 1, 1}})));
  // No draw but one is above the 95 % quantile: the halves without it do not differ.
  EXPECT_TRUE(std::isnan(TailEffectiveSampleSize({{1, 1, 2, 1, 1}, {1, 1, 2, 1, 1}})));
}

}  // namespace
}  // namespace Hovar
