// The launcher's --chains, with a small page in place of the report's.

#include <gtest/gtest.h>

#include <map>

#include "launcher_runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

class ChainsTest : public testing::Test {
 protected:
  ChainsTest() { study_.Write("analysis.xml", ChainedAnalysisText(5, 60)); }

  ProcessResult Chains(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "--chains");
    return RunLauncher(study_, arguments, launcher_);
  }

  /// All files below out/ but the program's lines, which hold seconds.
  std::map<std::string, std::string> Results() const {
    std::map<std::string, std::string> results;
    for (const std::string& file : FilesBelow(study_)) {
      if (file.starts_with("out/") && !file.ends_with(".output.txt")) {
        results[file] = study_.Read(file);
      }
    }
    return results;
  }

  void RemoveResults() const { fs::remove_all(study_.Path() / "out"); }

  ScratchFolder place_;
  TinyStudy study_;
  std::string launcher_ = CopyTreeWithPageTo(place_.Path());
};

TEST_F(ChainsTest, EachChainHasItsFolderAndTheFirstIsThePlainRun) {
  const ProcessResult plain = RunLauncher(study_, {"analysis.xml"});
  ASSERT_EQ(plain.exitStatus, 0);
  const std::map<std::string, std::string> expected = Results();
  RemoveResults();
  const ProcessResult result = Chains({"3", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_TRUE(result.output.starts_with("3 chains of 60 draws, 1 coefficient. ")) << result.output;
  ExpectHolds(result.output, "XIntercept");
  EXPECT_TRUE(result.output.ends_with("\nout/report.html\n")) << result.output;
  for (const char* line : {"chain-1: done in ", "chain-2: done in ", "chain-3: done in "}) {
    ExpectHolds(result.error, line);
  }
  for (const char* name : {"analysis.log", "fitted.csv", "mcmc/Chain.csv", "mcmc/Summary.csv"}) {
    EXPECT_EQ(study_.Read("out/chain-1/" + std::string(name)),
              expected.at("out/" + std::string(name)));
    EXPECT_TRUE(study_.Has("out/chain-3/" + std::string(name)));
  }
  EXPECT_NE(study_.Read("out/chain-2/mcmc/Chain.csv"), study_.Read("out/chain-1/mcmc/Chain.csv"));
  EXPECT_NE(study_.Read("out/chain-3/mcmc/Chain.csv"), study_.Read("out/chain-2/mcmc/Chain.csv"));
  const std::string report = study_.Read("out/report.html");
  ExpectHolds(report, "data-folder=\"2\" data-path=\"mcmc/Chain.csv\"");
  const bool hasSlashes = Shown("\\") == "/";
  ExpectHolds(report, hasSlashes ? R"(["out/chain-1","out/chain-2","out/chain-3"])"
                                 : R"(["out\\chain-1","out\\chain-2","out\\chain-3"])");
}

TEST_F(ChainsTest, WithEstimatingEquationsNotFitForInferenceComesFirst) {
  study_.Write("data.csv", kClusteredData);
  study_.Write("analysis.xml", Clustered(study_.Read("analysis.xml")));
  const ProcessResult result = Chains({"3", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_TRUE(result.output.starts_with("The draws are not fit for inference, ")) << result.output;
  ExpectHolds(result.output, "the observed E[Y|P=0]");
  ExpectHolds(result.output, "\n3 chains of 60 draws, 1 coefficient.\n");
  EXPECT_EQ(result.output.find("have converged"), std::string::npos) << result.output;
  EXPECT_TRUE(result.output.ends_with("\nout/report.html\n")) << result.output;
}

TEST_F(ChainsTest, OnlyFolderAndSeedDifferInTheDefinitions) {
  ASSERT_EQ(Chains({"2", "analysis.xml"}).exitStatus, 0);
  const std::string own = study_.Read("analysis.xml");
  EXPECT_EQ(study_.Read("out/chain-1/chain-1.xml"), Replaced(own, ">out<", ">out\\chain-1<"));
  // Python: pow(36969, 748686492, 36969 * 65536 - 1) * 3 % (36969 * 65536 - 1), and
  // pow(18000, 364531279, 18000 * 65536 - 1) * 5 % (18000 * 65536 - 1)
  EXPECT_EQ(study_.Read("out/chain-2/chain-2.xml"),
            Replaced(Replaced(Replaced(own, ">out<", ">out\\chain-2<"), "<Element>3<",
                              "<Element>461867283<"),
                     "<Element>5<", "<Element>1098288563<"));
}

TEST_F(ChainsTest, AFileSaysHowManyChainsBelongTogether) {
  ASSERT_EQ(Chains({"3", "analysis.xml"}).exitStatus, 0);
  EXPECT_EQ(study_.Read("out/chains.json"), "{\"chains\": 3}\n");
  ASSERT_EQ(Chains({"2", "analysis.xml", "--only", "1"}).exitStatus, 0);
  EXPECT_EQ(study_.Read("out/chains.json"), "{\"chains\": 2}\n");
  EXPECT_TRUE(study_.Has("out/chain-3/chain-3.xml"));
}

TEST_F(ChainsTest, WhatIsNoNumberOfChainsStays) {
  for (const std::string own : {"{\"draws\": 3}\n", ""}) {
    study_.Write("out/chains.json", own);
    const ProcessResult result = Chains({"2", "analysis.xml"});
    EXPECT_EQ(result.exitStatus, 0);
    ExpectHolds(result.error, "hovar: " + Shown("out\\chains.json") +
                                  " is no number of chains and stays as it is\n");
    EXPECT_EQ(study_.Read("out/chains.json"), own);
  }
  fs::remove(study_.Path() / "out/chains.json");
  fs::create_directories(study_.Path() / "out/chains.json");
  EXPECT_EQ(Chains({"2", "analysis.xml"}).exitStatus, 0);
  EXPECT_TRUE(fs::is_directory(study_.Path() / "out/chains.json"));
}

TEST_F(ChainsTest, TheNumberOfJobsDoesNotMatter) {
  ASSERT_EQ(Chains({"4", "analysis.xml", "--jobs", "1"}).exitStatus, 0);
  const std::map<std::string, std::string> expected = Results();
  for (const char* jobs : {"2", "4", "9"}) {
    RemoveResults();
    ASSERT_EQ(Chains({"4", "analysis.xml", "--jobs", jobs}).exitStatus, 0);
    EXPECT_TRUE(Results() == expected) << jobs;
  }
}

TEST_F(ChainsTest, OneByOneAndCollectedTheyAreTheSame) {
  const ProcessResult together = Chains({"3", "analysis.xml"});
  ASSERT_EQ(together.exitStatus, 0);
  const std::map<std::string, std::string> expected = Results();
  RemoveResults();
  for (const char* chain : {"2", "3", "1"}) {
    const ProcessResult result = Chains({"3", "analysis.xml", "--only", chain});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "");
  }
  EXPECT_FALSE(study_.Has("out/report.html"));
  const ProcessResult collected = Chains({"3", "analysis.xml", "--collect"});
  EXPECT_EQ(collected.exitStatus, 0);
  EXPECT_EQ(collected.output, together.output);
  EXPECT_EQ(collected.error, "");
  EXPECT_TRUE(Results() == expected);
}

TEST_F(ChainsTest, ACollectionWithoutAChainIsAnError) {
  ASSERT_EQ(Chains({"2", "analysis.xml", "--only", "1"}).exitStatus, 0);
  const ProcessResult result = Chains({"2", "analysis.xml", "--collect"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.error, "hovar: cannot read the draws of chain-2 in " +
                              Shown("out\\chain-2\\mcmc\\Chain.csv") + "\n");
}

TEST_F(ChainsTest, ACollectionOfUnlikeChainsIsAnError) {
  ASSERT_EQ(Chains({"2", "analysis.xml", "--only", "1"}).exitStatus, 0);
  for (const char* chain :
       {"Step,BetaYX[0]\n1,0.5\n", "Step,BetaYX[1]\n1,0.5\n", "Step\n1\n", "Step,BetaYX[0]\n"}) {
    SCOPED_TRACE(chain);
    study_.Write("out/chain-2/mcmc/Chain.csv", chain);
    const ProcessResult result = Chains({"2", "analysis.xml", "--collect"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, "hovar: cannot read the draws of chain-2 in " +
                                Shown("out\\chain-2\\mcmc\\Chain.csv") + "\n");
  }
}

TEST_F(ChainsTest, AVerdictThatCannotBeToldIsAnError) {
  Command command = LauncherIn(study_, {"--chains", "2", "analysis.xml"}, launcher_);
  for (const Output output : {Output::kFull, Output::kBroken}) {
    command.output = output;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    ExpectHolds(result.error, "hovar: cannot write to standard output\n");
    EXPECT_FALSE(study_.Has("out/report.html"));
  }
}

TEST_F(ChainsTest, DefinitionsThatDoNotServeAreRefused) {
  const auto expectRefused = [this](const std::string& definition, const std::string& line) {
    const ProcessResult result = Chains({"2", definition});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, line + "\n");
    EXPECT_FALSE(study_.Has("out"));
  };
  expectRefused("prediction.xml",
                "hovar: --chains needs the definition of an Analysis, which prediction.xml is not");
  expectRefused("none.xml", "Error: " + CannotOpen("none.xml"));
  const std::string text = study_.Read("analysis.xml");
  study_.Write("broken.xml", Replaced(text, "<LogFile>", "<Log>"));
  expectRefused("broken.xml", "Error: " + Mismatch("broken.xml", "LogFile", "Log>ana"));
  const std::size_t begin = text.find("<Seed ");
  const std::size_t end = text.find("<Thinning>");
  study_.Write("clock.xml",
               text.substr(0, begin) + "<Seed xsi:type=\"Randomize\" />\n" + text.substr(end));
  expectRefused("clock.xml",
                "hovar: the seed of clock.xml is taken from the clock, so the chains could not be "
                "repeated; give it two fixed words (a Seed of the type Vector)");
  // A definition is a small file; 16 MiB of blanks after it would have to be written for each
  // chain.
  study_.Write("large.xml", text + std::string(17 << 20, ' '));
  expectRefused("large.xml", "hovar: cannot read large.xml");
  // Words at which the generator stands still: 36969 * 65536 - 1, and twice 18000 * 65536 - 1.
  study_.Write("first.xml", Replaced(text, "<Element>3<", "<Element>2422800383<"));
  const std::string first =
      "hovar: the random generator stands still at the first word of the seed of first.xml, so no "
      "normal number can be drawn; give it another one";
  expectRefused("first.xml", first);
  study_.Write("second.xml", Replaced(text, "<Element>5<", "<Element>2359295998<"));
  expectRefused("second.xml",
                "hovar: half of the random generator stands still at the second word of the seed "
                "of second.xml, in every chain; give it another one");
  study_.Write("first.xml",
               Replaced(study_.Read("first.xml"), "<Element>5<", "<Element>1179647999<"));
  expectRefused("first.xml", first);
}

TEST_F(ChainsTest, AFolderThatCannotBeMadeIsTold) {
  study_.Write("deep.xml", Replaced(ChainedAnalysisText(0, 5), ">out<", ">none/out<"));
  const ProcessResult result = Chains({"2", "deep.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.error, "hovar: cannot write " + Shown("none\\out\\chains.json") + "\n");
}

TEST_F(ChainsTest, AFailureStopsTheOthers) {
  study_.Write("analysis.xml", LongAnalysisText());
  fs::create_directories(study_.Path() / "out/chain-2/analysis.log");
  const ProcessResult result = Chains({"3", "analysis.xml", "--jobs", "3"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "");
  ExpectHolds(result.error, "chain-2: Error: " + CannotOpen("out\\chain-2\\analysis.log") + "\n");
  ExpectHolds(result.error, "hovar: chain-2 failed; its output is in " +
                                Shown("out\\chain-2\\analysis.log.output.txt") + "\n");
  EXPECT_TRUE(HasStoppedGrowing(study_.Path() / "out/chain-1/analysis.log.output.txt"));
  EXPECT_FALSE(study_.Has("out/report.html"));
}

TEST_F(ChainsTest, AMissingProgramIsNamed) {
  fs::remove(place_.Path() / ProgramFile());
  const ProcessResult result = Chains({"2", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  ExpectHolds(result.error, "hovar: cannot start ");
}

TEST_F(ChainsTest, WithoutThePageTheVerdictIsStillTold) {
  fs::remove(place_.Path() / "share/hovar/report.html");
  const ProcessResult result = Chains({"2", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_TRUE(result.output.starts_with("2 chains of 60 draws")) << result.output;
  ExpectHolds(result.error, "hovar: cannot read the page ");
}

}  // namespace
}  // namespace Testing
