// A write into a pipe that nobody reads, and one beyond the limit for the size of files, came with a
// signal that ended the program or the command without a word. A program that the command watched went
// on alone, and an error while an error was reported ended in an abort.

#include <gtest/gtest.h>

#include "blackbox/launcher_runs.h"
#include "blackbox/tiny_study.h"
#include "support/running_process.h"

namespace Testing {
namespace {

TEST(RegressionTest, APipeThatNobodyReadsEndsTheRunWithALine) {
  const TinyStudy study;
  for (Command command :
       {HovarIn(study, {"prediction.xml"}), LauncherIn(study, {"prediction.xml"})}) {
    command.output = Output::kBroken;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    // The prompt fails too.
    EXPECT_EQ(result.error, "Error: IO Exception\nError: IO Exception\n");
  }
}

TEST(RegressionTest, APipeThatNobodyReadsEndsAToolWithALine) {
  const TinyStudy study;
  Command command = LauncherIn(study, {"--check", "prediction.xml"});
  command.output = Output::kBroken;
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  EXPECT_EQ(result.error, "hovar: cannot write to standard output\n");
}

TEST(RegressionTest, ALimitOfTheSizeOfFilesEndsTheRunWithALine) {
  const TinyStudy study;
  Command command = HovarIn(study, {"prediction.xml"});
  command.fileSizeLimit = 10;
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  EXPECT_EQ(result.error, "Error: IO Exception\n");
  EXPECT_TRUE(result.output.ends_with(kPrompt)) << result.output;
}

TEST(RegressionTest, AWatchedRunEndsWithTheOneThatWatches) {
  const TinyStudy study;
  study.Write("long.xml", LongAnalysisText());
  Process process(LauncherIn(study, {"--json", "run.json", "long.xml"}));
  EXPECT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
  process.CloseOutput();
  const ProcessResult result = process.Wait();
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  EXPECT_EQ(result.error, "hovar: cannot write to standard output\n");
  EXPECT_TRUE(study.Has("run.json"));
}

// The program is a child then. Its lines once went into a file, in which the one about its error had no
// room either.
TEST(RegressionTest, AWatchedRunSaysWhyItEnded) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--json", "/dev/null", "prediction.xml"},
        {"--progress", "prediction.xml"}}) {
    SCOPED_TRACE(arguments[0]);
    const TinyStudy study;
    Command command = LauncherIn(study, arguments);
    command.fileSizeLimit = 30;
    const ProcessResult result = RunProcess(command);
    ExpectHolds(result.error, "Error: IO Exception\n");
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  }
}

TEST(RegressionTest, AnErrorThatCannotBeReportedIsNoAbort) {
  for (const char* definition : {"prediction.xml", "none.xml"}) {
    const TinyStudy study;
    Command command = HovarIn(study, {definition});
    command.output = Output::kBroken;
    command.error = Output::kBroken;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  }
}

}  // namespace
}  // namespace Testing
