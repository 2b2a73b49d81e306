#include "profiling/ratio_interval.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include "profiling/eta_layout.h"
#include "support/files.h"

namespace {

using Hovar::RatioEvidence;
using Risks = std::vector<double>;

struct Study {
  double events = 0;
  Risks risks;
};

struct Judged {
  Hovar::EtaGrid grid;
  RatioEvidence evidence;
};

/// The evidence of completed studies on the grid of the first one.
Judged Judge(const std::vector<Study>& studies, double uncertainEvents = 0) {
  Judged judged;
  judged.grid = Hovar::MakeEtaGrid(studies.front().risks, studies.front().events,
                                   {0.1, 1.5, uncertainEvents});
  Hovar::TailComputation computation;
  for (const Study& study : studies) {
    Hovar::CumulantTable cumulants;
    Hovar::TabulateCumulants(cumulants, judged.grid, study.risks);
    Hovar::TailTable tails;
    const Hovar::ReferenceTails reference = computation.Compute(
        tails, judged.grid, cumulants, study.risks, static_cast<std::int64_t>(study.events));
    judged.evidence.Add(cumulants, tails, reference, static_cast<double>(study.risks.size()),
                        study.events, std::accumulate(study.risks.begin(), study.risks.end(), 0.0));
  }
  return judged;
}

std::map<std::string, std::vector<Study>> ReferenceSets() {
  std::map<std::string, std::vector<Study>> sets;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("ratio_risks.csv"))) {
    if (row[0] != "Set") {
      std::vector<Study>& studies = sets[row[0]];
      studies.resize(std::stoul(row[1]));
      studies.back().events = std::stod(row[2]);
      studies.back().risks.push_back(std::stod(row[3]));
    }
  }
  return sets;
}

// Limits found by plain convolution and a root finder (tests/reference/ratio_limits.R), to more than
// the six digits that are written.
TEST(RatioIntervalTest, LimitsEqualThoseOfPlainConvolutionAndARootFinder) {
  const std::map<std::string, std::vector<Study>> sets = ReferenceSets();
  std::size_t compared = 0;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("ratio_limits.csv"))) {
    if (row[0] == "Set") {
      continue;
    }
    SCOPED_TRACE(row[0]);
    const Judged judged = Judge(sets.at(row[0]), row[0] == "wide" ? 20 : 4);
    const Hovar::RatioSummary summary = SummariseRatio(judged.evidence, judged.grid);
    const double values[] = {summary.ratio,           summary.limits95.lower,
                             summary.limits95.upper,  summary.limits998.lower,
                             summary.limits998.upper, summary.p};
    for (std::size_t j = 0; j < 6; ++j) {
      const double expected = std::stod(row[j + 1]);
      EXPECT_NEAR(values[j], expected, 2e-7 * expected) << j;
    }
    ++compared;
  }
  EXPECT_EQ(compared, 13U);
}

// Of patients of one risk the number of events is binomial: an event in ten at a risk of 1/10 has
// the exact limits of Clopper and Pearson, 0.0025286 and 0.4450161 (R: binom.test(1, 10)).
TEST(RatioIntervalTest, EqualRisksGiveTheLimitsOfTheBinomialDistribution) {
  const Judged judged = Judge({{1, Risks(10, 0.1)}});
  const Hovar::Interval limits = RatioLimits(judged.evidence, judged.grid, 0.025);
  EXPECT_NEAR(limits.lower, 0.025285785444617869, 1e-8);
  EXPECT_NEAR(limits.upper, 4.4501611702818347, 1e-6);
}

TEST(RatioIntervalTest, WithoutAnEventTheLowerLimitIsZeroAndWithoutASurvivorTheUpperOneIsAll) {
  const Judged none = Judge({{0, Risks(30, 0.05)}});
  EXPECT_EQ(RatioLimits(none.evidence, none.grid, 0.025).lower, 0);
  const Judged all = Judge({{4, Risks(4, 0.25)}});
  EXPECT_EQ(RatioLimits(all.evidence, all.grid, 0.025).upper, 4);
}

TEST(RatioIntervalTest, AHospitalWithoutCasesHasNoRatio) {
  const Judged judged = Judge({{0, {}}});
  const Hovar::RatioSummary summary = SummariseRatio(judged.evidence, judged.grid);
  EXPECT_EQ(summary.cases, 0);
  EXPECT_TRUE(std::isnan(summary.ratio));
  EXPECT_TRUE(std::isnan(summary.limits95.lower));
  EXPECT_TRUE(std::isnan(summary.p));
}

TEST(RatioIntervalTest, MeansAndSpreadAreThoseOverTheStudies) {
  const Judged judged =
      Judge({{3, Risks(40, 0.125)}, {5, Risks(44, 0.125)}, {7, Risks(48, 0.125)}});
  const Hovar::RatioSummary summary = SummariseRatio(judged.evidence, judged.grid);
  EXPECT_DOUBLE_EQ(summary.cases, 44);
  EXPECT_DOUBLE_EQ(summary.observed, 5);
  EXPECT_DOUBLE_EQ(summary.observedSd, 2);
  EXPECT_DOUBLE_EQ(summary.expected, 5.5);
  EXPECT_DOUBLE_EQ(summary.expectedSd, 0.5);
  EXPECT_DOUBLE_EQ(summary.ratio, 5 / 5.5);
}

TEST(RatioIntervalTest, GroupsOfStudiesAddUp) {
  const std::vector<Study> studies = ReferenceSets().at("imputed");
  const Judged all = Judge(studies, 4);
  RatioEvidence sum;
  for (const Study& study : studies) {
    Judged one = Judge({studies.front(), study}, 4);  // on the same grid
    sum.Add(one.evidence);
  }
  const Judged first = Judge({studies.front()}, 4);
  const Hovar::RatioSummary expected = SummariseRatio(all.evidence, all.grid);
  EXPECT_EQ(sum.studies, 10);
  EXPECT_NEAR(sum.observed - 5 * first.evidence.observed, 5 * expected.observed, 1e-9);
  EXPECT_NEAR(sum.reference.above - 5 * first.evidence.reference.above,
              all.evidence.reference.above, 1e-12);
  EXPECT_NEAR(sum.tails.above.value[20] - 5 * first.evidence.tails.above.value[20],
              all.evidence.tails.above.value[20], 1e-12);
}

TEST(FalseDiscoveryRatesTest, EqualThoseOfR) {
  std::vector<double> p;
  std::vector<double> expected;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("false_discovery.csv"))) {
    if (row[0] != "P") {
      p.push_back(std::stod(row[0]));
      expected.push_back(std::stod(row[1]));
    }
  }
  ASSERT_EQ(p.size(), 31U);
  const std::vector<double> q = Hovar::FalseDiscoveryRates(p);
  for (std::size_t i = 0; i < p.size(); ++i) {
    EXPECT_NEAR(q[i], expected[i], 1e-14) << i;
  }
}

TEST(FalseDiscoveryRatesTest, WhatIsNoNumberDoesNotCount) {
  const double none = std::nan("");
  const std::vector<double> q = Hovar::FalseDiscoveryRates({none, 0.01, none, 0.04});
  EXPECT_TRUE(std::isnan(q[0]));
  EXPECT_DOUBLE_EQ(q[1], 0.02);
  EXPECT_DOUBLE_EQ(q[3], 0.04);
}

}  // namespace
