#include "regression/logistic_kernels.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "foundation/exponential.h"
#include "support/seeded_random.h"
#include "support/width_limit.h"

namespace {

using Hovar::PearsonBlock;
using Hovar::RecordBlock;
using Vell::VectorWidth;

constexpr VectorWidth kWidths[] = {VectorWidth::kPortable, VectorWidth::kAvx2,
                                   VectorWidth::kAvx512};

RecordBlock RandomBlock(Testing::SeededRandom& random, std::int32_t count) {
  RecordBlock block;
  block.count = count;
  for (std::int32_t i = 0; i < count; ++i) {
    const auto at = static_cast<std::size_t>(i);
    const double range = i % 4 == 0 ? 800 : i % 4 == 1 ? 40 : 3;
    block.linearPredictor[at] = random.Real(-range, range);
    block.response[at] = random.Chance(0.5) ? 1 : 0;
  }
  return block;
}

/// The bits of the first `count` values, all NaNs alike.
std::vector<std::uint64_t> BitsOf(const RecordBlock::Values& values, std::int32_t count) {
  std::vector<std::uint64_t> bits;
  for (std::int32_t i = 0; i < count; ++i) {
    const double value = values[static_cast<std::size_t>(i)];
    bits.push_back(std::isnan(value) ? 1 : std::bit_cast<std::uint64_t>(value));
  }
  return bits;
}

TEST(LogisticKernelsTest, EveryVectorWidthGivesTheSameBits) {
  Testing::SeededRandom random(17);
  SCOPED_TRACE(random.Text());
  for (const std::int32_t count : {1, 2, 3, 7, 8, 9, 100, 511, 512}) {
    const RecordBlock start = RandomBlock(random, count);
    std::vector<std::vector<std::uint64_t>> first;
    for (const VectorWidth width : kWidths) {
      const Testing::WidthLimit limit(width);
      RecordBlock independent = start;
      Hovar::EvaluateIndependentTerms(independent);
      RecordBlock exchangeable = start;
      PearsonBlock pearson;
      Hovar::EvaluateExchangeableTerms(exchangeable, pearson);
      const std::vector<std::vector<std::uint64_t>> bits = {
          BitsOf(independent.weight, count),  BitsOf(independent.residual, count),
          BitsOf(exchangeable.weight, count), BitsOf(exchangeable.residual, count),
          BitsOf(pearson.deviation, count),   BitsOf(pearson.pearson, count)};
      if (first.empty()) {
        first = bits;
      }
      EXPECT_EQ(bits, first) << count << " records, width " << static_cast<int>(width);
    }
  }
}

// Against long double arithmetic; each term is a few roundings away from the exact value.
TEST(LogisticKernelsTest, TermsAreThoseOfTheModel) {
  Testing::SeededRandom random(23);
  SCOPED_TRACE(random.Text());
  RecordBlock block = RandomBlock(random, 512);
  for (std::size_t i = 0; i < 512; i += 4) {
    block.linearPredictor[i] /= 20;  // where no term leaves the range of normal numbers
  }
  RecordBlock exchangeable = block;
  PearsonBlock pearson;
  Hovar::EvaluateIndependentTerms(block);
  Hovar::EvaluateExchangeableTerms(exchangeable, pearson);
  const auto expectClose = [](double actual, long double expected) {
    EXPECT_LE(std::fabs(actual - expected), 1e-15L * std::fabs(expected) + 1e-300L);
  };
  for (std::size_t i = 0; i < 512; ++i) {
    const long double eta = block.linearPredictor[i];
    const bool y = block.response[i] == 1;
    const long double mu = 1 / (1 + std::exp(-eta));
    const long double complement = 1 / (1 + std::exp(eta));
    expectClose(block.weight[i], mu * complement);
    expectClose(block.residual[i], y ? complement : -mu);
    expectClose(exchangeable.weight[i], mu * complement);
    expectClose(pearson.deviation[i], std::sqrt(mu * complement));
    EXPECT_EQ(
        exchangeable.residual[i],
        (y ? 1.0 : 0.0) - static_cast<double>(1 / (1 + Vell::Exp(-static_cast<double>(eta)))));
    EXPECT_EQ(pearson.pearson[i], exchangeable.residual[i] / pearson.deviation[i]);
  }
}

TEST(LogisticKernelsTest, WeightVanishesBeyondTheRangeOfTheExponential) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  RecordBlock block;
  block.count = 4;
  block.linearPredictor = {800, -800, kInfinity, -kInfinity};
  block.response = {1, 1, 0, 0};
  Hovar::EvaluateIndependentTerms(block);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(block.weight[i], 0);
  }
  EXPECT_EQ(block.residual[0], 0);  // 1 - mu
  EXPECT_EQ(block.residual[1], 1);
  EXPECT_EQ(block.residual[2], -1);  // -mu
  EXPECT_EQ(block.residual[3], 0);
}

}  // namespace
