// The draws of a chain that repeats another one, as a plain run does the first chain, counted twice and
// raised the effective sample size.

#include <gtest/gtest.h>

#include <filesystem>

#include "blackbox/launcher_runs.h"
#include "blackbox/tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

namespace fs = std::filesystem;

TEST(RegressionTest, AChainThatRepeatsAnotherIsNotJudged) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(5, 60));
  const auto chains = [&](const std::vector<std::string>& last) {
    std::vector<std::string> arguments = {"--chains", "3", "analysis.xml"};
    arguments.insert(arguments.end(), last.begin(), last.end());
    return RunLauncher(study, arguments, launcher);
  };
  for (const char* chain : {"1", "2", "3"}) {
    ASSERT_EQ(chains({"--only", chain}).exitStatus, 0);
  }
  fs::copy_file(study.File("out/chain-1/mcmc/Chain.csv"), study.File("out/chain-3/mcmc/Chain.csv"),
                fs::copy_options::overwrite_existing);
  const ProcessResult result = chains({"--collect"});
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_TRUE(result.output.starts_with("2 chains of 60 draws, 1 coefficient. ")) << result.output;
  ExpectHolds(result.output, "\nNot judged: chain-3 holds the same draws as chain-1.\n");
}

}  // namespace
}  // namespace Testing
