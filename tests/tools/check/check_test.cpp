#include "tools/check/check.h"

#include <gtest/gtest.h>

#include <new>

#include "blackbox/tiny_study.h"
#include "support/allocation_fault.h"
#include "tools/support/error_capture.h"

namespace {

using Testing::AllocationFault;

/// The allocations that switching the standard streams off takes, before which nothing is silent.
int AllocationsOfSilence() {
  const AllocationFault none(0);
  const Hovar::CapturedWriters writers;
  return none.Count();
}

/// Checks a definition with its `failing`-th allocation failing. Answers whether it came to that.
bool LacksMemory(const std::string& definition, int failing) {
  Testing::OutputCapture capture;
  bool isRaised = false;
  const AllocationFault fault(failing);
  try {
    Hovar::RunCheck({.definition = definition});
  } catch (const std::bad_alloc&) {
    isRaised = true;
  }
  EXPECT_EQ(isRaised, fault.HasFired());
  EXPECT_EQ(capture.TakeError(), "") << "allocation " << failing;
  const std::string output = capture.TakeOutput();
  EXPECT_EQ(output.empty(), isRaised) << output;
  return isRaised;
}

TEST(CheckTest, LackOfMemoryEndsTheCheckWithoutAFinding) {
  const Testing::TinyStudy study;
  const std::string definition = study.Write(
      "d.xml", Testing::WithValues(Testing::PredictionText(),
                                   {{"Data", study.File("data.csv")},
                                    {"RegressionCoefficients", study.File("coefficients.csv")},
                                    {"Folder", study.File("out")}}));
  const int first = AllocationsOfSilence() + 1;
  int failing = first;
  while (LacksMemory(definition, failing)) {
    ++failing;
  }
  EXPECT_GT(failing, first + 100) << "nothing was read";
}

}  // namespace
