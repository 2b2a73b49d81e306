#include "profiling/pooling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "model_studies.h"

namespace {

using Hovar::EffectFit;
using Hovar::MeanModel;
using Hovar::PooledEstimate;
using Testing::ModelStudy;

// By hand: estimates 1, 2 and 6 with variances 0.5, 1 and 1.5 have the mean 3, the variance within 1
// and between 7, in all 1 + 4/3 * 7 = 31/3, and (28/3 / (31/3))^-2 * 2 = 2.4515 degrees of freedom.
TEST(PooledEstimateTest, VarianceAndDegreesFollowRubin) {
  PooledEstimate pooled;
  pooled.Add(1, 0.5);
  pooled.Add(2, 1);
  PooledEstimate other;
  other.Add(6, 1.5);
  pooled.Add(other);
  EXPECT_DOUBLE_EQ(pooled.Mean(), 3);
  EXPECT_DOUBLE_EQ(pooled.Variance(), 31.0 / 3);
  EXPECT_NEAR(pooled.Degrees(), 2 * std::pow(31.0 / 28, 2), 1e-12);
  // R: qt(0.975, 2 * (31 / 28)^2), 2 * pt(-3 / sqrt(31 / 3), 2 * (31 / 28)^2)
  const double reach = pooled.Limits95().upper - 3;
  EXPECT_NEAR(reach / std::sqrt(31.0 / 3), 3.62573068204, 1e-6);
  EXPECT_NEAR(pooled.P(), 0.433188897256, 1e-8);
}

TEST(PooledEstimateTest, OneStudyHasItsOwnVarianceAndANormalDistribution) {
  PooledEstimate pooled;
  EXPECT_TRUE(std::isnan(pooled.Mean()));
  EXPECT_TRUE(std::isnan(pooled.P()));
  pooled.Add(0.3, 0.04);
  EXPECT_DOUBLE_EQ(pooled.Variance(), 0.04);
  EXPECT_NEAR(pooled.Limits95().upper, 0.3 + 0.2 * 1.959963984540054, 1e-9);
  EXPECT_NEAR(pooled.P(), 0.13361440253771584, 1e-9);  // R: 2 * pnorm(-1.5)
}

struct Tested {
  Hovar::TauGrid grid;
  Hovar::TauTest test;
  double ownStatistic = 0;
};

Tested TestOf(const std::vector<ModelStudy>& studies) {
  Tested tested;
  for (const ModelStudy& study : studies) {
    const EffectFit fit = Hovar::FitEffects(study.Outcomes(), {}, MeanModel::kPlain);
    const EffectFit none = Hovar::FitMeans(study.Outcomes(), {}, MeanModel::kPlain);
    if (&study == &studies.front()) {
      tested.grid = Hovar::MakeTauGrid(study.Outcomes(), fit, MeanModel::kPlain);
    }
    tested.test.Add(
        fit, none, Hovar::MakeHyperPosterior(study.Outcomes(), tested.grid, fit, MeanModel::kPlain),
        MeanModel::kPlain);
    tested.ownStatistic = 2 * (fit.logLikelihood - none.logLikelihood);
  }
  return tested;
}

// Studies that are all the same leave nothing unknown: half the tail of chi-squared, one degree.
TEST(TauTestTest, EqualStudiesGiveTheLikelihoodRatioOfOne) {
  for (const std::string set : {"small", "ordinary"}) {
    std::vector<ModelStudy> studies;
    for (int m = 0; m < 5; ++m) {
      studies.emplace_back(Testing::ReferenceHospitals(set, false));
    }
    const Tested tested = TestOf(studies);
    EXPECT_NEAR(tested.test.Statistic(tested.grid), tested.ownStatistic,
                0.01 * tested.ownStatistic);
    const double p = std::erfc(std::sqrt(tested.ownStatistic / 2)) / 2;
    EXPECT_NEAR(tested.test.P(tested.grid) / p, 1, 0.1) << set;
  }
}

TEST(TauTestTest, OutcomesAsEvenAsCanBeAreNoEvidence) {
  std::vector<ModelStudy> studies;
  studies.emplace_back(Testing::ReferenceHospitals("none", false));
  const Tested tested = TestOf(studies);
  EXPECT_EQ(tested.test.P(tested.grid), 1);
}

// What is not known of the data weakens the evidence: risks that differ between the studies, and
// averages cannot have more of it than the mean of the studies.
TEST(TauTestTest, StudiesThatDifferGiveLessEvidenceThanEachOfThem) {
  std::vector<ModelStudy> studies;
  for (int m = 0; m < 6; ++m) {
    std::vector<Testing::ModelHospital> hospitals = Testing::ReferenceHospitals("small", false);
    for (std::size_t h = 0; h < hospitals.size(); ++h) {
      hospitals[h].events += (h + static_cast<std::size_t>(m)) % 3 == 0 ? 2 : 0;
      hospitals[h].events =
          std::min(hospitals[h].events, static_cast<double>(hospitals[h].risks.size()));
    }
    studies.emplace_back(hospitals);
  }
  const Tested together = TestOf(studies);
  double largest = 0;
  double mean = 0;
  for (const ModelStudy& study : studies) {
    const EffectFit fit = Hovar::FitEffects(study.Outcomes(), {}, MeanModel::kPlain);
    const EffectFit none = Hovar::FitMeans(study.Outcomes(), {}, MeanModel::kPlain);
    const double statistic = 2 * (fit.logLikelihood - none.logLikelihood);
    largest = std::max(largest, statistic);
    mean += statistic / 6;
  }
  EXPECT_LE(together.test.Statistic(together.grid), mean);
  EXPECT_GT(together.test.P(together.grid), std::erfc(std::sqrt(largest / 2)) / 2);
}

// Of a density that is a half normal one, with SD 0.25, on a grid that begins at 0: R: qnorm.
TEST(TauQuantileTest, QuantilesOfAHalfNormalDensityAreRight) {
  Hovar::TauGrid grid{0, 1.2 / Hovar::kTauNodes};
  std::array<double, Hovar::kTauNodes> masses;
  for (std::size_t j = 0; j < masses.size(); ++j) {
    masses[j] = std::exp(-std::pow(grid.Node(j) / 0.25, 2) / 2);
  }
  EXPECT_NEAR(Hovar::TauQuantile(grid, masses, 0.025), 0.25 * 0.031337982021, 1e-5);
  EXPECT_NEAR(Hovar::TauQuantile(grid, masses, 0.5), 0.25 * 0.674489750196, 1e-5);
  EXPECT_NEAR(Hovar::TauQuantile(grid, masses, 0.975), 0.25 * 2.241402727604, 3e-4);
}

}  // namespace
