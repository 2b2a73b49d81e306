// Studies simulated under the model itself: how often the test of tau = 0 and the interval of tau are
// right. Seeds are fixed, so a test passes always or never; the bounds are wide enough that a correct
// program misses one of them with a probability below 1e-3.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "diagnostics/normal_quantile.h"
#include "model_studies.h"
#include "profiling/pooling.h"

namespace {

using Hovar::MeanModel;
using Testing::ModelHospital;

constexpr int kStudies = 120;

class Simulation {
 public:
  double Uniform() { return (static_cast<double>(random_() >> 11) + 0.5) * 0x1p-53; }

  std::vector<ModelHospital> Study(double tau) {
    std::vector<ModelHospital> hospitals(50);
    std::size_t size = 20;
    for (ModelHospital& hospital : hospitals) {
      size = size % 191 + 20;
      const double effect = 0.1 + tau * Hovar::NormalQuantile(Uniform());
      for (std::size_t i = 0; i < size; ++i) {
        const double logOdds = -1.6 + 0.2 * static_cast<double>(i % 8);
        hospital.risks.push_back(1 / (1 + std::exp(-logOdds)));
        hospital.events += Uniform() < 1 / (1 + std::exp(-logOdds - effect)) ? 1 : 0;
      }
    }
    return hospitals;
  }

 private:
  std::mt19937_64 random_{20191118};
};

struct Result {
  double tau = 0;
  double p = 0;
  Hovar::Interval limits;
};

/// The judgement of tau in completed studies that differ by what is added to the log-odds of all, which mu
/// takes up.
Result Judge(const std::vector<ModelHospital>& hospitals, int completed) {
  Result result;
  Hovar::TauTest test;
  Hovar::TauGrid grid;
  std::array<double, Hovar::kTauNodes> masses{};
  for (int m = 0; m < completed; ++m) {
    std::vector<ModelHospital> shifted = hospitals;
    for (ModelHospital& hospital : shifted) {
      for (double& p : hospital.risks) {
        const double odds = p / (1 - p) * std::exp(0.05 * (m - (completed - 1) / 2.0));
        p = odds / (1 + odds);
      }
    }
    const Testing::ModelStudy study(shifted);
    const Hovar::EffectFit fit = Hovar::FitEffects(study.Outcomes(), {}, MeanModel::kPlain);
    const Hovar::EffectFit none = Hovar::FitMeans(study.Outcomes(), {}, MeanModel::kPlain);
    if (m == 0) {
      grid = Hovar::MakeTauGrid(study.Outcomes(), fit, MeanModel::kPlain);
    }
    const Hovar::HyperPosterior posterior =
        Hovar::MakeHyperPosterior(study.Outcomes(), grid, fit, MeanModel::kPlain);
    test.Add(fit, none, posterior, MeanModel::kPlain);
    for (std::size_t j = 0; j < masses.size(); ++j) {
      masses[j] += posterior.slices[j].mass;
    }
    result.tau += fit.at.tau / completed;
  }
  result.p = test.P(grid);
  result.limits = {TauQuantile(grid, masses, 0.025), TauQuantile(grid, masses, 0.975)};
  return result;
}

// Of 120 studies 6 have a p below 0.05 on average; more than 15 or none are too many or too few.
TEST(TauSimulationTest, TheTestOfNoDifferencesHasItsSize) {
  Simulation simulation;
  int rejected = 0;
  int ones = 0;
  for (int k = 0; k < kStudies; ++k) {
    const Result result = Judge(simulation.Study(0), k % 2 == 0 ? 1 : 3);
    rejected += result.p < 0.05 ? 1 : 0;
    ones += result.p > 0.5 ? 1 : 0;
  }
  RecordProperty("rejected", rejected);
  EXPECT_LE(rejected, 15);
  EXPECT_GE(rejected, 1);
  // tau is estimated as 0 in half of them, somewhat more with 50 hospitals.
  EXPECT_NEAR(ones, 66, 22);
}

// 114 of 120 intervals hold the truth on average; mean estimates are within a tenth of it.
TEST(TauSimulationTest, IntervalsOfTauHoldIt) {
  Simulation simulation;
  int covered = 0;
  double sum = 0;
  for (int k = 0; k < kStudies; ++k) {
    const Result result = Judge(simulation.Study(0.3), 1);
    covered += result.limits.lower <= 0.3 && 0.3 <= result.limits.upper ? 1 : 0;
    sum += result.tau;
  }
  RecordProperty("covered", covered);
  EXPECT_GE(covered, 104);
  EXPECT_NEAR(sum / kStudies, 0.3, 0.03);
}

}  // namespace
