#include "mcmc/imputation_sweep.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "foundation/random/random_generator.h"
#include "support/data_sets.h"
#include "support/files.h"
#include "support/matrices.h"

namespace {

using Hovar::DataSet;
using Testing::Describe;
using Testing::MakeDataSet;
using Testing::MakeDataSetWithoutIntercept;
using Testing::MakeVector;
using Vell::RandomGenerator;

/// The coefficients and priors of a sweep.
struct Coefficients {
  std::vector<double> y;      // of [Y|X,P=0]
  std::vector<double> p;      // of [P|X]
  std::vector<double> prior;  // two for each column after the intercept
};

void Sweep(DataSet& data, const Coefficients& coefficients) {
  const Vell::Vector y = MakeVector(coefficients.y);
  const Vell::Vector p = MakeVector(coefficients.p);
  const Vell::Vector prior = MakeVector(coefficients.prior);
  RunImputationSweep(data, {y, p, prior});
}

/// The uniform draws that follow a seed.
std::vector<double> DrawsAfter(std::uint32_t seed, std::size_t count) {
  RandomGenerator::Seed(seed, 1);
  std::vector<double> draws;
  for (std::size_t i = 0; i < count; ++i) {
    draws.push_back(RandomGenerator::NextWord() * 0x1p-32);
  }
  RandomGenerator::Seed(seed, 1);
  return draws;
}

/// The number of words drawn since DrawsAfter(seed, ...); at most 100.
int WordsDrawnSince(std::uint32_t seed) {
  const std::array<std::uint32_t, 2> next = {RandomGenerator::NextWord(),
                                             RandomGenerator::NextWord()};
  RandomGenerator::Seed(seed, 1);
  std::array<std::uint32_t, 2> window = {RandomGenerator::NextWord(), RandomGenerator::NextWord()};
  for (int drawn = 0; drawn <= 100; ++drawn) {
    if (window == next) {
      return drawn;
    }
    window = {window[1], RandomGenerator::NextWord()};
  }
  return -1;
}

/// Runs one sweep after a seed and gives the cells.
std::string SweepOf(const std::string& text, const Coefficients& coefficients, std::uint32_t seed) {
  DataSet data = MakeDataSet(text);
  RandomGenerator::Seed(seed, 1);
  Sweep(data, coefficients);
  return Describe(data);
}

TEST(LogisticTest, IsOneOverOnePlusExp) {
  EXPECT_EQ(Hovar::Logistic(0), 0.5);
  EXPECT_NEAR(Hovar::Logistic(std::log(3)), 0.75, 1e-15);
  EXPECT_NEAR(Hovar::Logistic(-std::log(3)), 0.25, 1e-15);
  EXPECT_EQ(Hovar::Logistic(800), 1.0);
  EXPECT_EQ(Hovar::Logistic(-800), 0.0);
  EXPECT_TRUE(std::isnan(Hovar::Logistic(NAN)));
}

TEST(PrepareImputationTest, ClearsTheValuesOfMissingCellsAndNothingElse) {
  DataSet data = MakeDataSet(
      "A 1 * 0110 1*0.\n"
      "A 1 1 1111 1111\n"
      "B 0 . 0000 **01\n"
      "B 0 * 1010 0000\n"
      "B 1 0 0101 ...*\n");
  PrepareImputation(data);
  EXPECT_EQ(Describe(data),
            "A 1 . 0110 1.0.\n"
            "A 1 1 1111 1111\n"
            "B 0 . 0000 ..01\n"
            "B 0 . 1010 0000\n"
            "B 1 0 0101 ....\n");
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    EXPECT_TRUE(data.x.Value(i, 0)) << i;
  }
}

// A coefficient file may lack the intercept's row; the first variable is column 0 then.
TEST(PrepareImputationTest, ClearsTheFirstColumnToo) {
  DataSet data = MakeDataSetWithoutIntercept("A 1 0 011 *1.\nA 0 0 110 1*0\n");
  PrepareImputation(data);
  EXPECT_EQ(Describe(data, 0), "A 1 0 011 .1.\nA 0 0 110 1.0\n");
}

TEST(ImputationSweepTest, WithoutMissingValuesNothingChangesAndNoWordIsDrawn) {
  const std::string text = "A 1 0 01 10\nA 1 1 11 00\nB 0 0 00 11\n";
  DataSet data = MakeDataSet(text);
  DrawsAfter(3, 1);
  Sweep(data, {{1, 2, 3}, {1, 2, 3}, {0.5, 0.5, 0.5, 0.5}});
  EXPECT_EQ(Describe(data), text);
  EXPECT_EQ(WordsDrawnSince(3), 0);
}

TEST(ImputationSweepTest, PriorOfZeroOrOneDecidesWithoutADraw) {
  // Column 1: prior 0 where Z = 0 and 1 where Z = 1; column 2 the other way round. The value that
  // a cell had does not matter.
  const Coefficients coefficients = {{0.3, 5, -5}, {0.1, -5, 5}, {0, 1, 1, 0}};
  DataSet data = MakeDataSet("A 1 0 00 ..\nA 1 0 11 **\nA 0 0 10 .*\nA 1 1 01 *.\n");
  DrawsAfter(3, 1);
  Sweep(data, coefficients);
  EXPECT_EQ(Describe(data), "A 1 0 00 .*\nA 1 0 11 *.\nA 0 0 10 **\nA 1 1 01 ..\n");
  EXPECT_EQ(WordsDrawnSince(3), 0);
}

TEST(ImputationSweepTest, MissingPWithoutTheOutcomeStaysZeroWithoutADraw) {
  for (const double intercept : {-800.0, 0.0, 800.0}) {
    DataSet data = MakeDataSet("A 0 . 0 0\nA 0 . 0 1\n");
    DrawsAfter(3, 1);
    Sweep(data, {{0, 0}, {intercept, 0}, {0.5, 0.5}});
    EXPECT_EQ(Describe(data), "A 0 . 0 0\nA 0 . 0 1\n");
    EXPECT_EQ(WordsDrawnSince(3), 0);
  }
}

TEST(ImputationSweepTest, FirstColumnIsNeverDrawn) {
  // One variable is left: there is no prior at all.
  for (const char* record : {"A 1 0 0 .\n", "A 1 0 1 .\n", "A 0 0 1 .\n", "A 1 1 1 .\n"}) {
    SCOPED_TRACE(record);
    DataSet data = MakeDataSetWithoutIntercept(record);
    EXPECT_EQ(data.completeCount, 0);
    DrawsAfter(3, 1);
    Sweep(data, {{9}, {-9}, {}});
    EXPECT_EQ(Describe(data, 0), record);
    EXPECT_TRUE(data.recordHasMissing.Get(0));
    EXPECT_EQ(WordsDrawnSince(3), 0);
  }
  // P is drawn all the same.
  DataSet data = MakeDataSetWithoutIntercept("A 1 . 1 .\n");
  DrawsAfter(3, 1);
  Sweep(data, {{0}, {800}, {}});  // x a = 0, so a posterior of 2/3
  EXPECT_EQ(Describe(data, 0), DrawsAfter(3, 1)[0] < 2.0 / 3 ? "A 1 * 1 .\n" : "A 1 . 1 .\n");
}

TEST(ImputationSweepTest, WithoutTheInterceptTheOtherColumnsAreDrawn) {
  // With coefficients of 0 each cell follows its prior, and P is 1 with probability 2/3.
  const Coefficients coefficients = {{9, 0, 0}, {-9, 0, 0}, {0.3, 0.8, 0.5, 0.6}};
  for (std::uint32_t seed = 1; seed <= 50; ++seed) {
    const std::vector<double> u = DrawsAfter(seed, 4);
    const auto cell = [&](std::size_t draw, double probability) {
      return probability > u[draw] ? "*" : ".";
    };
    DataSet data = MakeDataSetWithoutIntercept("A 1 . 110 ...\nA 1 0 111 .1.\nA 0 . 101 .01\n");
    Sweep(data, coefficients);
    EXPECT_EQ(Describe(data, 0), std::string("A 1 ") + cell(2, 2.0 / 3) + " 110 ." + cell(0, 0.8) +
                                     cell(1, 0.5) + "\nA 1 0 111 .1" + cell(3, 0.6) +
                                     "\nA 0 . 101 .01\n");
    EXPECT_EQ(WordsDrawnSince(seed), 4);
  }
}

/// A cell of a record, and the probability that it becomes 1.
struct PosteriorCase {
  std::string record;  // one missing cell is drawn, the last one
  Coefficients coefficients;
  double posterior;
};

/// Expects that the cell is 1 exactly when its probability is above the one draw. Seeds with draws
/// just below and just above the probability are looked for, so that a probability that is wrong by
/// 1 in 10,000 shows.
void ExpectPosterior(const PosteriorCase& c) {
  SCOPED_TRACE(c.record);
  const std::string zero = c.record;
  std::string one = c.record;
  one[one.rfind('.')] = '*';
  int below = 0;
  int above = 0;
  for (std::uint32_t seed = 1; seed < 400'000 && (below < 3 || above < 3); ++seed) {
    const double u = DrawsAfter(seed, 1)[0];
    const double distance = u - c.posterior;
    if (std::fabs(distance) > 1e-4 || std::fabs(distance) < 1e-9) {
      continue;
    }
    ++(distance < 0 ? below : above);
    EXPECT_EQ(SweepOf(c.record, c.coefficients, seed), distance < 0 ? one : zero)
        << "draw " << u << ", probability " << c.posterior;
    EXPECT_EQ(WordsDrawnSince(seed), 1);
  }
  EXPECT_GE(below, 3);
  EXPECT_GE(above, 3);
}

TEST(ImputationSweepTest, CellBecomesOneWhenItsPosteriorProbabilityIsAboveTheDraw) {
  const double log3 = std::log(3);  // logistic: 3/4, against 1/2 at 0
  const std::vector<double> half = {0.5, 0.5};
  for (const PosteriorCase& c : std::vector<PosteriorCase>{
           // No coefficient: the prior that the record's Z selects.
           {"A 1 0 0 .\n", {{0, 0}, {0, 0}, {0.2, 0.7}}, 0.2},
           {"A 1 0 1 .\n", {{0, 0}, {0, 0}, {0.2, 0.7}}, 0.7},
           // Y = 1 and P = 0: 3/4 against 1/2, so 0.6; Y = 0: 1/4 against 1/2, so 1/3.
           {"A 1 0 0 .\n", {{0, log3}, {0, 0}, half}, 0.6},
           {"A 0 0 0 .\n", {{0, log3}, {0, 0}, half}, 1.0 / 3},
           // P = 1 implies Y = 1 whatever the coefficients of Y say.
           {"A 1 1 0 .\n", {{0, log3}, {0, 0}, half}, 0.5},
           // The probability of the indicator: of P = 1 and of P = 0.
           {"A 1 1 0 .\n", {{7, 9}, {0, log3}, half}, 0.6},
           {"A 1 0 0 .\n", {{0, 0}, {0, log3}, half}, 1.0 / 3},
           // Both: (3/4 * 1/4) against (1/2 * 1/2), so 3/16 to 4/16.
           {"A 1 0 0 .\n", {{0, log3}, {0, log3}, half}, 3.0 / 7},
           // And a prior of 3/4: 9/16 to 4/16.
           {"A 1 0 0 .\n", {{0, log3}, {0, log3}, {0.75, 0.1}}, 9.0 / 13},
           // The intercept counts: logistic(log 9) = 9/10 against logistic(log 3) = 3/4.
           {"A 1 0 0 .\n", {{log3, log3}, {0, 0}, half}, 0.9 / 1.65},
           // Other columns that are set count too, those that are not do not.
           {"A 1 0 000 .10\n",
            {{0, log3, log3, 8}, {0, 0, 0, 0}, {0.5, 0, 0, 0, 0, 0}},
            0.9 / 1.65},
           // A missing P is taken at its current value, here 0: (1/4 * 1/4) to (1/2 * 1/2).
           {"A 0 . 0 .\n", {{0, log3}, {0, log3}, half}, 0.2},
           // P itself: p1 / (p0 (1 - p1) + p1) with p1 = p0 = 1/2, then p0 = 3/4, then p1 = 3/4.
           {"A 1 . 0 0\n", {{0, 0}, {0, 0}, half}, 2.0 / 3},
           {"A 1 . 0 0\n", {{log3, 0}, {0, 0}, half}, 0.5 / 0.875},
           {"A 1 . 0 0\n", {{0, 0}, {log3, 0}, half}, 0.75 / 0.875},
           {"A 1 . 0 1\n", {{0, log3}, {0, log3}, half}, 0.75 / (0.75 * 0.25 + 0.75)},
       }) {
    ExpectPosterior(c);
  }
}

TEST(ImputationSweepTest, CertainPIsDrawnAllTheSame) {
  for (const std::uint32_t seed : {1U, 2U, 3U, 1000U}) {
    // P(P = 1 | x) is 1 or 0; or the outcome is impossible without P.
    EXPECT_EQ(SweepOf("A 1 . 0 0\n", {{0, 0}, {800, 0}, {0.5, 0.5}}, seed), "A 1 * 0 0\n");
    EXPECT_EQ(WordsDrawnSince(seed), 1);
    EXPECT_EQ(SweepOf("A 1 * 0 0\n", {{0, 0}, {-800, 0}, {0.5, 0.5}}, seed), "A 1 . 0 0\n");
    EXPECT_EQ(WordsDrawnSince(seed), 1);
    EXPECT_EQ(SweepOf("A 1 . 0 0\n", {{-800, 0}, {0, 0}, {0.5, 0.5}}, seed), "A 1 * 0 0\n");
    EXPECT_EQ(WordsDrawnSince(seed), 1);
  }
}

// With all coefficients 0 a cell's probability is its prior and that of P is 2/3, so each cell
// follows from its own draw. Draws go record by record; within a record the columns come in
// ascending order and P last.
TEST(ImputationSweepTest, CellsAreDrawnInTheirOrder) {
  const Coefficients coefficients = {{0, 0, 0, 0}, {0, 0, 0, 0}, {0.3, 0.8, 0.5, 0.5, 0.6, 0.1}};
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    const std::vector<double> u = DrawsAfter(seed, 8);
    const auto cell = [&](std::size_t draw, double probability) {
      return probability > u[draw] ? "*" : ".";
    };
    DataSet data = MakeDataSet(
        "A 1 . 010 ...\n"
        "A 0 . 111 1.0\n"
        "B 1 0 000 010\n"
        "B 1 1 101 .1.\n"
        "B 1 . 000 111\n");
    Sweep(data, coefficients);
    EXPECT_EQ(Describe(data), std::string("A 1 ") + cell(3, 2.0 / 3) + " 010 " + cell(0, 0.3) +
                                  cell(1, 0.5) + cell(2, 0.6) + "\nA 0 . 111 1" + cell(4, 0.5) +
                                  "0\nB 1 0 000 010\nB 1 1 101 " + cell(5, 0.8) + "1" +
                                  cell(6, 0.1) + "\nB 1 " + cell(7, 2.0 / 3) + " 000 111\n");
    EXPECT_EQ(WordsDrawnSince(seed), 8);
  }
}

// Each cell is drawn given the cells that were drawn before it in the same sweep, and P given all.
TEST(ImputationSweepTest, LaterCellsAreDrawnGivenTheEarlierOnes) {
  const std::vector<double> b = {-0.4, 1.1, -0.9};
  const std::vector<double> a = {-0.8, 0.7, 0.5};
  const double q1 = 0.35;
  const double q2 = 0.6;
  const auto logistic = [](double t) { return 1 / (1 + std::exp(-t)); };
  // Y = 1; P = 0 when the X cells are drawn.
  const auto likelihood = [&](int x1, int x2) {
    return logistic(b[0] + b[1] * x1 + b[2] * x2) * (1 - logistic(a[0] + a[1] * x1 + a[2] * x2));
  };
  int counts[2] = {0, 0};
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    const std::vector<double> u = DrawsAfter(seed, 3);
    const int old2 = static_cast<int>(seed % 2);
    const double one1 = likelihood(1, old2) * q1;
    const int x1 = one1 / (one1 + likelihood(0, old2) * (1 - q1)) > u[0] ? 1 : 0;
    const double one2 = likelihood(x1, 1) * q2;
    const int x2 = one2 / (one2 + likelihood(x1, 0) * (1 - q2)) > u[1] ? 1 : 0;
    const double p1 = logistic(a[0] + a[1] * x1 + a[2] * x2);
    const double p0 = logistic(b[0] + b[1] * x1 + b[2] * x2);
    const int p = p1 / (p0 * (1 - p1) + p1) > u[2] ? 1 : 0;
    ++counts[p];
    const auto cell = [](int value) { return value == 1 ? "*" : "."; };
    EXPECT_EQ(
        SweepOf(std::string("A 1 . 10 .") + cell(old2) + "\n", {b, a, {0.9, q1, q2, 0.1}}, seed),
        std::string("A 1 ") + cell(p) + " 10 " + cell(x1) + cell(x2) + "\n");
  }
  EXPECT_GT(std::min(counts[0], counts[1]), 30);
}

// In the next sweep the X cells are drawn given the P of the last one.
TEST(ImputationSweepTest, CurrentPIsTakenForMissingP) {
  // X is certain given P: P(P = 1 | X = 1) = 1 and P(P = 1 | X = 0) = 0.
  const Coefficients coefficients = {{0, 0}, {-800, 1600}, {0.5, 0.5}};
  for (const std::uint32_t seed : {1U, 2U, 3U}) {
    EXPECT_EQ(SweepOf("A 1 * 0 .\n", coefficients, seed), "A 1 * 0 *\n");
    EXPECT_EQ(SweepOf("A 1 . 0 *\n", coefficients, seed), "A 1 . 0 .\n");
  }
}

TEST(ImputationSweepDeathTest, PWithoutTheOutcomeEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  DataSet data = MakeDataSet("A 0 1 0 .\n");
  EXPECT_DEATH(Sweep(data, {{0, 0}, {0, 0}, {0.5, 0.5}}), "");
}

/// The model of the enumerated records: Column, BetaY, BetaP, PriorZ0, PriorZ1.
Coefficients EnumeratedModel() {
  Coefficients coefficients;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("imputation_model.csv"))) {
    if (row[0] != "Column") {
      coefficients.y.push_back(std::stod(row[1]));
      coefficients.p.push_back(std::stod(row[2]));
      if (row[0] != "0") {
        coefficients.prior.push_back(std::stod(row[3]));
        coefficients.prior.push_back(std::stod(row[4]));
      }
    }
  }
  return coefficients;
}

/// The text of a data set with so many copies of each enumerated record: Record, Y, P, X1 .. X4,
/// Z1 .. Z4.
std::string EnumeratedRecords(std::int32_t copies) {
  std::string text;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("imputation_records.csv"))) {
    if (row[0] != "Record") {
      const auto cell = [](const std::string& value) { return value.empty() ? "." : value; };
      std::string x;
      for (std::size_t j = 3; j < 7; ++j) {
        x += cell(row[j]);
      }
      const std::string line = row[0] + " " + row[1] + " " + cell(row[2]) + " " + row[7] + row[8] +
                               row[9] + row[10] + " " + x + "\n";
      for (std::int32_t copy = 0; copy < copies; ++copy) {
        text += line;
      }
    }
  }
  return text;
}

/// How many copies are in each state; a state is the number of the record, P and the X of it.
std::map<std::string, int> StatesOf(const DataSet& data, std::int32_t copies) {
  std::map<std::string, int> counts;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    std::string state = std::to_string(i / copies) + (data.p.Value(i) ? ",1" : ",0");
    for (std::int32_t j = 1; j < data.variableCount; ++j) {
      state += data.x.Value(i, j) ? ",1" : ",0";
    }
    ++counts[state];
  }
  return counts;
}

// Exact enumeration: the sweep's long-run frequencies of all states of a few tiny records. Each
// record stands in the data set 10,000 times; after 40 sweeps the copies are independent draws from
// the stationary distribution (a sweep forgets its start by a factor of about 2 or more each time),
// so a count is binomial. A count may miss its expectation by 5 standard deviations: for a correct
// sweep and a good generator that happens to any of the 38 counts with a probability of less than
// 38 * 6e-7 = 2.3e-5 (somewhat more for rare states, whose counts are skewed: about 1e-4 in all).
// The seed is fixed, so the outcome is always the same.
TEST(ImputationSweepTest, FrequenciesAreThoseOfTheExactPosterior) {
  constexpr std::int32_t kCopies = 10'000;
  const Coefficients coefficients = EnumeratedModel();
  DataSet data = MakeDataSet(EnumeratedRecords(kCopies));
  ASSERT_EQ(data.recordCount, 5 * kCopies);
  PrepareImputation(data);
  RandomGenerator::Seed(2024, 1121);
  for (int sweep = 0; sweep < 40; ++sweep) {
    Sweep(data, coefficients);
  }
  std::map<std::string, int> counts = StatesOf(data, kCopies);
  std::size_t states = 0;
  for (const auto& row : Testing::ReadCsv(Testing::ReferenceFile("imputation.csv"))) {
    if (row[0] != "Record") {  // Record, P, X1 .. X4, Probability
      std::string state = row[0];
      for (std::size_t j = 1; j < 6; ++j) {
        state += "," + row[j];
      }
      const double probability = std::stod(row[6]);
      const double deviation = std::sqrt(kCopies * probability * (1 - probability));
      EXPECT_LE(std::fabs(counts[state] - kCopies * probability), 5 * deviation)
          << state << ": " << counts[state] << " of " << kCopies << " at " << probability;
      ++states;
    }
  }
  EXPECT_EQ(states, 38U);
  EXPECT_EQ(counts.size(), 38U) << "a state that cannot be";
}

}  // namespace
