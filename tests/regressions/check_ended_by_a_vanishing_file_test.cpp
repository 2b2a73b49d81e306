// A file that could not be opened again after `hovar --check` had read it ended the check with the words
// of a run, or left its warnings out without a word. strace lets each opening fail in turn.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"

namespace Testing {
namespace {

TEST(RegressionTest, AFileThatVanishesDuringACheckIsNamed) {
  const TinyStudy study;
  for (const char* file : {"data.csv", "coefficients.csv", "individual.csv"}) {
    bool hasFailed = true;
    for (int opening = 1; hasFailed; ++opening) {
      SCOPED_TRACE(std::string(file) + " " + std::to_string(opening));
      Command command = CheckIn(study, {"validation.xml"});
      command.program = "/usr/bin/env";
      command.arguments.insert(command.arguments.begin(),
                               {"env", "strace", "-f", "-o", "trace.txt", "-P", file, "-e",
                                "inject=openat:error=ENOENT:when=" + std::to_string(opening)});
      // The leak check traces the process itself, and only one can do so.
      command.environment = {{"ASAN_OPTIONS", "detect_leaks=0"}};
      const ProcessResult result = RunProcess(command);
      EXPECT_EQ(result.error.find("rror: "), std::string::npos) << result.error;
      // strace has a line of its own there.
      const bool isNamed =
          result.exitStatus == 1 &&
          result.error.ends_with("\nhovar: cannot read " + std::string(file) + "\n");
      EXPECT_TRUE(isNamed || result.output.ends_with(" 0 warnings\n"))
          << result.output << result.error;
      hasFailed = study.Read("trace.txt").find("(INJECTED)") != std::string::npos;
      ASSERT_TRUE(hasFailed || opening > 1) << "strace (Debian package strace) must be there";
      ASSERT_LT(opening, 100);
    }
  }
}

}  // namespace
}  // namespace Testing
