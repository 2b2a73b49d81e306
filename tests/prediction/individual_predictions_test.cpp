#include "prediction/individual_predictions.h"

#include <gtest/gtest.h>

#include <map>

#include "foundation/random/random_generator.h"
#include "models.h"
#include "support/data_sets.h"
#include "support/files.h"
#include "support/raised.h"

namespace {

using Hovar::IndividualPredictions;
using Testing::InterceptResults;
using Testing::Logistic;
using Testing::MakeDataSet;
using Testing::MakeResults;

struct Predicted {
  IndividualPredictions values;
  std::string output;
};

Predicted Predict(Hovar::DataSet& dataSet, const Hovar::RegressionResults& results,
                  std::int32_t burnin, std::int32_t steps) {
  Testing::OutputCapture capture;
  Predicted predicted;
  Hovar::ComputeIndividualPredictions(predicted.values, dataSet, results, {1, burnin, steps});
  predicted.output = capture.TakeOutput();
  return predicted;
}

const std::string kTitle = "Calculating individual predictions\n";

// One variable: the estimates differ, so that no model stands for another.
const Testing::ModelValues kTwoColumns = {{-1.0, 2.0}, {0.5, -0.25}, {1.0, 0.75},
                                          {-0.5, 1.5}, {0.25, -2.0}, {{0.2, 0.7}}};

TEST(IndividualPredictionsTest, ACompleteRecordGetsItsPlainPredictions) {
  //                                        y p z x
  Hovar::DataSet dataSet = MakeDataSet("A 0 0 1 0\nA 1 1 0 1\nB 1 0 1 1\n");
  const Predicted predicted = Predict(dataSet, MakeResults(kTwoColumns), 7, 9);
  EXPECT_EQ(predicted.output, kTitle) << "nothing is missing, so no pass is announced";
  struct Row {
    double yGivenZ, yGivenX, yGivenXWithoutP, mcmc, pGivenX, pGivenAll;
  };
  const Row rows[] = {
      {Logistic(0.25), Logistic(1), Logistic(-0.5), Logistic(0.25), Logistic(-1), 0},
      {Logistic(0.5), Logistic(1.75), 0, 0, Logistic(1), 1},
      {Logistic(0.25), Logistic(1.75), Logistic(1), Logistic(-1.75), Logistic(1), 0},
  };
  for (std::int32_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_DOUBLE_EQ(predicted.values.yGivenZ[i], rows[i].yGivenZ);
    EXPECT_DOUBLE_EQ(predicted.values.yGivenX[i], rows[i].yGivenX);
    EXPECT_DOUBLE_EQ(predicted.values.yGivenXWithoutP[i], rows[i].yGivenXWithoutP);
    EXPECT_DOUBLE_EQ(predicted.values.yGivenXWithoutPMcmc[i], rows[i].mcmc);
    EXPECT_DOUBLE_EQ(predicted.values.pGivenX[i], rows[i].pGivenX);
    EXPECT_EQ(predicted.values.pGivenAll[i], rows[i].pGivenAll);
  }
}

TEST(IndividualPredictionsTest, ExtremeLogOddsGiveZeroAndOne) {
  Hovar::DataSet dataSet = MakeDataSet("A 0 0 - -\n");
  const Predicted predicted = Predict(dataSet, InterceptResults(-800, 800), 0, 1);
  EXPECT_EQ(predicted.values.pGivenX[0], 0);
  EXPECT_EQ(predicted.values.yGivenX[0], 1);
}

TEST(IndividualPredictionsTest, BurninIsAnnouncedFromZeroAndAveragingFromOne) {
  struct Row {
    std::int32_t burnin;
    std::int32_t steps;
    const char* lines;
  };
  for (const Row& row :
       {Row{2, 3, "0/2\n1/2\n1/3\n2/3\n"}, Row{0, 1, ""}, Row{1, 1, "0/1\n"},
        Row{0, 4, "1/4\n2/4\n3/4\n"}, Row{1, 0, "0/1\n"}, Row{0, -5, ""}, Row{-3, 2, "1/2\n"}}) {
    SCOPED_TRACE(std::to_string(row.burnin) + " " + std::to_string(row.steps));
    Hovar::DataSet dataSet = MakeDataSet("A 1 . - -\n");
    EXPECT_EQ(Predict(dataSet, InterceptResults(0, 0), row.burnin, row.steps).output,
              kTitle + row.lines);
  }
}

TEST(IndividualPredictionsTest, TheFirstPassUsesTheStateThatTheBurninLeft) {
  // Without a burn-in all imputed values are 0, also where a missing cell came with its value bit.
  for (const std::int32_t steps : {1, 0, -1}) {
    SCOPED_TRACE(steps);
    Vell::RandomGenerator::Reset();
    Hovar::DataSet dataSet = MakeDataSet("A 1 * 1 *\n");
    const Predicted predicted = Predict(dataSet, MakeResults(kTwoColumns), 0, steps);
    EXPECT_DOUBLE_EQ(predicted.values.yGivenX[0], Logistic(1));
    EXPECT_DOUBLE_EQ(predicted.values.yGivenXWithoutP[0], Logistic(-0.5));
    EXPECT_EQ(predicted.values.pGivenAll[0], 0);
    // No word was drawn: this is the first one of a generator that was never seeded.
    EXPECT_EQ(Vell::RandomGenerator::NextWord(), 2422818384U);
  }
  // P = 1 is certain, so one sweep of burn-in sets it.
  Hovar::DataSet dataSet = MakeDataSet("A 1 . - -\n");
  const Predicted predicted = Predict(dataSet, InterceptResults(800, -2), 1, 1);
  EXPECT_EQ(predicted.values.pGivenAll[0], 1);
  EXPECT_EQ(predicted.values.yGivenXWithoutP[0], 0);
}

TEST(IndividualPredictionsTest, EachPassButTheFirstMakesASweepAndCountsAlike) {
  // Every sweep draws P = 1; the first of four passes still has P = 0.
  Hovar::DataSet dataSet = MakeDataSet("A 1 . - -\n");
  const Predicted predicted = Predict(dataSet, InterceptResults(800, 0), 0, 4);
  EXPECT_EQ(predicted.values.pGivenAll[0], 0.75);
  EXPECT_EQ(predicted.values.yGivenXWithoutP[0], 0.125);  // (1/2 + 0 + 0 + 0) / 4
  EXPECT_EQ(predicted.values.yGivenX[0], 0.5);
  EXPECT_EQ(predicted.values.yGivenZ[0], 0.5);
  EXPECT_EQ(predicted.values.pGivenX[0], 1);
}

TEST(IndividualPredictionsTest, CompleteRecordsKeepTheirSinglePrediction) {
  // A sum of 1000 equal values over 1000 would differ in its last bits.
  Hovar::DataSet alone = MakeDataSet("A 1 0 1 1\n");
  Hovar::DataSet dataSet = MakeDataSet("A 1 0 1 1\nA 1 . 0 .\n");
  const Hovar::RegressionResults results = MakeResults(kTwoColumns);
  const Predicted expected = Predict(alone, results, 0, 1);
  const Predicted predicted = Predict(dataSet, results, 3, 1000);
  EXPECT_EQ(predicted.values.yGivenZ[0], expected.values.yGivenZ[0]);
  EXPECT_EQ(predicted.values.yGivenX[0], expected.values.yGivenX[0]);
  EXPECT_EQ(predicted.values.yGivenXWithoutP[0], expected.values.yGivenXWithoutP[0]);
  EXPECT_EQ(predicted.values.yGivenXWithoutPMcmc[0], expected.values.yGivenXWithoutPMcmc[0]);
  EXPECT_EQ(predicted.values.pGivenX[0], expected.values.pGivenX[0]);
}

TEST(IndividualPredictionsTest, WithoutTheOutcomeAMissingPStaysZero) {
  Hovar::DataSet dataSet = MakeDataSet("A 0 . - -\n");
  const Predicted predicted = Predict(dataSet, InterceptResults(800, 0), 5, 5);
  EXPECT_EQ(predicted.values.pGivenAll[0], 0);
  EXPECT_EQ(predicted.values.yGivenXWithoutP[0], 0.5);
}

// A coefficient file without the intercept's row takes the intercept from the data. A missing cell
// of the variable that is column 0 then stays 0.
TEST(IndividualPredictionsTest, WithoutAnInterceptTheFirstVariableIsNotImputed) {
  Vell::RandomGenerator::Reset();
  Hovar::DataSet one = Testing::MakeDataSetWithoutIntercept("A 1 0 1 .\nA 0 0 1 1\n");
  const Predicted alone = Predict(one, MakeResults({{2}, {3}, {4}, {5}, {6}, {{0.5, 0.5}}}), 3, 4);
  EXPECT_EQ(alone.output, kTitle + "0/3\n1/3\n2/3\n1/4\n2/4\n3/4\n") << "a record is incomplete";
  EXPECT_DOUBLE_EQ(alone.values.yGivenZ[0], Logistic(3));
  EXPECT_EQ(alone.values.yGivenX[0], 0.5);
  EXPECT_EQ(alone.values.yGivenXWithoutP[0], 0.5);
  EXPECT_EQ(alone.values.yGivenXWithoutPMcmc[0], 0.5);
  EXPECT_EQ(alone.values.pGivenX[0], 0.5);
  EXPECT_DOUBLE_EQ(alone.values.yGivenX[1], Logistic(4));
  EXPECT_EQ(Vell::RandomGenerator::NextWord(), 2422818384U) << "a word was drawn";

  // Of three the other two have a prior of 1 and of 0, so that every sweep sets them so.
  Hovar::DataSet three = Testing::MakeDataSetWithoutIntercept("A 1 0 110 ...\n");
  const Predicted predicted = Predict(
      three,
      MakeResults({{1, 2, 4}, {1, 2, 4}, {1, 2, 4}, {1, 2, 4}, {1, 2, 4}, {{0, 1}, {0, 1}, {}}}), 1,
      3);
  EXPECT_DOUBLE_EQ(predicted.values.yGivenX[0], Logistic(2));
  EXPECT_DOUBLE_EQ(predicted.values.yGivenZ[0], Logistic(3));
  EXPECT_DOUBLE_EQ(predicted.values.pGivenX[0], Logistic(2));
}

TEST(IndividualPredictionsTest, NoRecordsGiveNoPredictions) {
  Hovar::DataSet dataSet = MakeDataSet("");
  const Predicted predicted = Predict(dataSet, InterceptResults(0, 0), 2, 2);
  EXPECT_EQ(predicted.values.yGivenX.Size(), 0);
  EXPECT_EQ(predicted.output, kTitle);
}

constexpr std::size_t kEnumeratedColumns = 5;

/// The model of the enumerated records: Column, BetaY, BetaP, PriorZ0, PriorZ1.
Testing::ModelValues EnumeratedModel() {
  const auto model = Testing::ReadCsv(Testing::ReferenceFile("imputation_model.csv"));
  EXPECT_EQ(model.size(), kEnumeratedColumns + 1);
  Testing::ModelValues values;
  for (std::size_t j = 0; j < kEnumeratedColumns; ++j) {
    values.yGivenXWithoutPMcmc.push_back(std::stod(model.at(j + 1)[1]));
    values.pGivenX.push_back(std::stod(model[j + 1][2]));
    if (j > 0) {
      values.tables.push_back({std::stod(model[j + 1][3]), std::stod(model[j + 1][4])});
    }
  }
  // The sweep does not use the other three; they need only be other numbers.
  values.yGivenZ = {0.1, 0.2, 0.3, 0.4, 0.5};
  values.yGivenX = {-0.3, 0.8, -1.2, 0.4, 1.6};
  values.yGivenXWithoutP = {0.7, -0.6, 0.5, 1.4, -0.9};
  return values;
}

/// The text of a data set of the enumerated records: Record, Y, P, X1 .. X4, Z1 .. Z4.
std::string EnumeratedRecords() {
  std::string text;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("imputation_records.csv"))) {
    if (row[0] != "Record") {
      const auto cell = [&row](std::size_t j) { return row[j].empty() ? "." : row[j]; };
      text += "A " + cell(1) + " " + cell(2) + " " + row[7] + row[8] + row[9] + row[10] + " " +
              cell(3) + cell(4) + cell(5) + cell(6) + "\n";
    }
  }
  return text;
}

struct Expectation {
  double yGivenX = 0;
  double yGivenXWithoutP = 0;
  double mcmc = 0;
  double pGivenX = 0;
  double pGivenAll = 0;
};

/// Of each enumerated record, over all states of its missing cells: Record, P, X1 .. X4,
/// Probability.
std::map<std::int32_t, Expectation> EnumeratedExpectations(const Testing::ModelValues& values) {
  std::map<std::int32_t, Expectation> expected;
  for (const auto& state : Testing::ReadCsv(Testing::ReferenceFile("imputation.csv"))) {
    if (state[0] == "Record") {
      continue;
    }
    Expectation& record = expected[std::stoi(state[0])];
    const double p = std::stod(state[1]);
    const double probability = std::stod(state[6]);
    const auto predict = [&state](const std::vector<double>& beta) {
      double sum = beta[0];
      for (std::size_t j = 1; j < kEnumeratedColumns; ++j) {
        sum += state[j + 1] == "1" ? beta[j] : 0;
      }
      return Logistic(sum);
    };
    record.yGivenX += probability * predict(values.yGivenX);
    record.yGivenXWithoutP += probability * (1 - p) * predict(values.yGivenXWithoutP);
    record.mcmc += probability * (1 - p) * predict(values.yGivenXWithoutPMcmc);
    record.pGivenX += probability * predict(values.pGivenX);
    record.pGivenAll += probability * p;
  }
  return expected;
}

// Averages over many passes against the exact distribution of the missing cells, which was
// enumerated. An average of n = 100,000 passes of values in [0, 1] has a standard deviation of at
// most 0.5 * sqrt(tau / n), where tau, the number of passes per independent one, is far below 10
// for these records: 0.005. The bound 0.025 is five of these, and with 25 averages a correct
// program misses it with a probability below 25 * 6e-7 = 1.5e-5. (The seed is fixed, so it either
// always passes or never.)
TEST(IndividualPredictionsTest, AveragesOverManyPassesApproachTheExactExpectations) {
  const Testing::ModelValues values = EnumeratedModel();
  const std::map<std::int32_t, Expectation> expected = EnumeratedExpectations(values);
  Hovar::DataSet dataSet = MakeDataSet(EnumeratedRecords());
  ASSERT_EQ(static_cast<std::size_t>(dataSet.recordCount), expected.size());
  Vell::RandomGenerator::Seed(362436069, 521288629);
  const Predicted predicted = Predict(dataSet, MakeResults(values), 100, 100'000);
  constexpr double kBound = 0.025;
  for (const auto& [i, record] : expected) {
    SCOPED_TRACE("record " + std::to_string(i));
    EXPECT_NEAR(predicted.values.yGivenX[i], record.yGivenX, kBound);
    EXPECT_NEAR(predicted.values.yGivenXWithoutP[i], record.yGivenXWithoutP, kBound);
    EXPECT_NEAR(predicted.values.yGivenXWithoutPMcmc[i], record.mcmc, kBound);
    EXPECT_NEAR(predicted.values.pGivenX[i], record.pGivenX, kBound);
    EXPECT_NEAR(predicted.values.pGivenAll[i], record.pGivenAll, kBound);
  }
}

}  // namespace
