#include "profiling/shift_posterior.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "model_studies.h"
#include "profiling/counter_random.h"

namespace {

using Hovar::HospitalOutcomes;

/// Sums over a dense grid of z, by the definition.
struct DensePosterior {
  std::vector<double> eta;
  std::vector<double> cumulated;
  double meanEvents = 0;

  DensePosterior(const HospitalOutcomes& outcomes, double mean, double tau) {
    constexpr int kSteps = 40'000;
    double total = 0;
    const double top = outcomes.LogLikelihood(mean).value;
    for (int i = 0; i < kSteps; ++i) {
      const double z = -10 + 20 * (i + 0.5) / kSteps;
      const double weight =
          std::exp(outcomes.LogLikelihood(mean + tau * z).value - top - z * z / 2);
      eta.push_back(mean + tau * z);
      cumulated.push_back(total + weight / 2);
      total += weight;
      meanEvents += weight * outcomes.curve->At(eta.back()).slope;
    }
    meanEvents /= total;
    for (double& value : cumulated) {
      value /= total;
    }
  }
};

TEST(ShiftPosteriorTest, DistributionMeanAndQuantilesAreThoseOfDenseSums) {
  const Testing::ModelStudy study(Testing::ReferenceHospitals("small", false));
  for (std::size_t h = 0; h < 25; h += 4) {
    for (const double tau : {0.02, 0.4, 1.5}) {
      SCOPED_TRACE(std::to_string(h) + " " + std::to_string(tau));
      const HospitalOutcomes& outcomes = study.Outcomes()[h];
      const DensePosterior dense(outcomes, -0.1, tau);
      Hovar::ShiftPosterior posterior(outcomes, -0.1, tau);
      EXPECT_NEAR(posterior.MeanEvents() / dense.meanEvents, 1, 1e-5);
      for (std::size_t i = 12'000; i < 28'000; i += 1000) {
        double density = 0;
        const double logEvents = std::log(outcomes.curve->At(dense.eta[i]).slope);
        EXPECT_NEAR(posterior.DistributionOfLogEvents(logEvents, density), dense.cumulated[i],
                    2e-5);
        const double next = std::log(outcomes.curve->At(dense.eta[i + 20]).slope);
        const double last = std::log(outcomes.curve->At(dense.eta[i - 20]).slope);
        const double secant = (dense.cumulated[i + 20] - dense.cumulated[i - 20]) / (next - last);
        EXPECT_NEAR(density, secant, 2e-3 * (1 + secant));
        if (dense.cumulated[i] > 1e-3 && dense.cumulated[i] < 0.999) {
          EXPECT_NEAR(posterior.Quantile(dense.cumulated[i]), dense.eta[i], 1e-3 * tau);
        }
      }
    }
  }
}

// 10,000 numbers: mean and share below 0.1 within five standard errors.
TEST(CounterRandomTest, NumbersAreUniformAndBelongToTheirIndices) {
  const Hovar::CounterRandom random(Vell::SeedWords{1, 2});
  double sum = 0;
  double below = 0;
  for (std::uint64_t i = 0; i < 100; ++i) {
    for (std::uint64_t j = 0; j < 100; ++j) {
      const double u = random.At(i).At(j).Uniform();
      ASSERT_GT(u, 0);
      ASSERT_LT(u, 1);
      sum += u;
      below += u < 0.1 ? 1 : 0;
    }
  }
  EXPECT_NEAR(sum / 10'000, 0.5, 5 * 0.00289);
  EXPECT_NEAR(below / 10'000, 0.1, 5 * 0.003);
  EXPECT_EQ(random.At(3).At(4).Uniform(), random.At(3).At(4).Uniform());
  EXPECT_NE(random.At(3).At(4).Uniform(), random.At(4).At(3).Uniform());
  EXPECT_NE(random.At(3).Uniform(), Hovar::CounterRandom(Vell::SeedWords{2, 1}).At(3).Uniform());
}

}  // namespace
