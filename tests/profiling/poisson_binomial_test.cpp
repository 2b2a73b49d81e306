#include "profiling/poisson_binomial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "support/files.h"

namespace {

using Hovar::PoissonBinomial;

// An independent convolution with 60 digits (tests/reference/poisson_binomial.py).
TEST(PoissonBinomialTest, EqualsAnIndependentConvolution) {
  std::map<std::string, std::vector<double>> risks;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("poisson_binomial_risks.csv"))) {
    if (row[0] != "Set") {
      risks[row[0]].push_back(std::stod(row[1]));
    }
  }
  ASSERT_EQ(risks.size(), 8U);
  PoissonBinomial sum;
  std::string computed;
  std::size_t compared = 0;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("poisson_binomial.csv"))) {
    if (row[0] == "Set") {
      continue;
    }
    if (row[0] != computed) {
      computed = row[0];
      sum.Compute(risks.at(computed));
    }
    SCOPED_TRACE(computed + " " + row[1]);
    const std::int64_t events = std::stoll(row[1]);
    const double mass = std::stod(row[2]);
    const double n = 1500;  // at most
    const double dropped = n * std::log2(n) * PoissonBinomial::kNegligible;
    EXPECT_NEAR(sum.Mass(events), mass, 1e-12 * mass + dropped);
    double below = 0;
    for (std::int64_t k = sum.First(); k < events; ++k) {
      below += sum.Mass(k);
    }
    EXPECT_NEAR(below, std::stod(row[3]), 1e-12);
    ++compared;
  }
  EXPECT_GT(compared, 400U);
}

// The mean and the variance of 100,000 indicators are sums over them; the terms are dropped at both
// ends and their mass is not missed.
TEST(PoissonBinomialTest, ALargeHospitalHasTheRightMassMeanAndVariance) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> risk(0.001, 0.3);
  std::vector<double> risks(100'000);
  double mean = 0;
  double variance = 0;
  for (double& q : risks) {
    q = risk(random);
    mean += q;
    variance += q * (1 - q);
  }
  PoissonBinomial sum;
  sum.Compute(risks);
  double mass = 0;
  double first = 0;
  double second = 0;
  for (std::size_t j = 0; j < sum.Masses().size(); ++j) {
    const double distance = static_cast<double>(sum.First()) + static_cast<double>(j) - mean;
    mass += sum.Masses()[j];
    first += sum.Masses()[j] * distance;
    second += sum.Masses()[j] * distance * distance;
  }
  EXPECT_NEAR(mass, 1, 1e-11);
  EXPECT_NEAR(first, 0, 1e-8);
  EXPECT_NEAR(second / variance, 1, 1e-9);
  EXPECT_LT(sum.Masses().size(), 25 * std::sqrt(variance)) << "the window is short";
}

// The dropped ends matter to no term that is kept: the sums of two halves and their product agree.
TEST(PoissonBinomialTest, TheOrderOfThePatientsDoesNotMatter) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> risk(0.0, 0.9);
  std::vector<double> risks(777);
  for (double& q : risks) {
    q = risk(random);
  }
  PoissonBinomial sum;
  sum.Compute(risks);
  const std::int64_t middle = std::llround(std::accumulate(risks.begin(), risks.end(), 0.0));
  std::shuffle(risks.begin(), risks.end(), random);
  PoissonBinomial shuffled;
  shuffled.Compute(risks);
  for (std::int64_t k = middle - 60; k <= middle + 60; ++k) {
    EXPECT_NEAR(shuffled.Mass(k) / sum.Mass(k), 1, 1e-12) << k;
  }
}

TEST(PoissonBinomialTest, NobodyHasNoEvents) {
  PoissonBinomial sum;
  EXPECT_EQ(sum.Mass(0), 1);
  sum.Compute(std::vector<double>{0.5, 0.5});
  EXPECT_EQ(sum.Mass(1), 0.5);
  sum.Compute({});
  EXPECT_EQ(sum.Mass(0), 1);
  EXPECT_EQ(sum.Mass(-1), 0);
  EXPECT_EQ(sum.Mass(1), 0);
}

}  // namespace
