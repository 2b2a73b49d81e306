// Reconciling a data set with the variables of a coefficient file.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "named_results.h"
#include "regression/coefficient_file.h"
#include "support/data_sets.h"
#include "support/outcome.h"

namespace {

using Hovar::DataSet;
using Hovar::RegressionResults;
using Testing::MakeDataSet;
using Testing::MakeResults;
using Testing::Observe;
using Testing::Outcome;

/// Two variables after the intercept, named Z1, X1, Z2, X2.
DataSet MakeTwoVariables() { return MakeDataSet("A 1 0 01 10\nA 0 0 10 1.\n"); }

TEST(ReconcileVariablesTest, SameVariablesStay) {
  DataSet data = MakeTwoVariables();
  const RegressionResults results =
      MakeResults({"XIntercept", "X1", "X2"}, {"ZIntercept", "Z1", "Z2"});
  const Outcome outcome = Observe([&] { ReconcileVariables(data, results); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.output, "") << "nothing is removed, so nothing is logged";
  EXPECT_EQ(Testing::Describe(data), "A 1 0 01 10\nA 0 0 10 1.\n");
}

TEST(ReconcileVariablesTest, ExtraVariableIsRemovedWithItsLogLines) {
  DataSet data = MakeTwoVariables();
  const RegressionResults results = MakeResults({"XIntercept", "X1"}, {"ZIntercept", "Z1"});
  const Outcome outcome = Observe([&] { ReconcileVariables(data, results); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.log,
            "Eliminating columns:\n"
            "Z2, X2\n"
            "Number of variables: 2\n"
            "Counting non missing records:\n"
            "Number of non-missing records: 2\n"
            "Number of non-missing records with P = 0: 2\n");
  EXPECT_EQ(Testing::Describe(data), "A 1 0 0 1\nA 0 0 1 1\n");
}

TEST(ReconcileVariablesTest, AllExtraVariablesGoInOneStepInTheirOrder) {
  DataSet data = MakeDataSet("A 1 0 0101 0011\n");
  const RegressionResults results = MakeResults({"XIntercept", "X3"}, {"ZIntercept", "Z3"});
  const Outcome outcome = Observe([&] { ReconcileVariables(data, results); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_TRUE(outcome.log.starts_with(
      "Eliminating columns:\nZ1, X1\nZ2, X2\nZ4, X4\nNumber of variables: 2\n"))
      << outcome.log;
}

TEST(ReconcileVariablesTest, BothNamesMustBeFound) {
  for (const auto& results : {MakeResults({"XIntercept", "X1"}, {"ZIntercept", "Z1"}),
                              MakeResults({"XIntercept", "X1"}, {"ZIntercept", "other"})}) {
    DataSet data = MakeDataSet("A 1 0 0 1\n");
    const bool isFound = results.zNames[1].View() == "Z1";
    const Outcome outcome = Observe([&] { ReconcileVariables(data, results); });
    EXPECT_EQ(outcome.Failure(), isFound ? "" : "Exception: Variables mismatch");
    EXPECT_EQ(data.variableCount, isFound ? 2 : 1);
  }
  DataSet data = MakeDataSet("A 1 0 0 1\n");
  const RegressionResults results = MakeResults({"XIntercept", "x1"}, {"ZIntercept", "Z1"});
  EXPECT_EQ(Observe([&] { ReconcileVariables(data, results); }).Failure(),
            "Exception: Variables mismatch");
}

TEST(ReconcileVariablesTest, NamesAreMatchedSeparatelyAndWithoutRegardToOrder) {
  // X1 stands beside Z2 in the file, and the intercept last.
  DataSet data = MakeTwoVariables();
  const RegressionResults results =
      MakeResults({"X2", "X1", "XIntercept"}, {"Z1", "Z2", "ZIntercept"});
  const Outcome outcome = Observe([&] { ReconcileVariables(data, results); });
  EXPECT_EQ(outcome.Failure(), "");
  EXPECT_EQ(outcome.log, "");
  EXPECT_EQ(Testing::Texts(data.xNames), (std::vector<std::string>{"XIntercept", "X1", "X2"}));
}

TEST(ReconcileVariablesTest, NamesAreComparedByTheirBytes) {
  DataSet data = MakeDataSet("A 1 0 0000 1111\n");
  const std::vector<std::string> names = {"XIntercept", "\xC3\xA9", "a", "B", ""};
  for (std::int32_t j = 0; j < 5; ++j) {
    data.xNames[j] = Vell::String(names[static_cast<std::size_t>(j)]);
  }
  const RegressionResults results =
      MakeResults({"B", "", "XIntercept", "\xC3\xA9", "a"}, {"Z4", "Z3", "Z2", "Z1", "ZIntercept"});
  EXPECT_EQ(Observe([&] { ReconcileVariables(data, results); }).Failure(), "");
  EXPECT_EQ(data.variableCount, 5);
  data.xNames[1] = Vell::String("\xC3\xA8");
  EXPECT_EQ(Observe([&] { ReconcileVariables(data, results); }).Failure(),
            "Exception: Variables mismatch");
  EXPECT_EQ(data.variableCount, 4);
}

TEST(ReconcileVariablesTest, FileWithMoreVariablesIsAMismatch) {
  DataSet data = MakeTwoVariables();
  const RegressionResults results =
      MakeResults({"XIntercept", "X1", "X2", "X3"}, {"ZIntercept", "Z1", "Z2", "Z3"});
  const Outcome outcome = Observe([&] { ReconcileVariables(data, results); });
  EXPECT_EQ(outcome.Failure(), "Exception: Variables mismatch");
  EXPECT_EQ(outcome.log, "");
}

}  // namespace
