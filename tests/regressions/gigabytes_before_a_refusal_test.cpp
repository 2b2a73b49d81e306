// Two kinds of data were refused only after gigabytes had been taken: with a negative number of
// indicators, which stands for as many more variables, their names; with 46,341 columns and more, their
// counts.

#include <gtest/gtest.h>

#include "blackbox/limited_runs.h"
#include "blackbox/tiny_study.h"

namespace Testing {
namespace {

void ExpectRefusedWithLittleMemory(const TinyStudy& study, const std::string& definition) {
  study.Write("d.xml", definition);
  const ProcessResult result = RunWithLittleMemory(study, "d.xml");
  EXPECT_TRUE(result.error.ends_with("Error: Invalid argument\n")) << result.error;
  EXPECT_EQ(result.exitStatus, 1);
}

TEST(RegressionTest, ANegativeNumberOfIndicatorsNeedsNoNames) {
  // 100,000,001 variables: the bits of one record are some megabytes.
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y\nk,A,1\n");
  ExpectRefusedWithLittleMemory(
      study, WithValues(PredictionText(), {{"NumberOfPoaIndicators", "-200000000"}}));
}

TEST(RegressionTest, TooManyColumnsNeedNoCounts) {
  // With the intercept 46,341, the first number whose square is beyond 31 bits.
  constexpr int kVariables = 46'340;
  std::string header = "Key,Hospital,Y";
  std::string record = "k,A,1";
  for (int field = 0; field < 2 * kVariables; ++field) {
    header += "," + std::to_string(field);
    record += ",1";
  }
  const TinyStudy study;
  study.Write("data.csv", header + "\n" + record + "\n");
  ExpectRefusedWithLittleMemory(study,
                                WithValues(AnalysisText(), {{"NumberOfPoaIndicators", "0"}}));
}

}  // namespace
}  // namespace Testing
