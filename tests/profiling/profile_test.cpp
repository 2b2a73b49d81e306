#include "profiling/profile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "completed_studies.h"
#include "diagnostics/normal_quantile.h"
#include "profiling/distributions.h"
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

/// Hospitals whose effects are evenly spread quantiles of a normal distribution; some of every size.
std::vector<ModelHospital> SpreadHospitals(std::size_t count, double tau, double mu, double gamma) {
  std::vector<ModelHospital> hospitals(count);
  for (std::size_t h = 0; h < count; ++h) {
    const std::size_t size = 20 + 29 * (h % 17);
    const auto place = static_cast<double>((h * 7919) % count);
    const double u = tau * Hovar::NormalQuantile((place + 0.5) / static_cast<double>(count));
    const double effect = mu + gamma * std::log(static_cast<double>(size) / 250) + u;
    double expected = 0;
    for (std::size_t i = 0; i < size; ++i) {
      const double logOdds = -2 + 0.15 * static_cast<double>(i % 11) - 0.75;
      hospitals[h].risks.push_back(1 / (1 + std::exp(-logOdds)));
      expected += 1 / (1 + std::exp(-logOdds - effect));
    }
    hospitals[h].events = std::floor(expected + static_cast<double>(h % 10) / 10);
  }
  return hospitals;
}

TEST(ProfileTest, GroupsOfStudiesAddUpToAllOfThem) {
  const Hovar::ProfileSettings settings = Settings();
  std::vector<Hovar::CompletedStudy> studies;
  for (const double mu : {0.0, 0.1, -0.1, 0.05}) {
    studies.push_back(Testing::MakeCompletedStudy(SpreadHospitals(30, 0.3, mu, 0)));
  }
  const Hovar::ProfileLayout layout =
      Hovar::MakeProfileLayout(studies[0], std::vector<std::int32_t>(30, 3), settings);
  Hovar::ProfileEvidence all(30);
  Hovar::ProfileEvidence first(30);
  Hovar::ProfileEvidence second(30);
  for (std::int32_t m = 1; m <= 4; ++m) {
    const Hovar::CompletedStudy& study = studies[static_cast<std::size_t>(m) - 1];
    JudgeStudy(all, study, m, layout, settings);
    JudgeStudy(m <= 2 ? first : second, study, m, layout, settings);
  }
  first.Add(second);
  const ProfileSummary one = SummariseProfile(all, layout, settings);
  const ProfileSummary two = SummariseProfile(first, layout, settings);
  EXPECT_EQ(first.ranks, all.ranks) << "draws belong to their study, whoever judges it";
  for (std::size_t h = 0; h < 30; ++h) {
    const HospitalJudgement& a = one.hospitals[h];
    const HospitalJudgement& b = two.hospitals[h];
    EXPECT_NEAR(a.ratio.limits95.lower, b.ratio.limits95.lower, 1e-12);
    EXPECT_NEAR(a.shrunken.limits95.upper, b.shrunken.limits95.upper, 1e-12);
    EXPECT_NEAR(a.shrunken.aboveOne, b.shrunken.aboveOne, 1e-12);
    EXPECT_NEAR(a.shrunken.predictiveP, b.shrunken.predictiveP, 1e-12);
    EXPECT_EQ(a.rankLimits95.lower, b.rankLimits95.lower);
  }
  EXPECT_NEAR(one.effects.tau, two.effects.tau, 1e-12);
  EXPECT_NEAR(one.effects.tauP, two.effects.tauP, 1e-9);
  EXPECT_NEAR(one.effects.muLimits95.lower, two.effects.muLimits95.lower, 1e-9);
}

// The ranks' means are what the probabilities of pairs say; here only their order and range.
TEST(ProfileTest, RanksFollowTheShrunkenRatiosAndTheirSeed) {
  const std::vector<ModelHospital> hospitals = SpreadHospitals(40, 0.6, 0, 0);
  const ProfileSummary summary = MakeProfile({hospitals}, Settings(2000)).summary;
  EXPECT_EQ(summary.jointDraws, 2000);
  double sum = 0;
  for (const HospitalJudgement& judgement : summary.hospitals) {
    sum += judgement.rank;
    EXPECT_LE(judgement.rankLimits95.lower, judgement.rank);
    EXPECT_GE(judgement.rankLimits95.upper, judgement.rank);
    // Five times the standard error of a mean of 2000 ranks of 40, SD below 12.
    const double place =
        0.5 + 40 * Hovar::NormalDistribution(std::log(judgement.shrunken.ratio) / 0.6 * 1.02);
    EXPECT_NEAR(judgement.rank, place, 5);
  }
  EXPECT_NEAR(sum, 40 * 41 / 2.0, 1e-6) << "each draw has every rank once";
  EXPECT_EQ(MakeProfile({hospitals}, Settings(2000)).summary.hospitals[3].rank,
            summary.hospitals[3].rank);
  Hovar::ProfileSettings other = Settings(2000);
  other.seed = {1, 2};
  EXPECT_NE(MakeProfile({hospitals}, other).summary.hospitals[3].rank, summary.hospitals[3].rank);
}

// A slope of -0.3 by log cases, of which the plain model knows nothing.
TEST(ProfileTest, ThePlainModelFindsASlopeOfLogCases) {
  const std::vector<ModelHospital> hospitals = SpreadHospitals(120, 0.2, 0, -0.3);
  const ProfileSummary plain = MakeProfile({hospitals}, Settings()).summary;
  EXPECT_LT(plain.effects.volumeP, 0.001);
  EXPECT_NEAR(plain.effects.volumeSlope, -0.3, 0.06);
  Hovar::ProfileSettings settings = Settings();
  settings.meanModel = Hovar::MeanModel::kByCovariate;
  const ProfileSummary byVolume = MakeProfile({hospitals}, settings).summary;
  EXPECT_NEAR(byVolume.effects.gamma, -0.3, 0.06);
  EXPECT_LT(byVolume.effects.tau, plain.effects.tau);
  // The smallest hospitals are drawn to those of their size, not to all.
  const HospitalJudgement& small = byVolume.hospitals[0];
  EXPECT_GT(small.shrunken.ratio, plain.hospitals[0].shrunken.ratio + 0.1);
  const std::vector<ModelHospital> even = SpreadHospitals(120, 0.2, 0, 0);
  EXPECT_GT(MakeProfile({even}, Settings()).summary.effects.volumeP, 0.05);
}

TEST(ProfileTest, FewHospitalsOrNoEventsLeaveRatiosWithoutAModel) {
  for (const std::vector<ModelHospital>& hospitals :
       {std::vector<ModelHospital>{{std::vector<double>(50, 0.2), 14, 0}},
        std::vector<ModelHospital>(4, {std::vector<double>(50, 0.2), 0, 0})}) {
    const ProfileSummary summary = MakeProfile({hospitals}, Settings()).summary;
    EXPECT_FALSE(summary.effects.hasModel);
    const HospitalJudgement& judgement = summary.hospitals[0];
    EXPECT_NEAR(judgement.ratio.ratio, hospitals[0].events / 10, 1e-12);
    EXPECT_GT(judgement.ratio.limits95.upper, judgement.ratio.ratio);
    EXPECT_TRUE(std::isnan(judgement.shrunken.ratio));
    EXPECT_TRUE(std::isnan(judgement.rank));
    EXPECT_EQ(judgement.byPosterior, Hovar::Flag::kNone);
  }
}

TEST(ProfileTest, AHospitalWithoutCasesIsListedAndNothingElse) {
  std::vector<ModelHospital> hospitals = SpreadHospitals(30, 0.3, 0, 0);
  hospitals.insert(hospitals.begin() + 3, ModelHospital{});
  const ProfileSummary summary = MakeProfile({hospitals, hospitals}, Settings()).summary;
  const HospitalJudgement& judgement = summary.hospitals[3];
  EXPECT_TRUE(judgement.isSmall);
  EXPECT_TRUE(std::isnan(judgement.ratio.ratio));
  EXPECT_TRUE(std::isnan(judgement.q));
  EXPECT_TRUE(std::isnan(judgement.shrunken.ratio));
  EXPECT_TRUE(std::isnan(judgement.rank));
  EXPECT_EQ(judgement.byLimits, Hovar::Flag::kNone);
  EXPECT_FALSE(std::isnan(summary.hospitals[4].shrunken.ratio));
}

// In the first study nobody is a case; in the second one some are.
TEST(ProfileTest, AHospitalMayHaveCasesInSomeStudiesOnly) {
  std::vector<ModelHospital> with = SpreadHospitals(30, 0.3, 0, 0);
  std::vector<ModelHospital> without = with;
  without[5] = {};
  const ProfileSummary summary = MakeProfile({without, with}, Settings()).summary;
  const HospitalJudgement& judgement = summary.hospitals[5];
  EXPECT_DOUBLE_EQ(judgement.ratio.observed, with[5].events / 2);
  EXPECT_GT(judgement.shrunken.limits95.upper, judgement.shrunken.ratio);
  EXPECT_LT(judgement.shrunken.limits95.lower, judgement.shrunken.ratio);
  EXPECT_GT(judgement.rank, 0);
}

TEST(ProfileTest, TenthsOfRiskHoldEveryCaseOnce) {
  const std::vector<ModelHospital> hospitals = SpreadHospitals(30, 0.3, 0, 0);
  const Hovar::CompletedStudy study = Testing::MakeCompletedStudy(hospitals);
  const Hovar::ProfileLayout layout =
      Hovar::MakeProfileLayout(study, std::vector<std::int32_t>(30), Settings());
  Hovar::ProfileEvidence evidence(30);
  JudgeStudy(evidence, study, 1, layout, Settings());
  double all = 0;
  for (std::size_t h = 0; h < 30; ++h) {
    double cases = 0;
    double observed = 0;
    for (std::size_t k = 0; k < Hovar::kRiskTenths; ++k) {
      const Hovar::TenthOfRisk& tenth = evidence.tenths[h][k];
      cases += tenth.cases;
      observed += tenth.observed;
      // The mean risk of a tenth lies between its cuts.
      EXPECT_TRUE(tenth.cases == 0 || k == 0 ||
                  tenth.expected >= (layout.riskCuts[k - 1] - 1e-12) * tenth.cases);
    }
    EXPECT_EQ(cases, static_cast<double>(hospitals[h].risks.size()));
    EXPECT_EQ(observed, hospitals[h].events);
    all += cases;
  }
  EXPECT_EQ(all, study.probability.Size());
}

TEST(ProfileTest, UncertainEventsAreThoseWithoutAP) {
  const Hovar::DataSet data =
      Testing::MakeDataSet("A 1 . - -\nA 0 . - -\nA 1 0 - -\nB 1 . - -\nB 1 . - -\n");
  EXPECT_EQ(Hovar::CountUncertainEvents(data), (std::vector<std::int32_t>{1, 2}));
}

// With separation the coefficients can say that an event is impossible, or certain.
TEST(ProfileTest, ImpossibleEventsAndCertainOnesAreJudgedAllTheSame) {
  std::vector<ModelHospital> hospitals = SpreadHospitals(30, 0.3, 0, 0);
  hospitals[2] = {std::vector<double>(40, 0.0), 3, 0};
  hospitals[7] = {std::vector<double>(40, 1.0), 12, 0};
  hospitals[9] = {std::vector<double>(40, 0.0), 0, 0};
  hospitals[11] = {std::vector<double>(1, 0.3), 1, 0};
  hospitals[13] = {std::vector<double>(1, 1e-12), 0, 0};
  const ProfileSummary summary = MakeProfile({hospitals, hospitals}, Settings()).summary;
  EXPECT_TRUE(summary.effects.hasModel);
  EXPECT_TRUE(std::isfinite(summary.effects.tau));
  for (const HospitalJudgement& judgement : summary.hospitals) {
    EXPECT_TRUE(std::isfinite(judgement.ratio.limits95.lower));
    EXPECT_TRUE(std::isfinite(judgement.ratio.limits95.upper));
    EXPECT_LE(judgement.ratio.limits998.lower, judgement.ratio.limits95.lower);
    EXPECT_GE(judgement.ratio.limits998.upper, judgement.ratio.limits95.upper);
    EXPECT_GE(judgement.ratio.p, 0);
    EXPECT_TRUE(std::isfinite(judgement.shrunken.ratio));
    EXPECT_GE(judgement.shrunken.aboveOne, 0);
    EXPECT_LE(judgement.shrunken.aboveOne, 1);
    EXPECT_LE(judgement.shrunken.limits95.lower, judgement.shrunken.limits95.upper);
    EXPECT_GE(judgement.rank, 1);
  }
  EXPECT_LT(summary.hospitals[2].ratio.p, 1e-9);
}

TEST(ProfileTest, OutliersWidenTauAndAreLeftOutOfTheOtherOne) {
  std::vector<ModelHospital> hospitals = SpreadHospitals(60, 0.3, 0, 0);
  const ProfileSummary even = MakeProfile({hospitals}, Settings()).summary;
  ASSERT_GT(even.effects.tau, 0.1);
  for (const std::size_t h : {16U, 33U, 50U}) {  // the largest ones
    hospitals[h].events = std::floor(3.5 * hospitals[h].events);
  }
  const ProfileSummary summary = MakeProfile({hospitals}, Settings()).summary;
  EXPECT_GE(summary.effects.flaggedPerStudy, 3);
  EXPECT_GT(summary.effects.tau, 1.3 * even.effects.tau);
  EXPECT_LT(summary.effects.tauWithoutFlagged, 1.1 * even.effects.tau);
  for (const std::size_t h : {16U, 33U, 50U}) {
    EXPECT_EQ(summary.hospitals[h].byPosterior, Hovar::Flag::kVeryHigh);
    EXPECT_EQ(summary.hospitals[h].byLimits, Hovar::Flag::kVeryHigh);
  }
  EXPECT_DOUBLE_EQ(summary.byLimits.byChance, 0.05 * summary.byLimits.judged);
}

// Effects of 0.3 z - 0.3 x, where x (SD 1) times 0.5 is what sets the log-odds of a hospital's patients
// apart: a correlation of -0.71. With 100 hospitals its standard error is some (1 - 0.5) / 10, and
// more for what outcomes leave unknown of effects.
TEST(ProfileTest, ACorrelationOfEffectsWithThePatientsRisksIsFound) {
  std::mt19937_64 random(2019);
  const auto uniform = [&] { return (static_cast<double>(random() >> 11) + 0.5) * 0x1p-53; };
  const auto study = [&](double slope) {
    std::vector<ModelHospital> hospitals(100);
    for (ModelHospital& hospital : hospitals) {
      const double x = Hovar::NormalQuantile(uniform());
      const double effect = 0.3 * Hovar::NormalQuantile(uniform()) + slope * x;
      for (int i = 0; i < 400; ++i) {
        const double logOdds = -1.8 + 0.5 * x + Hovar::NormalQuantile(uniform());
        hospital.risks.push_back(1 / (1 + std::exp(-logOdds)));
        hospital.events += uniform() < 1 / (1 + std::exp(-logOdds - effect)) ? 1 : 0;
      }
    }
    return hospitals;
  };
  const Hovar::EffectSummary effects = MakeProfile({study(-0.3)}, Settings()).summary.effects;
  EXPECT_NEAR(effects.riskCorrelation, -0.71, 0.25);
  EXPECT_LT(effects.riskCorrelationLimits95.upper, -0.3);
  EXPECT_GT(effects.riskCorrelationLimits95.lower, -1);
  const Hovar::EffectSummary none = MakeProfile({study(0)}, Settings()).summary.effects;
  EXPECT_NEAR(none.riskCorrelation, 0, 0.4);
}

}  // namespace
