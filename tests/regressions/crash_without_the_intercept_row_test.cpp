// Without the row of the intercept in a coefficient file the first variable is column 0, which has no
// [X|Z] table. Imputation read one from in front of the table: a crash with one variable, wrong numbers
// with several.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"

namespace Testing {
namespace {

/// A row whose models are, in their order, of the coefficients 1, log 3, 2, 3 and 4.
std::string Coefficients(const std::string& number) {
  return "X" + number + ",Z" + number + ",0.5,0.5,0.5,0.5,1,,,1.0986122886681098,,,2,,,3,,,4,,\n";
}

TEST(RegressionTest, AMissingValueOfTheFirstVariableCountsAsZero) {
  // Where X is 0 or missing the models of X predict 1/2; that of Z predicts 3/4 where Z is 1.
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA,Z1,X1\na,A,1,0,1,\nb,A,0,0,1,0\n");
  study.Write("coefficients.csv", kCoefficientHeader + Coefficients("1"));
  const ProcessResult result = RunText(study, WithValues(PredictionText(), {{"Steps", "5"}}));
  EXPECT_EQ(result.exitStatus, 0) << "signal " << result.signal << result.error;
  EXPECT_EQ(study.Read("out/predicted.csv"), std::string(kIndividualHeader) +
                                                 "a,A,1,0.75,0.5,1,0.5,0.5,0,0.5,0\n"
                                                 "b,A,0,0.75,0.5,0,0.5,0.5,0,0.5,0\n");
}

/// The predictions of a record of two variables, the second of which is missing.
std::string PredictedWith(const std::string& firstX) {
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA,Z1,Z2,X1,X2\na,A,1,0,1,1," + firstX + ",\n");
  study.Write("coefficients.csv", kCoefficientHeader + Coefficients("1") + Coefficients("2"));
  const std::string text = WithValues(PredictionText(), {{"Burnin", "10"}, {"Steps", "100"}});
  EXPECT_EQ(RunText(study, text).exitStatus, 0);
  return study.Read("out/predicted.csv");
}

// It takes no random number either, so the others are drawn as they are with a known 0.
TEST(RegressionTest, OtherVariablesAreDrawnFromTheirOwnTables) {
  EXPECT_EQ(PredictedWith(""), PredictedWith("0"));
  EXPECT_NE(PredictedWith("1"), PredictedWith("0"));
}

TEST(RegressionTest, TheCheckWarnsOfAFileWithoutTheRow) {
  ExpectWarnings({{PredictionText(),
                   {{"data.csv", "Key,Hospital,Y,POA,Z1,X1\na,A,1,0,1,1\n"},
                    {"coefficients.csv", kCoefficientHeader + Coefficients("1")}},
                   "coefficients.csv:2:1",
                   "The row of the intercept is missing"}});
}

}  // namespace
}  // namespace Testing
