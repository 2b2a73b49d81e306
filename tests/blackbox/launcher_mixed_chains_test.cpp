// Chains that do not belong together, and what the launcher says of them.

#include <gtest/gtest.h>

#include "launcher_runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

class MixedChainsTest : public testing::Test {
 protected:
  MixedChainsTest() { study_.Write("analysis.xml", ChainedAnalysisText(5, 60)); }

  ProcessResult Chains(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "--chains");
    return RunLauncher(study_, arguments, launcher_);
  }
  /// Runs a chain of a definition that has another text in one place.
  void RunChainWith(const char* chain, const std::string& from, const std::string& to) const {
    const std::string own = study_.Read("analysis.xml");
    study_.Write("analysis.xml", Replaced(own, from, to));
    ASSERT_EQ(Chains({"2", "analysis.xml", "--only", chain}).exitStatus, 0);
    study_.Write("analysis.xml", own);
  }
  void ExpectRefused(const std::string& line) const {
    const ProcessResult result = Chains({"2", "analysis.xml", "--collect"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, line + "\n");
    EXPECT_FALSE(study_.Has("out/report.html"));
  }

  ScratchFolder place_;
  TinyStudy study_;
  std::string launcher_ = CopyTreeWithPageTo(place_.Path());
};

TEST_F(MixedChainsTest, AChainOfAnotherPriorIsNotCollected) {
  RunChainWith("1", "<Steps>60<", "<Steps> 60\n<");
  RunChainWith("2", "<PriorPrecision>", "<PriorPrecision>5");
  const std::string own = study_.Read("analysis.xml");
  const std::size_t begin = own.find("<PriorPrecision>") + std::string("<PriorPrecision>").size();
  const std::string prior = own.substr(begin, own.find('<', begin) - begin);
  ExpectRefused("hovar: chain-2 was run with Regression/Parameters/PriorPrecision \"5" + prior +
                "\" instead of \"" + prior + "\"; run it again");
}

TEST_F(MixedChainsTest, CommentsAndBlanksMakeNoDifference) {
  RunChainWith("1", "<Mcmc>", "<!-- first -->\n<Mcmc>");
  RunChainWith("2", "<Burnin>", "\n  <Burnin> ");
  const ProcessResult result = Chains({"2", "analysis.xml", "--collect"});
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_EQ(result.error, "");
}

TEST_F(MixedChainsTest, AChainWithoutItsDefinitionOrWithAForeignOneIsNotCollected) {
  ASSERT_EQ(Chains({"2", "analysis.xml"}).exitStatus, 0);
  fs::remove(study_.Path() / "out/report.html");
  study_.Write("out/chain-2/chain-2.xml", "<Batch><Simulations></Simulations></Batch>");
  ExpectRefused("hovar: chain-2 was run with another definition; run it again");
  fs::remove(study_.Path() / "out/chain-2/chain-2.xml");
  ExpectRefused("hovar: cannot read " + Shown("out\\chain-2\\chain-2.xml"));
}

TEST_F(MixedChainsTest, ChainsOfOtherDataAreNotCollected) {
  ASSERT_EQ(Chains({"2", "analysis.xml", "--only", "1"}).exitStatus, 0);
  const std::string data = study_.Read("data.csv");
  const std::size_t last = data.rfind('\n', data.size() - 2) + 1;
  study_.Write("data.csv", data + data.substr(last));
  ASSERT_EQ(Chains({"2", "analysis.xml", "--only", "2"}).exitStatus, 0);
  ExpectRefused("hovar: chain-2 has other fits than chain-1, so their data differ; run both again");
}

TEST_F(MixedChainsTest, ChainsOfAnEarlierRunAreNamed) {
  ASSERT_EQ(Chains({"4", "analysis.xml"}).exitStatus, 0);
  const ProcessResult result = Chains({"2", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 0);
  for (const char* folder : {"out\\chain-3", "out\\chain-4"}) {
    ExpectHolds(result.error, "hovar: not collected: " + Shown(folder) +
                                  ", which an earlier run with more chains wrote\n");
  }
  ExpectHolds(result.output, "2 chains of 60 draws");
}

}  // namespace
}  // namespace Testing
