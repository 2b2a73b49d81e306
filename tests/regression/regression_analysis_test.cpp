#include "regression/regression_analysis.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "data/column_elimination.h"
#include "regression/fits.h"
#include "support/outcome.h"

namespace {

using Hovar::DataSet;
using Hovar::Model;
using Hovar::RegressionResults;
using enum Hovar::WorkingCorrelation;
using Testing::FitDense;
using Testing::MakeDataSet;
using Testing::MakeProblem;
using Testing::MakeProblemOfX;
using Testing::Observe;
using Testing::Outcome;
using Testing::Tight;

/// Three covariates, P and X with missing cells, Z and X different.
DataSet MakeStudy() {
  Testing::SeededRandom random(77);
  std::string text;
  for (int i = 0; i < 400; ++i) {
    std::string z;
    std::string x;
    for (int j = 0; j < 3; ++j) {
      z += "01"[random.Integer(0, 1)];
      x += random.Integer(0, 9) == 0 ? '.' : "01"[random.Integer(0, 2) == 0 ? 1 : 0];
    }
    const bool y = random.Integer(0, 1) == 1;
    const char p = !y ? '0' : "0011.*"[random.Integer(0, 5)];
    text += "H" + std::to_string(i / 20) + (y ? " 1 " : " 0 ") + p + " " + z + " " + x + "\n";
  }
  return MakeDataSet(text);
}

std::vector<Testing::LogisticProblem> ProblemsOf(const DataSet& data) {
  const auto isComplete = [&](std::int32_t i) {
    bool result = !data.p.IsMissing(i);
    for (std::int32_t j = 0; j < data.variableCount; ++j) {
      result = result && !data.x.IsMissing(i, j);
    }
    return result;
  };
  return {
      MakeProblem(
          data, isComplete, [&](std::int32_t i) { return data.p.Value(i); },
          [&](std::int32_t i, std::int32_t j) { return data.x.Value(i, j); }),
      MakeProblem(
          data, Testing::IsAny, [&](std::int32_t i) { return data.y.Get(i); },
          [&](std::int32_t i, std::int32_t j) { return data.z.Get(i, j); }),
      MakeProblemOfX(data, isComplete),
      MakeProblemOfX(data, [&](std::int32_t i) { return isComplete(i) && !data.p.Value(i); }),
  };
}

TEST(RegressionAnalysisTest, FitsTheFourModelsInTheirOrder) {
  const DataSet data = MakeStudy();
  for (const bool isCorrelated : {false, true}) {
    SCOPED_TRACE(isCorrelated);
    RegressionResults results;
    const Outcome outcome = Observe([&] {
      RunRegressionAnalysis(results, data,
                            {isCorrelated ? kExchangeable : kIndependent, Tight(0.3)});
    });
    EXPECT_EQ(outcome.Failure(), "");
    EXPECT_EQ(outcome.output, std::string("Regression analysis") + (isCorrelated ? " GEE:" : "") +
                                  "\n[P|X]\n[Y|Z]\n[Y|X]\n[Y|X,P=0]\n");
    EXPECT_EQ(outcome.log, "") << "labels are for standard output only";
    const auto problems = ProblemsOf(data);
    for (std::size_t m = 0; m < problems.size(); ++m) {
      SCOPED_TRACE(Hovar::kModelLabels[m]);
      Testing::ExpectFit(results.blocks[m], FitDense(problems[m], isCorrelated, 0.3L, 1e-15L, 100),
                         isCorrelated, 1e-9);
    }
    EXPECT_EQ(results.Block(Model::kYGivenXWithoutPMcmc).Size(), 0) << "left to the sampler";
  }
}

TEST(RegressionAnalysisTest, NamesAndTablesAreFilled) {
  const DataSet data = MakeStudy();
  RegressionResults results;
  Observe([&] { RunRegressionAnalysis(results, data, {kIndependent, Tight(1)}); });
  EXPECT_EQ(Testing::Texts(results.xNames),
            (std::vector<std::string>{"XIntercept", "X1", "X2", "X3"}));
  EXPECT_EQ(Testing::Texts(results.zNames),
            (std::vector<std::string>{"ZIntercept", "Z1", "Z2", "Z3"}));
  EXPECT_EQ(results.VariableCount(), 4);
  ASSERT_EQ(results.xzTables.Size(), 3);
  for (std::int32_t k = 1; k <= 3; ++k) {
    EXPECT_EQ(results.xzTables[k - 1].probability, ComputeXzTable(data, k).probability);
  }
}

TEST(RegressionAnalysisTest, WarningFollowsTheLabelOfItsFit) {
  // Response P is always 0 and so separated; Y is balanced, its fits end at 0 without a step.
  const DataSet data = MakeDataSet("A 1 0 - -\nA 0 0 - -\nB 0 0 - -\nB 1 0 - -\n");
  RegressionResults results;
  const Outcome outcome = Observe([&] {
    RunRegressionAnalysis(
        results, data,
        {kIndependent, {.tolerance = 1e-6, .maxIterations = 3, .priorPrecision = 0}});
  });
  EXPECT_EQ(outcome.output,
            "Regression analysis\n"
            "[P|X]\n"
            "Warning: Maximum number of iterations reached\n"
            "[Y|Z]\n"
            "[Y|X]\n"
            "[Y|X,P=0]\n");
  EXPECT_EQ(outcome.log, "Warning: Maximum number of iterations reached\n");
  EXPECT_EQ(results.xzTables.Size(), 0) << "the intercept has no table";
  EXPECT_EQ(results.Block(Model::kPGivenX).Size(), 1);
}

TEST(RegressionAnalysisTest, TableThatCannotBeMadeEndsBeforeTheFits) {
  const DataSet data = MakeDataSet("A 1 0 10 10\nA 0 0 10 01\nA 1 0 00 11\n");
  RegressionResults results;
  const Outcome outcome = Observe([&] {
    RunRegressionAnalysis(results, data, {kExchangeable, Tight(1)});
  });
  EXPECT_EQ(outcome.Failure(), "Exception: Cannot compute XZ table");
  EXPECT_EQ(outcome.output, "Regression analysis GEE:\n");
}

TEST(RegressionAnalysisTest, FailureOfAFitPassesThrough) {
  // X2 is 0 wherever P is 0: without a prior the last fit cannot be factored.
  const DataSet data = MakeDataSet(
      "A 1 0 01 10\nA 0 0 10 10\nA 1 0 00 00\nA 0 0 11 00\nB 1 1 00 01\nB 1 1 01 11\n"
      "B 1 1 10 10\nB 1 1 11 00\nB 1 1 01 00\n");
  RegressionResults results;
  const Outcome outcome = Observe([&] {
    RunRegressionAnalysis(
        results, data,
        {kIndependent, {.tolerance = 1e-6, .maxIterations = 2, .priorPrecision = 0}});
  });
  EXPECT_EQ(outcome.Failure(), "NumericException: Non positive matrix in Cholesky decomposition");
  EXPECT_TRUE(outcome.output.ends_with("[Y|X,P=0]\n")) << outcome.output;
}

TEST(RegressionAnalysisTest, DataSetWithoutVariablesIsRefused) {
  DataSet data = MakeDataSet("A 1 . - -\n");
  Vell::IndexVector intercept(1);
  RemoveColumns(data, intercept);
  RegressionResults results;
  const Outcome outcome = Observe([&] {
    RunRegressionAnalysis(results, data, {kIndependent, Tight(1)});
  });
  EXPECT_EQ(outcome.Failure(), "InvalidArgumentException: Invalid argument");
  EXPECT_EQ(outcome.output, "Regression analysis\n");
}

}  // namespace
