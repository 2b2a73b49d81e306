#include "regression/regression_results.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/matrices.h"

namespace {

using Hovar::CoefficientEstimate;
using Hovar::CoefficientEstimates;
using Hovar::RegressionResults;

TEST(RegressionResultsTest, NewEstimatesHaveNoStandardErrors) {
  const CoefficientEstimates estimates(2);
  for (const CoefficientEstimate& estimate : estimates) {
    EXPECT_EQ(estimate.estimate, 0.0);
    EXPECT_EQ(estimate.modelStandardError, -1.0);
    EXPECT_EQ(estimate.empiricalStandardError, -1.0);
  }
}

TEST(RegressionResultsTest, EstimateVectorHoldsTheEstimates) {
  CoefficientEstimates block(3);
  block[0].estimate = -1.5;
  block[1].estimate = 2;
  block[2].modelStandardError = 9;
  EXPECT_EQ(Testing::Elements(Hovar::EstimateVector(block)), (std::vector<double>{-1.5, 2, 0}));
  EXPECT_EQ(Hovar::EstimateVector({}).Size(), 0);
}

TEST(RegressionResultsTest, PriorTableHasTwoEntriesForEachVariableBehindTheIntercept) {
  RegressionResults results;
  results.xzTables.Append({.probability = {0.125, 0.25}});
  results.xzTables.Append({.probability = {0.5, 0.75}});
  EXPECT_EQ(Testing::Elements(PriorTable(results, 3)),
            (std::vector<double>{0.125, 0.25, 0.5, 0.75}));
  EXPECT_EQ(PriorTable(results, 1).Size(), 0) << "the intercept has no prior";
  // A file that was read back has one table more than there are priors.
  results.xzTables.Append({});
  EXPECT_EQ(PriorTable(results, 3).Size(), 4);
}

TEST(RegressionResultsTest, BlocksStandInTheOrderOfTheModels) {
  RegressionResults results;
  results.Block(Hovar::Model::kYGivenX) = CoefficientEstimates(7);
  EXPECT_EQ(results.blocks[2].Size(), 7);
  EXPECT_EQ(Hovar::kModelLabels[2], "[Y|X]");
  EXPECT_EQ(Hovar::kModelLabels[static_cast<std::size_t>(Hovar::Model::kYGivenXWithoutPMcmc)],
            "[Y|X,P=0,MCMC]");
}

}  // namespace
