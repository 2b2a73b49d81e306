// The built program and its launcher with every allocation of the process failing in turn, seen
// from outside: also those of the runtime, and those before main.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <utility>

#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/sample.h"
#include "support/files.h"
#include "support/process.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledRuns = 60;
constexpr char kOutOfMemory[] = "Error: Out of memory\n";

/// A command whose process is short of memory.
class ScarceMemory {
 public:
  ScarceMemory(Command command, std::filesystem::path program)
      : command_(std::move(command)), program_(std::move(program)) {}

  /// Runs with the call `failing` failing, or with all calls from there on.
  ProcessResult Run(int failing, bool isFromThenOn) {
    std::filesystem::remove(Report());
    Command command = command_;
    command.environment = {{"LD_PRELOAD", HOVAR_FAILING_MALLOC},
                           {"FAILING_MALLOC_PROGRAM", std::filesystem::canonical(program_)},
                           {"FAILING_MALLOC_CALL", std::to_string(failing)},
                           {"FAILING_MALLOC_REPORT", Report()}};
    if (isFromThenOn) {
      command.environment.emplace_back("FAILING_MALLOC_ALL", "yes");
    }
    return RunProcess(command);
  }

  /// True when a call failed in the last run.
  bool HasFired() const { return std::filesystem::exists(Report()); }

  /// The calls of a run in which none fails.
  int Count() {
    int most = 1;
    while (Run(most, false), HasFired()) {
      most *= 2;
    }
    int least = most / 2;  // that many are made, and fewer than `most`
    while (most - least > 1) {
      const int middle = (least + most) / 2;
      Run(middle, false);
      (HasFired() ? least : most) = middle;
    }
    return least;
  }

 private:
  std::string Report() const { return command_.folder / "fired"; }

  Command command_;
  std::filesystem::path program_;
};

class FailingMallocTest : public testing::TestWithParam<const char*> {
 protected:
  FaultStudy study_;
};

Command ProgramIn(const FaultStudy& study, const std::string& definition) {
  Command command;
  command.program = HOVAR_PROGRAM;
  command.folder = study.Path();
  command.arguments = {"C:\\hovar\\hovar.exe", definition};
  return command;
}

TEST_P(FailingMallocTest, TheProgramEndsWithOutOfMemory) {
  const ProcessResult whole = RunProcess(ProgramIn(study_, GetParam()));
  ASSERT_EQ(whole.exitStatus, 0);
  const OutputFiles complete = study_.Output();
  ScarceMemory memory(ProgramIn(study_, GetParam()), HOVAR_PROGRAM);
  const int count = memory.Count();
  ASSERT_GT(count, 100);
  Sample sample(kSampledRuns, 2 * static_cast<std::size_t>(count));
  int unharmed = 0;
  for (const bool isFromThenOn : {false, true}) {
    for (int failing = 1; failing <= count; ++failing) {
      if (failing > 2 && !sample.Takes()) {
        continue;  // the first calls are the runtime's, and always tried
      }
      SCOPED_TRACE("call " + std::to_string(failing) + (isFromThenOn ? " and all later ones" : ""));
      study_.RemoveOutput();
      const ProcessResult result = memory.Run(failing, isFromThenOn);
      EXPECT_TRUE(memory.HasFired());
      if (result.exitStatus == 0) {
        ++unharmed;
        EXPECT_FALSE(isFromThenOn);
        EXPECT_EQ(study_.Output(), complete);
        continue;
      }
      EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal << "\n" << result.error;
      EXPECT_TRUE(result.error.ends_with(kOutOfMemory)) << result.error;
      EXPECT_TRUE(result.output.ends_with(kPrompt)) << result.output;
      ExpectBrokenOff(study_.Output(), complete);
    }
  }
  // Only the runtime can do without: it keeps memory for exceptions aside before main, and falls
  // back on it for the exceptions that a run answers itself.
  EXPECT_LE(unharmed, 1 + std::count(whole.error.begin(), whole.error.end(), '\n'));
  std::cout << sample.Text() << "\n";
}

INSTANTIATE_TEST_SUITE_P(Runs, FailingMallocTest, testing::ValuesIn(kStudyDefinitions),
                         NameOfStudyRun);

TEST(FailingMallocLauncherTest, TheLauncherEndsWithOutOfMemoryOrStartsTheProgram) {
  const FaultStudy study;
  Command command;
  command.program = HOVAR_LAUNCHER;
  command.folder = study.Path();
  command.arguments = {"hovar", "prediction.xml"};
  ASSERT_EQ(RunProcess(command).exitStatus, 0);
  const OutputFiles complete = study.Output();
  ScarceMemory memory(command, HOVAR_LAUNCHER);
  const int count = memory.Count();
  ASSERT_GT(count, 1);
  for (const bool isFromThenOn : {false, true}) {
    for (int failing = 1; failing <= count; ++failing) {
      SCOPED_TRACE("call " + std::to_string(failing) + (isFromThenOn ? " and all later ones" : ""));
      study.RemoveOutput();
      const ProcessResult result = memory.Run(failing, isFromThenOn);
      EXPECT_TRUE(memory.HasFired());
      if (result.exitStatus == 0) {
        EXPECT_FALSE(isFromThenOn);
        EXPECT_EQ(study.Output(), complete);
        continue;
      }
      EXPECT_EQ(study.Output(), OutputFiles());
      EXPECT_EQ(result.output, "");
      EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal << "\n" << result.error;
      // Without any memory from the start not even an exception can be raised.
      EXPECT_EQ(result.error,
                isFromThenOn && failing == 1 ? "hovar: out of memory\n" : kOutOfMemory);
    }
  }
}

// The launcher keeps the line that it reads until its end has come.
TEST(LittleMemoryTest, AnEndlessLineEndsTheProgramAndLeavesNothing) {
  const FaultStudy study;
  const ScratchFolder place;
  place.Write("libexec/hovar/hovar", "#!/bin/sh\necho $$ > pid\nexec tr '\\0' x < /dev/zero\n");
  place.Write("bin/hovar", ReadFile(HOVAR_LAUNCHER));
  for (const char* file : {"libexec/hovar/hovar", "bin/hovar"}) {
    std::filesystem::permissions(place.Path() / file, std::filesystem::perms::owner_all);
  }
  Command command;
  command.program = "/bin/sh";
  command.folder = study.Path();
  command.arguments = {"sh", "-c", "ulimit -v 200000 && exec \"$1\" --json run.json analysis.xml",
                       "sh", place.File("bin/hovar")};
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.error, "hovar: out of memory\n");
  EXPECT_EQ(kill(std::stoi(study.Read("pid")), 0), -1) << "the program still runs";
  EXPECT_FALSE(study.Has("run.json"));
  EXPECT_FALSE(HasTemporaryFile(study));
}

}  // namespace
}  // namespace Testing
