#include "diagnostics/convergence.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <string>

#include "support/files.h"

namespace Hovar {
namespace {

std::map<std::string, Chains> StoredChains() {
  std::map<std::string, Chains> sets;
  const auto rows = Testing::ReadCsv(Testing::ReferenceFile("convergence_draws.csv"));
  for (std::size_t i = 1; i < rows.size(); ++i) {
    Chains& chains = sets[rows[i][0]];
    chains.resize(std::max(chains.size(), std::size_t{std::stoul(rows[i][1])}));
    chains[std::stoul(rows[i][1]) - 1].push_back(std::strtod(rows[i][2].c_str(), nullptr));
  }
  return sets;
}

void ExpectEqual(double value, const std::string& expected) {
  if (expected == "nan") {
    EXPECT_TRUE(std::isnan(value)) << value;
  } else {
    const double number = std::strtod(expected.c_str(), nullptr);
    EXPECT_NEAR(value, number, 1e-9 * std::fabs(number));
  }
}

// The script is tests/reference/convergence.R.
TEST(ConvergenceTest, AgreesWithThePackagePosteriorOnStoredChains) {
  const std::map<std::string, Chains> sets = StoredChains();
  const auto rows = Testing::ReadCsv(Testing::ReferenceFile("convergence.csv"));
  ASSERT_EQ(rows.size(), sets.size() + 1);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    SCOPED_TRACE(rows[i][0]);
    const Convergence convergence = JudgeConvergence(sets.at(rows[i][0]));
    ExpectEqual(convergence.rhat, rows[i][1]);
    ExpectEqual(convergence.bulkSampleSize, rows[i][2]);
    ExpectEqual(convergence.tailSampleSize, rows[i][3]);
  }
}

TEST(ConvergenceTest, WhatCannotBeToldIsNotANumber) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<Chains> cases{{},
                                  {{}, {}},
                                  {{1, 2, 3}, {2, 1, 3}},
                                  {{1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1}},
                                  {{1, 2, 3, 4, infinity, 6, 7, 8}},
                                  {{1, 2, 3, 4, nan, 6, 7, 8}}};
  for (const Chains& chains : cases) {
    const Convergence convergence = JudgeConvergence(chains);
    EXPECT_TRUE(std::isnan(convergence.rhat));
    EXPECT_TRUE(std::isnan(convergence.bulkSampleSize));
    EXPECT_TRUE(std::isnan(convergence.tailSampleSize));
    EXPECT_FALSE(convergence.IsGood());
  }
}

TEST(ConvergenceTest, TheScaleDoesNotMatter) {
  // Eight times each draw is exact and keeps all ranks.
  Chains chains = StoredChains().at("slow");
  const Convergence before = JudgeConvergence(chains);
  for (std::vector<double>& chain : chains) {
    for (double& value : chain) {
      value = 8 * value;
    }
  }
  const Convergence after = JudgeConvergence(chains);
  EXPECT_EQ(after.rhat, before.rhat);
  EXPECT_EQ(after.bulkSampleSize, before.bulkSampleSize);
  EXPECT_EQ(after.tailSampleSize, before.tailSampleSize);
}

TEST(ConvergenceTest, HalvesThatDoNotDifferCannotBeJudged) {
  // Of an odd number of draws the one in the middle belongs to no half.
  const Convergence judged = JudgeConvergence({{1, 1, 2, 1, 1}, {1, 1, 2, 1, 1}});
  EXPECT_TRUE(std::isnan(judged.rhat));
  EXPECT_TRUE(std::isnan(judged.bulkSampleSize));
  EXPECT_FALSE(judged.IsGood());
}

TEST(ConvergenceTest, WithoutChainsNothingCanBeJudged) {
  EXPECT_TRUE(std::isnan(JudgeConvergence({}).rhat));
}

TEST(ConvergenceTest, TheThresholdsAreMetInclusively) {
  EXPECT_TRUE((Convergence{1.01, 400, 400}.IsGood()));
  EXPECT_FALSE((Convergence{1.0101, 400, 400}.IsGood()));
  EXPECT_FALSE((Convergence{1.01, 399.9, 400}.IsGood()));
  EXPECT_FALSE((Convergence{1.01, 400, 399.9}.IsGood()));
}

TEST(RhatTest, AgreesWithThePackagePosterior) {
  // R: posterior:::.rhat, and sqrt((B / W + 9) / 10) with var and colMeans.
  EXPECT_NEAR(Rhat({{0.3, 1.2, -0.4, 0.9, 2.0, 1.1, 0.2, -0.6, 0.5, 1.6},
                    {1.0, 0.1, -1.3, -0.2, 0.8, 0.4, 1.5, 0.7, -0.9, 0.6}}),
              1.0080798265124351, 1e-14);
}

TEST(RhatTest, EqualDrawsHaveNone) { EXPECT_TRUE(std::isnan(Rhat({{2, 2, 2}, {2, 2, 2}}))); }

}  // namespace
}  // namespace Hovar
