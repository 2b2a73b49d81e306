#include "profiling/cumulants.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "linalg/kernels/dispatch.h"
#include "profiling/eta_layout.h"
#include "support/width_limit.h"

namespace {

using Hovar::CumulantCurve;
using Hovar::CumulantTable;
using Hovar::EtaGrid;

std::vector<double> Risks(std::size_t count, double largest) {
  std::mt19937_64 random(count);
  std::uniform_real_distribution<double> risk(0.001, largest);
  std::vector<double> risks(count);
  for (double& p : risks) {
    p = risk(random);
  }
  return risks;
}

/// K and its derivatives by their definition.
Hovar::Derivatives Direct(const std::vector<double>& risks, double eta) {
  Hovar::Derivatives sum;
  for (const double p : risks) {
    const double total = 1 - p + p * std::exp(eta);
    const double q = p * std::exp(eta) / total;
    sum.value += std::log(total);
    sum.slope += q;
    sum.curvature += q * (1 - q);
  }
  return sum;
}

// With h between the nodes and a sixth derivative that is V at most, see cumulants.h.
TEST(CumulantsTest, InterpolationMissesTheLogLikelihoodByNoMoreThanItsBound) {
  for (const std::size_t count : {1U, 17U, 300U, 4000U}) {
    const std::vector<double> risks = Risks(count, 0.4);
    double expected = 0;
    for (const double p : risks) {
      expected += p;
    }
    const EtaGrid grid = Hovar::MakeEtaGrid(risks, std::floor(expected), {0, 1.5, 0});
    CumulantTable table;
    Hovar::TabulateCumulants(table, grid, risks);
    const CumulantCurve curve(table, grid, static_cast<double>(count));
    double variance = 0;
    for (int step = 0; step <= 1000; ++step) {
      variance = std::max(
          variance,
          Direct(risks, grid.First() + step * (grid.Last() - grid.First()) / 1000).curvature);
    }
    for (int step = 0; step <= 1000; ++step) {
      const double eta = grid.First() + step * (grid.Last() - grid.First()) / 1000;
      const Hovar::Derivatives at = curve.At(eta);
      const Hovar::Derivatives direct = Direct(risks, eta);
      const double width = 1 / grid.Find(eta).perWidth;
      const double bound = variance * std::pow(width, 6) / 46080;
      ASSERT_NEAR(at.value, direct.value, bound + 1e-12 * (1 + std::fabs(direct.value))) << eta;
      ASSERT_NEAR(at.slope, direct.slope, 1e-4 * (1 + direct.slope) * width) << eta;
    }
  }
}

TEST(CumulantsTest, TheGridIsFinestWhereTheOutcomesAreLikely) {
  const std::vector<double> risks = Risks(20'000, 0.4);
  const EtaGrid grid = Hovar::MakeEtaGrid(risks, 4000, {0, 1.5, 0});
  const double standardError = 1 / std::sqrt(Direct(risks, 0).curvature);
  EXPECT_GT(grid.Find(0).perWidth, 2 / standardError);
  EXPECT_LE(grid.First(), -1.5);
  EXPECT_GE(grid.Last(), 1.5);
  for (std::size_t j = 0; j < Hovar::kEtaIntervals; ++j) {
    const EtaGrid::Place place = grid.Find((grid.Node(j) + grid.Node(j + 1)) / 2);
    EXPECT_EQ(place.interval, j);
    EXPECT_NEAR(place.fraction, 0.5, 1e-9);
    EXPECT_NEAR(1 / place.perWidth, grid.Node(j + 1) - grid.Node(j), 1e-12);
  }
}

// Patients who are all alike are continued exactly, others to what differs between them, which is
// the less the rarer the events (or the survivors) are.
TEST(CumulantsTest, BeyondTheGridTheCurveGoesOnAsItMust) {
  const auto compare = [](const std::vector<double>& risks, const EtaGrid& grid, double eta,
                          double tolerance) {
    CumulantTable table;
    Hovar::TabulateCumulants(table, grid, risks);
    const CumulantCurve curve(table, grid, static_cast<double>(risks.size()));
    const Hovar::Derivatives direct = Direct(risks, eta);
    EXPECT_NEAR(curve.At(eta).value, direct.value, tolerance * (1 + std::fabs(direct.value)))
        << eta;
    EXPECT_NEAR(curve.At(eta).slope, direct.slope, tolerance * direct.slope) << eta;
    EXPECT_NEAR(curve.At(eta).curvature, direct.curvature, tolerance * direct.curvature) << eta;
  };
  for (const double eta : {-30.0, -2.5, 2.5, 4.0, 20.0}) {
    compare(std::vector<double>(40, 0.2), EtaGrid(-2, -1, 1, 2), eta, 1e-6);
  }
  compare(Risks(40, 0.3), EtaGrid(-9, -2, 2, 13), -12, 1e-4);
  compare(Risks(40, 0.3), EtaGrid(-9, -2, 2, 13), 15, 1e-3);
  compare(Risks(40, 0.3), EtaGrid(-1, -1, 1, 1), 1.5, 0.05);
}

TEST(CumulantsTest, EveryVectorWidthGivesTheSameBits) {
  const std::vector<double> risks = Risks(333, 0.5);
  const EtaGrid grid(-4, -1, 1, 3);
  CumulantTable widest;
  Hovar::TabulateCumulants(widest, grid, risks);
  for (const Vell::VectorWidth width : {Vell::VectorWidth::kPortable, Vell::VectorWidth::kAvx2}) {
    const Testing::WidthLimit limit(width);
    CumulantTable table;
    Hovar::TabulateCumulants(table, grid, risks);
    EXPECT_EQ(table.value, widest.value);
    EXPECT_EQ(table.first, widest.first);
    EXPECT_EQ(table.second, widest.second);
    EXPECT_EQ(table.third, widest.third);
  }
}

TEST(CumulantsTest, RisksOfZeroAndOneAreBounded) {
  EXPECT_EQ(Hovar::BoundedRisk(0), 1e-12);
  EXPECT_EQ(Hovar::BoundedRisk(1), 1 - 1e-12);
  EXPECT_EQ(Hovar::BoundedRisk(0.3), 0.3);
}

}  // namespace
