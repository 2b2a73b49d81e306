// The Metropolis steps of a scalar and of a vector, and the statistics of a value.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "foundation/random/random_generator.h"
#include "mcmc/toy_model.h"
#include "mcmc/variable_statistics.h"

namespace {

using Testing::Calls;
using Testing::ToyScalar;
using Testing::ToyVector;
using Vell::RandomGenerator;
using Vell::Mcmc::VariableStatistics;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct AcceptanceCase {
  double probability;
  bool isAccepted;
};

/// Probabilities that are answered without a draw.
const std::vector<AcceptanceCase> kWithoutDraw = {
    {0.0, false},  {-0.0, false}, {-1.0, false}, {-kInfinity, false},
    {kNaN, false}, {1.0, true},   {1.5, true},   {kInfinity, true},
};

TEST(McmcScalarTest, ProbabilityOutsideOfZeroToOneNeedsNoDraw) {
  for (const AcceptanceCase& c : kWithoutDraw) {
    RandomGenerator::Seed(5, 6);
    const std::uint32_t first = RandomGenerator::NextWord();
    RandomGenerator::Seed(5, 6);
    Calls calls;
    ToyScalar scalar(calls, "a", false);
    scalar.probability = [&](int) { return c.probability; };
    scalar.Step();
    EXPECT_EQ(scalar.Value(), c.isAccepted ? 1 : 0) << c.probability;
    EXPECT_EQ(RandomGenerator::NextWord(), first) << c.probability;
  }
}

TEST(McmcScalarTest, ProbabilityIsComparedWithOneWord) {
  RandomGenerator::Seed(7, 8);
  const double u = RandomGenerator::NextWord() * 0x1p-32;
  const std::uint32_t second = RandomGenerator::NextWord();
  // Accepted only when the probability is above the draw.
  for (const AcceptanceCase& c : std::vector<AcceptanceCase>{
           {u, false}, {std::nextafter(u, 1), true}, {u / 2, false}, {0.5 + u / 2, true}}) {
    RandomGenerator::Seed(7, 8);
    Calls calls;
    ToyScalar scalar(calls, "a", false);
    scalar.probability = [&](int) { return c.probability; };
    scalar.Step();
    EXPECT_EQ(scalar.Value(), c.isAccepted ? 1 : 0) << c.probability;
    EXPECT_EQ(RandomGenerator::NextWord(), second) << c.probability;
  }
}

TEST(McmcScalarTest, RejectedProposalLeavesTheValue) {
  Calls calls;
  ToyScalar scalar(calls, "a", false);
  scalar.probability = [](int step) { return step % 2 == 0 ? 1.0 : 0.0; };
  std::vector<double> values;
  for (int step = 1; step <= 5; ++step) {
    scalar.Step();
    values.push_back(scalar.Value());
  }
  EXPECT_EQ(values, (std::vector<double>{0, 2, 2, 4, 4}));
}

/// A vector of three components in a model, which initialises it.
class McmcVectorTest : public testing::Test {
 protected:
  void SetUp() override { vector_.Initialize(); }

  std::vector<double> Values() const { return {vector_.Values().begin(), vector_.Values().end()}; }

  ToyVector vector_{"v", 3, false};
};

TEST_F(McmcVectorTest, StartsAtZeros) { EXPECT_EQ(Values(), (std::vector<double>{0, 0, 0})); }

TEST_F(McmcVectorTest, ProposalIsAcceptedOrRejectedAsOneBlock) {
  vector_.probability = [](int step) { return step == 2 ? 0.0 : 1.0; };
  vector_.Step();
  EXPECT_EQ(Values(), (std::vector<double>{1, 2, 3}));
  vector_.Step();
  EXPECT_EQ(Values(), (std::vector<double>{1, 2, 3}));
  vector_.Step();
  EXPECT_EQ(Values(), (std::vector<double>{3, 6, 9}));
  // OnAccept sees the proposal before it becomes the value.
  EXPECT_EQ(vector_.accepted,
            (std::vector<std::vector<double>>{{1, 2, 3}, {0, 0, 0}, {3, 6, 9}, {1, 2, 3}}));
}

TEST_F(McmcVectorTest, BlockTakesOneDraw) {
  for (const AcceptanceCase& c : kWithoutDraw) {
    RandomGenerator::Seed(5, 6);
    const std::uint32_t first = RandomGenerator::NextWord();
    RandomGenerator::Seed(5, 6);
    ToyVector vector("v", 3, false);
    vector.Initialize();
    vector.probability = [&](int) { return c.probability; };
    vector.Step();
    EXPECT_EQ(vector.Values()[2], c.isAccepted ? 3 : 0) << c.probability;
    EXPECT_EQ(RandomGenerator::NextWord(), first) << c.probability;
  }
  RandomGenerator::Seed(7, 8);
  const double u = RandomGenerator::NextWord() * 0x1p-32;
  const std::uint32_t second = RandomGenerator::NextWord();
  for (const AcceptanceCase& c :
       std::vector<AcceptanceCase>{{u, false}, {std::nextafter(u, 1), true}}) {
    RandomGenerator::Seed(7, 8);
    ToyVector vector("v", 3, false);
    vector.Initialize();
    vector.probability = [&](int) { return c.probability; };
    vector.Step();
    EXPECT_EQ(vector.Values()[0], c.isAccepted ? 1 : 0);
    EXPECT_EQ(RandomGenerator::NextWord(), second);
  }
}

TEST(VariableStatisticsTest, MeanAndVarianceComeFromTheSums) {
  // 1, 2, 4, 9: sum 16, squares 102; variance (102 - 16^2 / 4) / 3 = 38 / 3.
  VariableStatistics statistics;
  statistics.AllocateChain(4);
  std::int32_t row = 0;
  for (const double value : {1, 2, 4, 9}) {
    statistics.Record(value, row++);
  }
  EXPECT_EQ(statistics.Mean(4), 4);
  EXPECT_EQ(statistics.Variance(4), 38.0 / 3);
  EXPECT_EQ(std::vector<double>(statistics.chain.begin(), statistics.chain.end()),
            (std::vector<double>{1, 2, 4, 9}));
}

TEST(VariableStatisticsTest, TooFewValuesGiveZero) {
  VariableStatistics statistics;
  EXPECT_EQ(statistics.Mean(0), 0);
  EXPECT_EQ(statistics.Variance(0), 0);
  statistics.Record(5, 0);
  EXPECT_EQ(statistics.Mean(1), 5);
  EXPECT_EQ(statistics.Variance(1), 0);
}

TEST(VariableStatisticsTest, AcceptanceIsPerIteration) {
  VariableStatistics statistics;
  statistics.accepted = 6;
  EXPECT_EQ(statistics.Acceptance(4, 3), 0.5);
  EXPECT_EQ(statistics.Acceptance(2, 2), 1.5) << "also of iterations that were not recorded";
  EXPECT_EQ(statistics.Acceptance(0, 3), 0);
  EXPECT_EQ(statistics.Acceptance(4, -3), 0);
}

TEST(VariableStatisticsTest, ResetKeepsTheChainBuffer) {
  VariableStatistics statistics;
  statistics.AllocateChain(2);
  statistics.Record(3, 1);
  statistics.accepted = 1;
  statistics.Reset();
  EXPECT_EQ(statistics.sum, 0);
  EXPECT_EQ(statistics.sumOfSquares, 0);
  EXPECT_EQ(statistics.accepted, 0);
  EXPECT_TRUE(statistics.hasChain);
  EXPECT_EQ(statistics.chain.Size(), 2);
}

TEST(VariableStatisticsTest, NegativeBufferIsRefused) {
  VariableStatistics statistics;
  EXPECT_EQ(Testing::Observe([&] { statistics.AllocateChain(-1); }).Failure(),
            "InvalidArgumentException: Invalid argument");
}

}  // namespace
