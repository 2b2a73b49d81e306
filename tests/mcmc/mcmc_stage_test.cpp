#include "mcmc/mcmc_stage.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/random/random_generator.h"
#include "mcmc/runs.h"
#include "support/data_sets.h"
#include "support/files.h"
#include "support/outcome.h"

namespace {

using Hovar::CoefficientEstimates;
using Hovar::Model;
using Hovar::RegressionResults;
using Testing::MakeDataSet;
using Testing::Observe;
using Testing::Outcome;
using Vell::RandomGenerator;

/// One missing X cell with either Z and one missing P cell, all with Y = 1.
constexpr const char* kText =
    "A 1 0 0 .\nA 1 0 1 .\nA 1 . 0 1\nA 0 0 0 1\nA 0 0 1 0\nB 1 0 1 1\nB 0 0 0 0\nB 1 0 1 1\n";

RegressionResults MakeResults(double pIntercept, double prior0, double prior1) {
  RegressionResults results;
  results.Block(Model::kPGivenX) = CoefficientEstimates(2);
  results.Block(Model::kPGivenX)[0].estimate = pIntercept;
  results.xzTables.Append({.probability = {prior0, prior1}});
  return results;
}

class McmcStageTest : public testing::Test {
 protected:
  Hovar::HBModelSettings MakeSettings(bool isCorrelated) const {
    return {.regression = {isCorrelated ? Hovar::WorkingCorrelation::kExchangeable
                                        : Hovar::WorkingCorrelation::kIndependent,
                           {.tolerance = 1e-9, .maxIterations = 50, .priorPrecision = 1}},
            .mcmc = {.thinning = 1, .burnin = 1, .steps = 3},
            .chainFolder = Vell::String(scratch_.File("mcmc"))};
  }

  Testing::ScratchFolder scratch_;
};

TEST_F(McmcStageTest, StoresTheResultTableAsTheFifthBlock) {
  const Vell::Vector pGivenX(2);
  Vell::Vector priorTable(2);
  priorTable[0] = 0.4;
  priorTable[1] = 0.7;
  for (const bool isCorrelated : {false, true}) {
    const Hovar::HBModelSettings settings = MakeSettings(isCorrelated);
    Hovar::DataSet data = MakeDataSet(kText);
    Hovar::HBModel model(data, pGivenX, priorTable, settings);
    RandomGenerator::Reset();
    RandomGenerator::Seed(3, 4);
    const Outcome alone = Observe([&] { model.Run(); });

    data = MakeDataSet(kText);
    RegressionResults results = MakeResults(0, 0.4, 0.7);
    RandomGenerator::Reset();
    RandomGenerator::Seed(3, 4);
    const Outcome outcome = Observe([&] { RunMcmcStage(results, data, settings); });
    EXPECT_EQ(outcome.raised, "");
    EXPECT_EQ(Testing::WithoutSeconds(outcome.output),
              (isCorrelated ? "MCMC Analysis GEE:\n" : "MCMC Analysis\n") +
                  Testing::WithoutSeconds(alone.output));
    const CoefficientEstimates& block = results.Block(Model::kYGivenXWithoutPMcmc);
    ASSERT_EQ(block.Size(), 2);
    for (std::int32_t i = 0; i < 2; ++i) {
      EXPECT_EQ(block[i].estimate, model.ResultTable()(i, 0));
      EXPECT_EQ(block[i].modelStandardError, model.ResultTable()(i, 1));
      EXPECT_EQ(block[i].empiricalStandardError, model.ResultTable()(i, 2));
    }
    EXPECT_TRUE(scratch_.Has("mcmc/Chain.csv"));
    EXPECT_TRUE(scratch_.Has("mcmc/Summary.csv"));
  }
}

// The tables are the priors of X, and the estimates of [P|X] decide P.
TEST_F(McmcStageTest, ImputesWithTheTablesAndTheEstimatesOfP) {
  const Hovar::HBModelSettings settings = MakeSettings(false);
  const std::string rest = "A 0 0 0 1\nA 0 0 1 0\nB 1 0 1 1\nB 0 0 0 0\nB 1 0 1 1\n";
  Hovar::DataSet data = MakeDataSet(kText);
  RegressionResults results = MakeResults(-800, 0, 1);
  Observe([&] { RunMcmcStage(results, data, settings); });
  EXPECT_EQ(Testing::Describe(data), "A 1 0 0 .\nA 1 0 1 *\nA 1 . 0 1\n" + rest);

  data = MakeDataSet(kText);
  results = MakeResults(800, 1, 0);
  Observe([&] { RunMcmcStage(results, data, settings); });
  EXPECT_EQ(Testing::Describe(data), "A 1 0 0 *\nA 1 0 1 .\nA 1 * 0 1\n" + rest);
}

TEST_F(McmcStageTest, HeadingComesBeforeAnError) {
  Hovar::HBModelSettings settings = MakeSettings(false);
  settings.mcmc.thinning = 0;
  Hovar::DataSet data = MakeDataSet(kText);
  RegressionResults results = MakeResults(0, 0.5, 0.5);
  const Outcome outcome = Observe([&] { RunMcmcStage(results, data, settings); });
  EXPECT_EQ(outcome.Failure(), "InvalidArgumentException: Invalid argument");
  EXPECT_EQ(outcome.output, "MCMC Analysis\n");
  EXPECT_FALSE(scratch_.Has("mcmc"));
}

}  // namespace
