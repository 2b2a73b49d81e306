// `--chains` said "The chains have converged." of draws with generalized estimating equations, whose
// spread is wrong, and of a single chain. `--check --strict` had no objection to the former.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"
#include "blackbox/launcher_runs.h"

namespace Testing {
namespace {

ProcessResult Chains(const TinyStudy& study, const std::string& count) {
  const ScratchFolder place;
  return RunLauncher(study, {"--chains", count, "analysis.xml"}, CopyTreeWithPageTo(place.Path()));
}

TEST(RegressionTest, DrawsWithEstimatingEquationsAreNotFitForInference) {
  const TinyStudy study;
  study.Write("data.csv", kClusteredData);
  study.Write("analysis.xml", Clustered(ChainedAnalysisText(50, 1000)));
  const ProcessResult result = Chains(study, "2");
  EXPECT_TRUE(result.output.starts_with("The draws are not fit for inference, ")) << result.output;
  ExpectLacks(result.output, "have converged");
  EXPECT_EQ(RunProcess(CheckIn(study, {"--strict", "analysis.xml"})).exitStatus, 1);
}

TEST(RegressionTest, OneChainHasNotConverged) {
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(50, 2000));
  const ProcessResult result = Chains(study, "1");
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  ExpectHolds(result.output, "One chain can only be compared with itself");
  ExpectLacks(result.output, "have converged");
}

}  // namespace
}  // namespace Testing
