#include "profiling/completed_study.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/random/random_generator.h"
#include "prediction/individual_predictions.h"
#include "prediction/models.h"
#include "support/data_sets.h"
#include "support/raised.h"

namespace {

using Testing::MakeDataSet;
using Testing::MakeResults;

constexpr Vell::SeedWords kSeed{362436069, 521288629};

/// Records of two hospitals with missing P and X in most of them.
std::string Records() {
  std::string text;
  for (int i = 0; i < 120; ++i) {
    const std::string y = i % 3 == 0 ? "1" : "0";
    const std::string p = i % 3 == 0 && i % 2 == 0 ? "." : i % 15 == 3 ? "1" : "0";
    const std::string x = i % 4 == 0 ? ".0" : i % 5 == 0 ? "1." : i % 7 == 0 ? "01" : "..";
    text += (i < 70 ? "A " : "B ") + y + " " + p + " " + (i % 2 == 0 ? "10 " : "01 ") + x + "\n";
  }
  return text;
}

Testing::ModelValues Values() {
  return {{-0.5, 0.4, 1.0},  {0, 0, 0},         {0.1, 0.2, 0.3},
          {0.1, -0.7, 0.25}, {-0.8, 1.1, -0.6}, {{0.3, 0.6}, {0.2, 0.9}}};
}

struct Drawn {
  std::vector<double> probability;
  std::vector<int> outcome;
  std::vector<int> start;

  bool operator==(const Drawn&) const = default;
};

Drawn Copy(const Hovar::CompletedStudy& study) {
  return {{study.probability.begin(), study.probability.end()},
          {study.outcome.begin(), study.outcome.end()},
          {study.hospitalStart.begin(), study.hospitalStart.end()}};
}

Drawn Draw(const std::vector<std::int32_t>& numbers, double shiftOfP = 0) {
  Hovar::DataSet dataSet = MakeDataSet(Records());
  Hovar::CompletedStudies studies(dataSet, MakeResults(Values()), {kSeed, 3, shiftOfP});
  Hovar::CompletedStudy study;
  for (const std::int32_t number : numbers) {
    studies.Draw(study, number, std::vector<double>{-0.8, 1.1, -0.6});
  }
  return Copy(study);
}

TEST(CompletedStudyTest, StudyOneIsThePredictionOfTheSameSeedCoefficientsAndSweeps) {
  const Drawn drawn = Draw({1});

  Hovar::DataSet dataSet = MakeDataSet(Records());
  Vell::RandomGenerator::Seed(kSeed.z, kSeed.w);
  Hovar::IndividualPredictions predictions;
  const Testing::OutputCapture capture;
  Hovar::ComputeIndividualPredictions(predictions, dataSet, MakeResults(Values()), {1, 3, 1});
  Drawn expected;
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (i == 0 || i == 70) {
      expected.start.push_back(static_cast<int>(expected.outcome.size()));
    }
    if (predictions.pGivenAll[i] == 0) {
      expected.probability.push_back(predictions.yGivenXWithoutPMcmc[i]);
      expected.outcome.push_back(dataSet.y.Get(i) ? 1 : 0);
    }
  }
  expected.start.push_back(static_cast<int>(expected.outcome.size()));
  EXPECT_LT(expected.outcome.size(), 120U) << "some P must be 1";
  EXPECT_EQ(drawn.probability, expected.probability) << "to the last bit";
  EXPECT_EQ(drawn.outcome, expected.outcome);
  EXPECT_EQ(drawn.start, expected.start);
}

TEST(CompletedStudyTest, AStudyDoesNotDependOnThoseDrawnBefore) {
  const Drawn alone = Draw({3});
  EXPECT_EQ(Draw({1, 2, 3}), alone);
  EXPECT_EQ(Draw({3, 7, 3}), alone);
  EXPECT_NE(Draw({2}), alone);
}

// A study has the words that the generator reaches after one stride for each study before it.
TEST(CompletedStudyTest, EachStudyHasTheSeedOfTheChainOfItsNumber) {
  const Drawn third = Draw({3});
  Hovar::DataSet dataSet = MakeDataSet(Records());
  const Vell::SeedWords seed = Vell::SeedOfChain(kSeed, 3);
  Hovar::CompletedStudies studies(dataSet, MakeResults(Values()), {seed, 3, 0});
  Hovar::CompletedStudy study;
  studies.Draw(study, 1, std::vector<double>{-0.8, 1.1, -0.6});
  EXPECT_EQ(Copy(study), third);
}

TEST(CompletedStudyTest, AShiftOfPMovesTheImputedPAndNothingElse) {
  // Of records with the outcome and a missing P, log-odds of 40 more or less leave no doubt.
  std::size_t missing = 0;
  std::size_t present = 0;
  for (int i = 0; i < 120; ++i) {
    missing += i % 3 == 0 && i % 2 == 0 ? 1 : 0;
    present += (i % 3 != 0 || i % 2 != 0) && i % 15 == 3 ? 1 : 0;
  }
  EXPECT_EQ(Draw({1}, 40).outcome.size(), 120 - present - missing);
  EXPECT_EQ(Draw({1}, -40).outcome.size(), 120 - present);
}

TEST(CompletedStudyTest, DrawsAreEvenlySpaced) {
  EXPECT_EQ(Hovar::EvenlySpacedDraw(1, 4, 4), 0);
  EXPECT_EQ(Hovar::EvenlySpacedDraw(4, 4, 4), 3);
  EXPECT_EQ(Hovar::EvenlySpacedDraw(1, 100, 1000), 5);
  EXPECT_EQ(Hovar::EvenlySpacedDraw(100, 100, 1000), 995);
  EXPECT_EQ(Hovar::EvenlySpacedDraw(2, 3, 10), 5);  // the middle of [3.33, 6.67)
  EXPECT_EQ(Hovar::EvenlySpacedDraw(3, 4, 2), 1);   // two studies share a draw
  EXPECT_EQ(Hovar::EvenlySpacedDraw(2, 4, 2), 0);
  EXPECT_EQ(Hovar::EvenlySpacedDraw(7, 7, 2'000'000'000), 1'857'142'857);
}

}  // namespace
