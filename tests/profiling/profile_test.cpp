#include "profiling/profile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "completed_studies.h"
#include "profiling/profile_summary.h"
#include "support/data_sets.h"

namespace {

using Hovar::HospitalJudgement;
using Hovar::ProfileSummary;
using Testing::ModelHospital;

constexpr Vell::SeedWords kSeed{362436069, 521288629};

Hovar::ProfileSettings Settings(std::int32_t draws = 20) {
  Hovar::ProfileSettings settings;
  settings.seed = kSeed;
  settings.drawsPerStudy = draws;
  return settings;
}

struct Profile {
  Hovar::ProfileLayout layout;
  ProfileSummary summary;
};

Profile MakeProfile(const std::vector<std::vector<ModelHospital>>& studies,
                    const Hovar::ProfileSettings& settings) {
  const std::vector<std::int32_t> uncertain(studies.front().size(), studies.size() > 1 ? 6 : 0);
  Profile profile;
  profile.layout =
      Hovar::MakeProfileLayout(Testing::MakeCompletedStudy(studies.front()), uncertain, settings);
  Hovar::ProfileEvidence evidence(studies.front().size());
  std::int32_t number = 0;
  for (const std::vector<ModelHospital>& study : studies) {
    Hovar::JudgeStudy(evidence, Testing::MakeCompletedStudy(study), ++number, profile.layout,
                      settings);
  }
  profile.summary = Hovar::SummariseProfile(evidence, profile.layout, settings);
  return profile;
}

std::vector<ModelHospital> ShrunkenHospitals() {
  std::vector<ModelHospital> hospitals;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("shrunken_data.csv"))) {
    if (row[0] != "Hospital") {
      hospitals.resize(std::stoul(row[0]));
      hospitals.back().risks.insert(hospitals.back().risks.end(), std::stoul(row[2]),
                                    1 / (1 + std::exp(-std::stod(row[1]))));
      hospitals.back().events += std::stod(row[3]);
    }
  }
  return hospitals;
}

// Sums over dense grids of mu, tau and eta (tests/reference/shrunken_ratios.py).
TEST(ProfileTest, ShrunkenRatiosEqualThoseOfDenseGrids) {
  const ProfileSummary summary = MakeProfile({ShrunkenHospitals()}, Settings()).summary;
  std::size_t compared = 0;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("shrunken_ratios.csv"))) {
    if (row[0] == "Hospital") {
      continue;
    }
    SCOPED_TRACE(row[0]);
    const Hovar::ShrunkenSummary& shrunken = summary.hospitals.at(std::stoul(row[0]) - 1).shrunken;
    EXPECT_NEAR(shrunken.ratio, std::stod(row[1]), 3e-4);
    EXPECT_NEAR(shrunken.limits95.lower, std::stod(row[2]), 1e-3);
    EXPECT_NEAR(shrunken.limits95.upper, std::stod(row[3]), 1e-3);
    EXPECT_NEAR(shrunken.aboveOne, std::stod(row[4]), 1e-3);
    EXPECT_NEAR(shrunken.aboveThreshold, std::stod(row[5]), 5e-4);
    EXPECT_NEAR(shrunken.belowInverse, std::stod(row[6]), 5e-4);
    // Here mu given tau is taken as normal.
    EXPECT_NEAR(shrunken.predictiveP, std::stod(row[7]), 3e-3);
    ++compared;
  }
  EXPECT_EQ(compared, 14U);
  const auto limits = Testing::ReadCsv(Testing::ReferenceFile("shrunken_tau.csv")).at(1);
  EXPECT_NEAR(summary.effects.tauLimits95.lower, std::stod(limits[0]), 1e-3);
  EXPECT_NEAR(summary.effects.tauLimits95.upper, std::stod(limits[1]), 2e-3);
}

}  // namespace
