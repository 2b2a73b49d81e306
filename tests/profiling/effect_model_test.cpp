#include "profiling/effect_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "model_studies.h"

namespace {

using Hovar::EffectFit;
using Hovar::HospitalOutcomes;
using Hovar::MeanModel;
using Testing::ModelHospital;
using Testing::ModelStudy;
using Testing::ReferenceHospitals;

// lme4::glmer with 15 nodes and a tightened optimiser (tests/reference/hospital_model.R).
TEST(EffectModelTest, EstimatesEqualThoseOfLme4) {
  std::size_t compared = 0;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("hospital_model.csv"))) {
    if (row[0] == "Set") {
      continue;
    }
    SCOPED_TRACE(row[0] + " " + row[1]);
    const bool byVolume = row[1] == "volume";
    const ModelStudy study(ReferenceHospitals(row[0], byVolume));
    const EffectFit fit = Hovar::FitEffects(study.Outcomes(), {},
                                            byVolume ? MeanModel::kByCovariate : MeanModel::kPlain);
    EXPECT_TRUE(fit.converged);
    EXPECT_NEAR(fit.at.mu, std::stod(row[2]), 1e-5);
    EXPECT_NEAR(fit.at.gamma, std::stod(row[3]), 1e-5);
    EXPECT_NEAR(fit.at.tau, std::stod(row[4]), 1e-5);
    ++compared;
  }
  EXPECT_EQ(compared, 6U);
}

TEST(EffectModelTest, ConditionalModesEqualTheRanefOfLme4) {
  std::string set;
  std::vector<double> modes;
  std::size_t compared = 0;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("hospital_model_modes.csv"))) {
    if (row[0] == "Set") {
      continue;
    }
    if (row[0] != set) {
      set = row[0];
      modes.clear();
      const ModelStudy study(ReferenceHospitals(set, false));
      const EffectFit fit = Hovar::FitEffects(study.Outcomes(), {}, MeanModel::kPlain);
      for (const HospitalOutcomes& outcomes : study.Outcomes()) {
        modes.push_back(fit.at.tau * Hovar::ConditionalMode(outcomes, fit.at.mu, fit.at.tau).z);
      }
    }
    EXPECT_NEAR(modes.at(std::stoul(row[1]) - 1), std::stod(row[2]), 1e-4) << set << row[1];
    ++compared;
  }
  EXPECT_EQ(compared, 225U);
}

// R's integrate over the effect of each hospital.
TEST(EffectModelTest, MarginalLikelihoodsEqualIntegrals) {
  std::size_t compared = 0;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("hospital_model_marginals.csv"))) {
    if (row[0] == "Set") {
      continue;
    }
    const ModelStudy study(ReferenceHospitals(row[0], false));
    const double mu = std::stod(row[1]);
    const double difference = Hovar::LogLikelihood(study.Outcomes(), {mu, 0, std::stod(row[2])}) -
                              Hovar::LogLikelihood(study.Outcomes(), {mu, 0, 0});
    EXPECT_NEAR(difference, std::stod(row[3]), 2e-6) << row[0] << " " << mu;
    ++compared;
  }
  EXPECT_EQ(compared, 15U);
}

TEST(EffectModelTest, DerivativesAreThoseOfTheLogLikelihood) {
  const ModelStudy study(ReferenceHospitals("small", false));
  constexpr double kStep = 1e-4;
  for (const HospitalOutcomes& outcomes : study.Outcomes()) {
    for (const double tau : {0.0, 0.3, 1.2}) {
      const double mean = -0.2;
      const Hovar::MarginalLikelihood at = Hovar::Marginal(outcomes, mean, tau);
      const auto value = [&](double a, double b) {
        return Hovar::Marginal(outcomes, mean + a * kStep, tau + b * kStep).value;
      };
      EXPECT_NEAR(at.byMean, (value(1, 0) - value(-1, 0)) / (2 * kStep), 1e-4);
      EXPECT_NEAR(at.byTau, (value(0, 1) - value(0, -1)) / (2 * kStep), 1e-4);
      EXPECT_NEAR(at.byMeanMean, (value(1, 0) - 2 * at.value + value(-1, 0)) / (kStep * kStep),
                  1e-3);
      EXPECT_NEAR(at.byTauTau, (value(0, 1) - 2 * at.value + value(0, -1)) / (kStep * kStep), 1e-3);
      EXPECT_NEAR(at.byMeanTau,
                  (value(1, 1) - value(1, -1) - value(-1, 1) + value(-1, -1)) / (4 * kStep * kStep),
                  1e-3);
    }
  }
}

TEST(EffectModelTest, TheEstimateDoesNotDependOnTheStart) {
  const ModelStudy study(ReferenceHospitals("ordinary", false));
  const EffectFit one = Hovar::FitEffects(study.Outcomes(), {}, MeanModel::kPlain);
  const EffectFit other = Hovar::FitEffects(study.Outcomes(), {2.5, 0, 2.9}, MeanModel::kPlain);
  EXPECT_NEAR(other.at.mu, one.at.mu, 1e-8);
  EXPECT_NEAR(other.at.tau, one.at.tau, 1e-8);
  EXPECT_GT(one.variance[0], 0);
  EXPECT_GT(one.variance[2], 0);
}

TEST(EffectModelTest, ThereIsNoModelWithoutHospitalsEventsOrSurvivors) {
  const auto hospitals = [](double events, std::size_t count, std::size_t patients) {
    return std::vector<ModelHospital>(count, {std::vector<double>(patients, 0.1), events, 0});
  };
  EXPECT_TRUE(Hovar::HasEffectModel(ModelStudy(hospitals(2, 3, 10)).Outcomes()));
  EXPECT_FALSE(Hovar::HasEffectModel(ModelStudy(hospitals(2, 2, 10)).Outcomes()));
  EXPECT_FALSE(Hovar::HasEffectModel(ModelStudy(hospitals(0, 3, 10)).Outcomes()));
  EXPECT_FALSE(Hovar::HasEffectModel(ModelStudy(hospitals(10, 3, 10)).Outcomes()));
  EXPECT_FALSE(Hovar::HasEffectModel(ModelStudy(hospitals(0, 3, 0)).Outcomes()));
}

TEST(EffectModelTest, AHospitalOfEventsOnlyDoesNotEndTheFit) {
  std::vector<ModelHospital> hospitals = ReferenceHospitals("small", false);
  hospitals.push_back({std::vector<double>(30, 0.02), 30, 0});
  hospitals.push_back({std::vector<double>(300, 0.2), 0, 0});
  hospitals.push_back({{}, 0, 0});
  const ModelStudy study(hospitals);
  const EffectFit fit = Hovar::FitEffects(study.Outcomes(), {}, MeanModel::kPlain);
  EXPECT_TRUE(fit.converged);
  EXPECT_GT(fit.at.tau, 1);
  EXPECT_TRUE(std::isfinite(fit.logLikelihood));
}

// The rules are exact for polynomials: the even moments of a standard normal variable.
TEST(GaussHermiteTest, MomentsAreThoseOfTheNormalDistribution) {
  const auto& rule = Hovar::GaussHermite<15>::Rule();
  const double moments[] = {1, 1, 3, 15, 105, 945, 10395, 135135};
  for (std::size_t j = 0; j < 8; ++j) {
    double sum = 0;
    for (std::size_t k = 0; k < 15; ++k) {
      sum += rule.weights[k] * std::pow(rule.nodes[k], 2 * static_cast<double>(j));
    }
    EXPECT_NEAR(sum / moments[j], 1, 1e-12) << j;
  }
  const auto& five = Hovar::GaussHermite<5>::Rule();
  EXPECT_NEAR(five.nodes[3], 1.355626179974266, 1e-14);  // Abramowitz and Stegun, table 25.10
  EXPECT_NEAR(five.nodes[4], 2.8569700138728056, 1e-14);
  EXPECT_NEAR(five.weights[2], 8.0 / 15, 1e-14);
}

}  // namespace
