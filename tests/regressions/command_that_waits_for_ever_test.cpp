// The command waited for ever: for the end of a program when it had inherited that ends of children
// are not reported, for the writer of a pipe named as an input, and for a program that was stopped.
// A request to end did not help.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>

#include "blackbox/launcher_runs.h"
#include "blackbox/watched_run.h"
#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(EndlessWaitTest, WhereEndsOfChildrenAreIgnored) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--json", "run.json", "analysis.xml"},
        {"--progress", "analysis.xml"},
        {"--chains", "2", "analysis.xml"},
        {"--chains", "2", "--only", "1", "analysis.xml"}}) {
    SCOPED_TRACE(arguments[0]);
    const TinyStudy study;
    Command command = LauncherIn(study, arguments, launcher);
    command.program = "/usr/bin/env";
    command.arguments.insert(command.arguments.begin(), {"env", "--ignore-signal=CHLD"});
    const WatchedEnd end = Watch(command, seconds(20));
    EXPECT_FALSE(end.wasAsked);
    EXPECT_EQ(end.result.exitStatus, 0) << end.result.error;
    EXPECT_EQ(end.orphans, 0U);
  }
}

/// The tools with a definition, each in its ways.
std::vector<std::vector<std::string>> ToolsWith(const std::string& definition) {
  return {{"--check", definition},
          {"--check", "--data", definition},
          {"--json", "run.json", definition},
          {"--progress", definition},
          {"--keep", definition},
          {"--keep", "--json", "run.json", "--progress", definition},
          {"--chains", "2", definition},
          {"--chains", "2", "--only", "1", definition},
          {"--chains", "2", "--collect", definition}};
}

/// Runs all tools on a study with a pipe, without a writer, as one of its files.
void ExpectNoEndlessWait(const std::string& pipe, const std::string& definition) {
  for (const std::vector<std::string>& arguments : ToolsWith("d.xml")) {
    const TinyStudy study;
    study.Write("d.xml", definition);
    fs::remove(study.Path() / pipe);
    fs::create_directories((study.Path() / pipe).parent_path());
    EXPECT_EQ(::mkfifo(study.File(pipe).c_str(), 0600), 0);
    const WatchedEnd end = Watch(LauncherIn(study, arguments), milliseconds(400));
    EXPECT_FALSE(end.hangs) << pipe << ", " << testing::PrintToString(arguments);
    EXPECT_EQ(end.orphans, 0U);
    EXPECT_NE(end.result.exitStatus, 0) << pipe << ", " << testing::PrintToString(arguments);
  }
}

TEST(EndlessWaitTest, ForTheWriterOfAPipeAsAnInput) {
  ExpectNoEndlessWait("d.xml", AnalysisText());
  ExpectNoEndlessWait("data.csv", AnalysisText());
  ExpectNoEndlessWait("data.csv", PredictionText());
  ExpectNoEndlessWait("coefficients.csv", PredictionText());
  ExpectNoEndlessWait("individual.csv", ValidationText());
  ExpectNoEndlessWait("prediction.xml", BatchText({"prediction.xml"}));
  ExpectNoEndlessWait("data.csv", BatchText({"prediction.xml"}));
}

TEST(EndlessWaitTest, ForTheWriterOfAPipeAsAChain) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  for (const char* pipe : {"out/chain-1/mcmc/Chain.csv", "out/chain-2/mcmc/Chain.csv",
                           "out/chain-1/fitted.csv", "out/chain-2/chain-2.xml"}) {
    SCOPED_TRACE(pipe);
    const std::string chain = std::string(pipe).substr(4, 7);
    const TinyStudy study;
    EXPECT_EQ(RunLauncher(study, {"--chains", "2", "analysis.xml"}, launcher).exitStatus, 0);
    fs::remove(study.Path() / pipe);
    EXPECT_EQ(::mkfifo(study.File(pipe).c_str(), 0600), 0);
    const WatchedEnd end = Watch(
        LauncherIn(study, {"--chains", "2", "--collect", "analysis.xml"}, launcher), seconds(5));
    EXPECT_FALSE(end.wasAsked);
    EXPECT_EQ(end.result.exitStatus, 1);
    ExpectHolds(end.result.error, chain);
  }
}

TEST(EndlessWaitTest, ForTheReaderOfAPipeAsAnOutput) {
  struct Case {
    const char* pipe;
    std::vector<std::string> arguments;
  };
  for (const Case& example :
       {Case{"out/analysis.log.output.txt", {"--progress", "analysis.xml"}},
        Case{"out/analysis.log", {"--json", "run.json", "analysis.xml"}},
        Case{"out/fitted.csv", {"--progress", "analysis.xml"}},
        Case{"out/chain-1/chain-1.xml", {"--chains", "1", "analysis.xml"}},
        Case{"out/chain-1/analysis.log.output.txt", {"--chains", "1", "analysis.xml"}},
        Case{"out/chain-1/mcmc/Chain.csv", {"--chains", "1", "analysis.xml"}},
        Case{"run.json", {"--json", "run.json", "analysis.xml"}}}) {
    SCOPED_TRACE(example.pipe);
    const TinyStudy study;
    fs::create_directories((study.Path() / example.pipe).parent_path());
    EXPECT_EQ(::mkfifo(study.File(example.pipe).c_str(), 0600), 0);
    const WatchedEnd end = Watch(LauncherIn(study, example.arguments), milliseconds(400));
    EXPECT_FALSE(end.hangs);
    EXPECT_EQ(end.orphans, 0U);
  }
}

/// A command whose program has stopped itself.
class StoppedProgramTest : public testing::TestWithParam<std::vector<std::string>> {
 protected:
  void Begin(const std::string& before) {
    launcher_ = LauncherOfScript(place_, before + "echo >stopped\nkill -STOP $$\nexec sleep 50\n");
    command_ = LauncherIn(study_, GetParam(), launcher_);
    mark_.emplace(command_);
    process_.emplace(command_);
    EXPECT_TRUE(WaitForText(study_.Path() / "stopped", "\n"));
    EXPECT_FALSE(process_->EndsWithin(milliseconds(100)));
    process_->Signal(SIGTERM);
  }

  TinyStudy study_;
  ScratchFolder place_;
  std::string launcher_;
  Command command_;
  std::optional<ProcessMark> mark_;
  std::optional<Process> process_;
};

TEST_P(StoppedProgramTest, IsContinuedByARequestToEnd) {
  Begin("");
  EXPECT_TRUE(process_->EndsWithin(kTimeToEnd));
  EXPECT_TRUE(mark_->LivingAfter(kTimeToEnd).empty());
}

TEST_P(StoppedProgramTest, ThatIgnoresTheRequestIsKilledByASecondOne) {
  Begin("trap '' TERM\n");
  EXPECT_FALSE(process_->EndsWithin(milliseconds(300)));
  process_->Signal(SIGTERM);
  EXPECT_TRUE(process_->EndsWithin(kTimeToEnd));
  EXPECT_TRUE(mark_->LivingAfter(kTimeToEnd).empty());
}

TEST_P(StoppedProgramTest, ThatIgnoresTheRequestIsKilledAfterSomeSeconds) {
  Begin("trap '' TERM\n");
  EXPECT_TRUE(process_->EndsWithin(seconds(15)));
  EXPECT_TRUE(mark_->LivingAfter(kTimeToEnd).empty());
}

INSTANTIATE_TEST_SUITE_P(Tools, StoppedProgramTest,
                         testing::Values(std::vector<std::string>{"--json", "run.json",
                                                                  "analysis.xml"},
                                         std::vector<std::string>{"--progress", "analysis.xml"},
                                         std::vector<std::string>{"--chains", "1", "analysis.xml"}),
                         [](const auto& arguments) { return arguments.param.front().substr(2); });

}  // namespace
}  // namespace Testing
