// `hovar --json` with the name of an input or an output of the run wrote its record over that file.

#include <gtest/gtest.h>

#include "blackbox/launcher_runs.h"
#include "blackbox/tiny_study.h"

namespace Testing {
namespace {

TEST(RegressionTest, ARecordWithTheNameOfAFileOfTheRunIsRefused) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml"}));
  EXPECT_EQ(RunLauncher(study, {"batch.xml"}).exitStatus, 0);
  for (const char* file : {"batch.xml", "./prediction.xml", "data.csv", "coefficients.csv",
                           "out/fitted.csv", "out/mcmc/Chain.csv"}) {
    const std::string before = study.Read(file);
    const ProcessResult result = RunLauncher(study, {"--json", file, "batch.xml"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "hovar: the record cannot be written to " + std::string(file) +
                                ", a file of the run itself\n");
    EXPECT_EQ(study.Read(file), before);
  }
}

}  // namespace
}  // namespace Testing
