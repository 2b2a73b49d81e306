#include "tools/run/run_lines.h"

#include <gtest/gtest.h>

namespace Hovar {
namespace {

RunLines Taken(std::initializer_list<const char*> lines) {
  RunLines taken;
  for (const char* line : lines) {
    taken.Take(line);
  }
  taken.End();
  return taken;
}

constexpr const char* kLimit = "Warning: Maximum number of iterations reached";

TEST(RunLinesTest, AWarningBelongsToTheFitBeforeIt) {
  const RunLines lines =
      Taken({"Target platform: 64-bit", "Reading data file...", "Regression analysis", "[P|X]",
             "[Y|Z]", kLimit, "[Y|X]", kLimit, "[Y|X,P=0]", "MCMC Analysis"});
  ASSERT_EQ(lines.Runs().size(), 1U);
  const std::vector<RunWarning>& warnings = lines.Runs()[0].warnings;
  ASSERT_EQ(warnings.size(), 2U);
  EXPECT_EQ(warnings[0].text, kLimit);
  EXPECT_EQ(warnings[0].fit, "[Y|Z]");
  EXPECT_EQ(warnings[0].count, 1);
  EXPECT_EQ(warnings[0].burninCount + warnings[0].mainCount, 0);
  EXPECT_EQ(warnings[1].fit, "[Y|X]");
  EXPECT_EQ(lines.WarningCount(), 2);
}

TEST(RunLinesTest, LinesBeforeTheFirstRunMakeOne) {
  const RunLines lines = Taken({kLimit});
  ASSERT_EQ(lines.Runs().size(), 1U);
  EXPECT_EQ(lines.Runs()[0].stage, Stage::kReading);
  ASSERT_EQ(lines.Runs()[0].warnings.size(), 1U);
  EXPECT_EQ(lines.Runs()[0].warnings[0].fit, "");
}

TEST(RunLinesTest, RecordsAreCollected) {
  const RunLines lines =
      Taken({"Reading data file...", "Reading data...",
             "Warning: Y == 0 && P == 1 data in record: 201 - setting P equal to 0",
             "Warning: Y == 0 && P == 1 data in record: 1693 - setting P equal to 0"});
  ASSERT_EQ(lines.Runs()[0].warnings.size(), 1U);
  const RunWarning& warning = lines.Runs()[0].warnings[0];
  EXPECT_EQ(warning.text, "Warning: Y == 0 && P == 1 data in record");
  EXPECT_EQ(warning.fit, "");
  EXPECT_EQ(warning.count, 2);
  EXPECT_EQ(warning.records, (std::vector<std::int64_t>{201, 1693}));
}

TEST(RunLinesTest, WarningsOfTheChainAreCountedByPhase) {
  // A warning stands before the line of its own iteration.
  const RunLines lines = Taken({"Reading data file...", "MCMC Analysis", "Burnin: 1 Intercept: 0 ",
                                kLimit, "Burnin: 2 Intercept: 0 ", kLimit,
                                "Burnin: 3 Intercept: 0 ", "", "MCMC: 3 iterations in 0.1 seconds",
                                "", kLimit, "Mcmc: 1 Intercept: 0 ", "Mcmc: 2 Intercept: 0 "});
  ASSERT_EQ(lines.Runs()[0].warnings.size(), 1U);
  const RunWarning& warning = lines.Runs()[0].warnings[0];
  EXPECT_EQ(warning.fit, "[Y|X,P=0,MCMC]");
  EXPECT_EQ(warning.count, 3);
  EXPECT_EQ(warning.burninCount, 2);
  EXPECT_EQ(warning.firstBurnin, 2);
  EXPECT_EQ(warning.mainCount, 1);
  EXPECT_EQ(warning.firstMain, 1);
}

TEST(RunLinesTest, AFailedVarianceIsAWarningWithItsReason) {
  const RunLines lines =
      Taken({"Reading data file...",
             "MCMC Analysis GEE:", "Error: Non positive matrix in Cholesky decomposition",
             "Exception: Empirical variance", "Mcmc: 1 Intercept: 0 "});
  EXPECT_EQ(lines.Error(), "");
  ASSERT_EQ(lines.Runs()[0].warnings.size(), 1U);
  EXPECT_EQ(lines.Runs()[0].warnings[0].text, "Exception: Empirical variance");
  EXPECT_EQ(lines.Runs()[0].warnings[0].reason,
            "Error: Non positive matrix in Cholesky decomposition");
  EXPECT_EQ(lines.Runs()[0].warnings[0].mainCount, 1);
}

TEST(RunLinesTest, AnIterationThatWasNotFinishedCountsInNeitherPhase) {
  const RunLines lines = Taken({"Reading data file...", "MCMC Analysis", "Mcmc: 1 Intercept: 0 ",
                                kLimit, "Error: Out of memory"});
  EXPECT_EQ(lines.Error(), "Error: Out of memory");
  ASSERT_EQ(lines.Runs()[0].warnings.size(), 1U);
  EXPECT_EQ(lines.Runs()[0].warnings[0].count, 1);
  EXPECT_EQ(lines.Runs()[0].warnings[0].mainCount, 0);
}

TEST(RunLinesTest, EachRunOfABatchHasItsOwnWarnings) {
  const RunLines lines =
      Taken({"Target platform: 64-bit", "Reading data file...", "[P|X]", kLimit, "MCMC Analysis",
             kLimit, "Burnin: 1 Intercept: 0 ", "Reading data file...", "[P|X]", kLimit});
  ASSERT_EQ(lines.Runs().size(), 2U);
  EXPECT_EQ(lines.Runs()[0].warnings.size(), 2U);
  ASSERT_EQ(lines.Runs()[1].warnings.size(), 1U);
  EXPECT_EQ(lines.Runs()[1].warnings[0].fit, "[P|X]");
}

TEST(RunLinesTest, TellsHowFarAnAnalysisIs) {
  RunLines lines;
  lines.Take("Target platform: 64-bit");
  EXPECT_TRUE(lines.Runs().empty());
  lines.Take("Reading data file...");
  lines.Take("Hospital: a record: 7 / 8 record: 204 / 5000");
  EXPECT_EQ(lines.Runs()[0].recordsRead, 204);
  EXPECT_EQ(lines.Runs()[0].recordCount, 5000);
  lines.Take("[P|X]");
  lines.Take("[Y|Z]");
  EXPECT_EQ(lines.Runs()[0].stage, Stage::kFits);
  EXPECT_EQ(lines.Runs()[0].fitsBegun, 2);
  lines.Take("Burnin: 12 Intercept: -2.3 ");
  EXPECT_EQ(lines.Runs()[0].burninDone, 12);
  lines.Take("Mcmc: 3 Intercept: -2.3 ");
  EXPECT_EQ(lines.Runs()[0].stage, Stage::kMcmc);
  EXPECT_EQ(lines.Runs()[0].mcmcDone, 3);
}

TEST(RunLinesTest, TellsHowFarAPredictionIs) {
  const RunLines lines = Taken(
      {"Reading data file...", "Calculating individual predictions", "0/2", "1/2", "1/3", "2/3"});
  EXPECT_EQ(lines.Runs()[0].stage, Stage::kPasses);
  EXPECT_EQ(lines.Runs()[0].passesBegun, 4);
  EXPECT_EQ(Taken({"Reading data file...", "1/x", "/3", "1/3 "}).Runs()[0].passesBegun, 0);
}

TEST(RunLinesTest, CarriageReturnsAtTheEndAreNotLookedAt) {
  EXPECT_EQ(Taken({"Reading data file...\r", "[P|X]\r"}).Runs()[0].fit, "[P|X]");
}

}  // namespace
}  // namespace Hovar
