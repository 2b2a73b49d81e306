#include "prediction/c_statistics.h"

#include <gtest/gtest.h>

#include "foundation/random/random_generator.h"
#include "mcmc/imputation_sweep.h"
#include "models.h"
#include "support/data_sets.h"
#include "support/pairwise_concordance.h"
#include "support/raised.h"
#include "support/seeded_random.h"
#include "support/streams.h"

namespace {

using Hovar::CStatisticValues;
using Testing::InterceptResults;
using Testing::MakeDataSet;
using Testing::VectorOf;

struct Computed {
  CStatisticValues values;
  std::string output;
};

Computed Compute(Hovar::DataSet& dataSet, const Hovar::RegressionResults& results,
                 const Hovar::IndividualPredictions& predictions, std::int32_t burnin,
                 std::int32_t steps) {
  Testing::OutputCapture capture;
  Computed computed;
  Hovar::ComputeCStatistics(computed.values, dataSet, results, predictions, {1, burnin, steps});
  computed.output = capture.TakeOutput();
  return computed;
}

const std::string kLabels = "Y|Z\nY|X\nP|X\nP|YPZX\n";

/// Predictions with a column of its own for each statistic.
Hovar::IndividualPredictions SixRecords() {
  Hovar::IndividualPredictions predictions;
  predictions.yGivenZ = VectorOf({0.9, 0.6, 0.6, 0.2, 0.1, 0.3});
  predictions.yGivenX = VectorOf({0.5, 0.5, 0.5, 0.5, 0.5, 0.5});
  predictions.yGivenXWithoutP = VectorOf({0.0, 0.5, 0.1, 0.4, 0.2, 0.3});
  predictions.yGivenXWithoutPMcmc = VectorOf({9.9, 0.1, 0.5, 0.2, 0.4, 0.3});
  predictions.pGivenX = VectorOf({0.3, 0.1, 0.2, 0.3, 0.4, 0.5});
  predictions.pGivenAll = VectorOf({1, 0, 0, 0, 0, 0});
  return predictions;
}

TEST(CStatisticsTest, CompleteRecordsGiveTheStatisticsWorkedByHand) {
  Hovar::DataSet dataSet =
      MakeDataSet("A 1 1 - -\nA 1 0 - -\nA 0 0 - -\nB 1 0 - -\nB 0 0 - -\nB 0 0 - -\n");
  const Computed computed = Compute(dataSet, InterceptResults(0, 0), SixRecords(), 5, 7);
  // Nothing is missing: one pass, whatever the settings say.
  EXPECT_EQ(computed.output, kLabels + "0/1\n");
  // 0.9 > all 3; 0.6 = 0.6, > 2; 0.2 > 0.1: 6 + 5 + 2 of 2 * 9.
  EXPECT_EQ(computed.values.yGivenZ, 13.0 / 18.0);
  EXPECT_EQ(computed.values.yGivenX, 0.5);
  // Without the record with P = 1: 0.5, 0.4 against 0.1, 0.2, 0.3, and 0.1, 0.2 against the larger.
  EXPECT_EQ(computed.values.yGivenXWithoutP, 1.0);
  EXPECT_EQ(computed.values.yGivenXWithoutPMcmc, 0.0);
  // 0.3 against 0.1, 0.2, 0.3, 0.4, 0.5: 2 + 2 + 1 of 10.
  EXPECT_EQ(computed.values.pGivenX, 0.5);
  EXPECT_EQ(computed.values.pGivenAll, 1.0);
}

TEST(CStatisticsTest, TheStatisticsOfPLookAtCompleteRecordsOnly) {
  // The second record lacks P, the third an X; of the rest P is 1 in the first.
  Hovar::DataSet dataSet =
      MakeDataSet("A 1 1 0 0\nA 1 . 0 0\nA 1 1 0 .\nB 1 0 0 0\nB 0 0 0 0\nB 0 0 0 .\n");
  const Testing::ModelValues zeros = {{0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {{0.5, 0.5}}};
  const Computed computed = Compute(dataSet, Testing::MakeResults(zeros), SixRecords(), 0, 1);
  EXPECT_EQ(computed.values.pGivenX, 0.25);  // 0.3 against 0.3 and 0.4: 1 of 4
  EXPECT_EQ(computed.values.pGivenAll, 1.0);
  // Those of Y look at all: 0.9, 0.6, 0.6, 0.2 against 0.1, 0.3 score 4 + 4 + 4 + 2 of 16.
  EXPECT_EQ(computed.values.yGivenZ, 0.875);
}

// As for predictions: column 0 is a variable when the coefficient file lacks the intercept's row.
TEST(CStatisticsTest, WithoutAnInterceptTheFirstVariableIsNotImputed) {
  Vell::RandomGenerator::Reset();
  Hovar::DataSet dataSet = Testing::MakeDataSetWithoutIntercept(
      "A 1 1 1 1\nA 1 0 1 .\nA 0 0 1 0\nB 1 0 0 .\nB 0 0 1 .\nB 0 0 1 0\n");
  const Computed computed = Compute(dataSet, InterceptResults(0, 0), SixRecords(), 1, 2);
  EXPECT_EQ(computed.output, kLabels + "0/1\n0/2\n1/2\n");
  EXPECT_EQ(computed.values.yGivenXWithoutP, 1.0);
  EXPECT_EQ(computed.values.yGivenXWithoutPMcmc, 0.0);
  EXPECT_EQ(computed.values.pGivenX, 0.5);  // 0.3 against 0.2 and 0.5
  EXPECT_EQ(Testing::Describe(dataSet, 0),
            "A 1 1 1 1\nA 1 0 1 .\nA 0 0 1 0\nB 1 0 0 .\nB 0 0 1 .\nB 0 0 1 0\n");
  EXPECT_EQ(Vell::RandomGenerator::NextWord(), 2422818384U) << "a word was drawn";
}

TEST(CStatisticsTest, SweepsAreAnnouncedFromZero) {
  struct Row {
    std::int32_t burnin;
    std::int32_t steps;
    const char* lines;
  };
  for (const Row& row : {Row{2, 3, "0/2\n1/2\n0/3\n1/3\n2/3\n"}, Row{0, 1, "0/1\n"},
                         Row{1, 0, "0/1\n"}, Row{0, 0, ""}, Row{-2, -2, ""}, Row{-2, 1, "0/1\n"}}) {
    SCOPED_TRACE(std::to_string(row.burnin) + " " + std::to_string(row.steps));
    Hovar::DataSet dataSet = MakeDataSet("A 1 . - -\nA 0 0 - -\n");
    EXPECT_EQ(Compute(dataSet, InterceptResults(0, 0), SixRecords(), row.burnin, row.steps).output,
              kLabels + row.lines);
  }
}

TEST(CStatisticsTest, WithoutAMeasuredSweepTheAveragesAreZero) {
  Hovar::DataSet dataSet = MakeDataSet("A 1 . - -\nA 0 0 - -\n");
  const Computed computed = Compute(dataSet, InterceptResults(0, 0), SixRecords(), 3, 0);
  EXPECT_EQ(computed.values.yGivenXWithoutP, 0.0);
  EXPECT_EQ(computed.values.yGivenXWithoutPMcmc, 0.0);
  EXPECT_EQ(computed.values.yGivenZ, 1.0);
}

TEST(CStatisticsTest, OneResponseOnlyGivesMinusOne) {
  for (const char* text : {"A 1 1 - -\nA 1 1 - -\n", "A 0 0 - -\nA 0 0 - -\n"}) {
    SCOPED_TRACE(text);
    Hovar::DataSet dataSet = MakeDataSet(text);
    const Computed computed = Compute(dataSet, InterceptResults(0, 0), SixRecords(), 0, 1);
    EXPECT_EQ(computed.values.yGivenZ, -1.0);
    EXPECT_EQ(computed.values.yGivenX, -1.0);
    EXPECT_EQ(computed.values.yGivenXWithoutP, -1.0);
    EXPECT_EQ(computed.values.yGivenXWithoutPMcmc, -1.0);
    EXPECT_EQ(computed.values.pGivenX, -1.0);
    EXPECT_EQ(computed.values.pGivenAll, -1.0);
  }
}

TEST(CStatisticsTest, ASweepWithoutPairsEntersWithMinusOne) {
  // P of the only event is 1 in every sweep, so no event is left.
  Hovar::DataSet dataSet = MakeDataSet("A 1 . - -\nA 0 0 - -\n");
  const Computed certain = Compute(dataSet, InterceptResults(800, 0), SixRecords(), 0, 4);
  EXPECT_EQ(certain.values.yGivenXWithoutP, -1.0);
  // With P = 0 in every sweep the event's 0.0 stands against 0.5.
  const Computed never = Compute(dataSet, InterceptResults(-800, 0), SixRecords(), 0, 4);
  EXPECT_EQ(never.values.yGivenXWithoutP, 0.0);
  EXPECT_EQ(never.values.yGivenXWithoutPMcmc, 1.0);  // 9.9 against 0.1
  // In between the averages are (k * -1 + (n - k) * s) / n for the k sweeps with P = 1.
  Vell::RandomGenerator::Seed(17, 19);
  constexpr double kSteps = 64;
  const Computed mixed = Compute(dataSet, InterceptResults(0, 0), SixRecords(), 0, 64);
  const double sweepsWithP = -mixed.values.yGivenXWithoutP * kSteps;
  EXPECT_EQ(sweepsWithP, std::floor(sweepsWithP));
  EXPECT_GT(sweepsWithP, 0);
  EXPECT_LT(sweepsWithP, kSteps);
  EXPECT_EQ(mixed.values.yGivenXWithoutPMcmc, (kSteps - 2 * sweepsWithP) / kSteps);
}

constexpr std::int32_t kMixedRecords = 60;

/// Records of one hospital with one variable; some P and X are missing.
std::string MixedRecords(Testing::SeededRandom& random) {
  std::string text;
  for (std::int32_t i = 0; i < kMixedRecords; ++i) {
    const bool y = random.Bit();
    const int p = random.Integer(0, 3);
    text += std::string(y ? "A 1 " : "A 0 ") + (p == 0 ? "." : p == 1 && y ? "1" : "0");
    text += random.Bit() ? " 1 " : " 0 ";
    const int x = random.Integer(0, 4);
    text += x == 0 ? ".\n" : x <= 2 ? "0\n" : "1\n";
  }
  return text;
}

/// A prediction of each of them, with ties.
Vell::Vector MixedPredictions(Testing::SeededRandom& random) {
  Vell::Vector values(kMixedRecords);
  for (double& value : values) {
    value = random.Integer(0, 9) / 10.0;
  }
  return values;
}

/// The statistic of the records whose P is 0 now, by counting pairs.
double PairwiseWithoutP(const Hovar::DataSet& data, const Vell::Vector& predicted) {
  std::vector<double> events;
  std::vector<double> others;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    if (!data.p.Value(i)) {
      (data.y.Get(i) ? events : others).push_back(predicted[i]);
    }
  }
  return Testing::PairwiseStatistic(events, others);
}

// The averages against the pairwise count after every single sweep of a copy of the data.
TEST(CStatisticsTest, TheAveragesAreThoseOverTheMeasuredSweeps) {
  Testing::SeededRandom random(42);
  SCOPED_TRACE(random.Text());
  const std::string text = MixedRecords(random);
  Hovar::IndividualPredictions predictions;
  predictions.yGivenZ = predictions.yGivenX = predictions.pGivenX = predictions.pGivenAll =
      MixedPredictions(random);
  predictions.yGivenXWithoutP = MixedPredictions(random);
  predictions.yGivenXWithoutPMcmc = MixedPredictions(random);
  const Testing::ModelValues values = {{0.2, -0.4}, {9, 9},      {9, 9},
                                       {9, 9},      {-0.5, 0.9}, {{0.3, 0.6}}};
  constexpr std::int32_t kBurnin = 3;
  constexpr std::int32_t kSteps = 8;

  Hovar::DataSet copy = MakeDataSet(text);
  Vell::RandomGenerator::Seed(1234, 5678);
  Hovar::PrepareImputation(copy);
  const Vell::Vector y = VectorOf(values.yGivenXWithoutPMcmc);
  const Vell::Vector p = VectorOf(values.pGivenX);
  const Vell::Vector prior = VectorOf({0.3, 0.6});
  double sum = 0;
  double sumMcmc = 0;
  for (std::int32_t sweep = 0; sweep < kBurnin + kSteps; ++sweep) {
    Hovar::RunImputationSweep(copy, {y, p, prior});
    if (sweep >= kBurnin) {
      sum += PairwiseWithoutP(copy, predictions.yGivenXWithoutP);
      sumMcmc += PairwiseWithoutP(copy, predictions.yGivenXWithoutPMcmc);
    }
  }

  Hovar::DataSet dataSet = MakeDataSet(text);
  Vell::RandomGenerator::Seed(1234, 5678);
  const Computed computed =
      Compute(dataSet, Testing::MakeResults(values), predictions, kBurnin, kSteps);
  EXPECT_DOUBLE_EQ(computed.values.yGivenXWithoutP, sum / kSteps);
  EXPECT_DOUBLE_EQ(computed.values.yGivenXWithoutPMcmc, sumMcmc / kSteps);
}

TEST(CStatisticsTest, TooFewPredictionsAreFoundBehindTheFirstLabel) {
  Hovar::DataSet dataSet = MakeDataSet("A 1 1 - -\nA 0 0 - -\nA 0 0 - -\n");
  Hovar::IndividualPredictions predictions;
  predictions.Resize(2);
  CStatisticValues values;
  Testing::OutputCapture capture;
  EXPECT_THROW(
      Hovar::ComputeCStatistics(values, dataSet, InterceptResults(0, 0), predictions, {1, 0, 1}),
      Vell::Exceptions::InvalidArgumentException);
  EXPECT_EQ(capture.TakeError(), "Error: Index out of range\n");
  EXPECT_EQ(capture.TakeOutput(), "Y|Z\n");
}

TEST(CStatisticsFileTest, HoldsTheSixInTheOrderOfThePredictions) {
  CStatisticValues values;
  values.yGivenZ = 0.25;
  values.yGivenX = 1.0 / 3;
  values.yGivenXWithoutP = 0;
  values.yGivenXWithoutPMcmc = 1;
  values.pGivenX = -1.0;
  values.pGivenAll = 0.98765432;
  Testing::OutputStream output;
  Hovar::WriteCStatistics(values, output.Writer());
  EXPECT_EQ(output.Content(),
            "Estimate,C-Statistics\n"
            "E[Y|Z],0.25\n"
            "E[Y|X],0.333333\n"
            "\"E[Y|X,P=0]\",0\n"
            "\"E[Y|X,P=0]-MCMC\",1\n"
            "E[P|X],-1\n"
            "E[P|YPXZ],0.987654\n");
}

}  // namespace
