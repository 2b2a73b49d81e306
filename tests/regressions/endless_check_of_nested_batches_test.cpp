// `hovar --check` went through a batch as often as it would run: for batches within batches that was
// without end.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"

namespace Testing {
namespace {

TEST(RegressionTest, ABatchThatNamesOthersManyTimesIsCheckedOnce) {
  // Each of 40 batches names the next one twice: 2 to the 40 runs of the last.
  const TinyStudy study;
  study.Write("d.xml", BatchText({"0.xml", "0.xml"}));
  for (int i = 0; i < 40; ++i) {
    const std::string next = std::to_string(i + 1) + ".xml";
    study.Write(std::to_string(i) + ".xml", BatchText({next, next}));
  }
  study.Write("40.xml", BatchText({}));
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
}

}  // namespace
}  // namespace Testing
