// When a signal ended the command, the program that it had started ran on, without a record; and
// what the command had inherited, such as blocked signals, was handed on to it.

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

#include "blackbox/launcher_runs.h"
#include "blackbox/watched_run.h"
#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

constexpr int kAskingSignals[] = {SIGINT,  SIGTERM, SIGHUP,  SIGQUIT, SIGUSR1,   SIGUSR2,
                                  SIGALRM, SIGXCPU, SIGPROF, SIGIO,   SIGVTALRM, SIGPWR};
constexpr int kIgnoredSignals[] = {SIGPIPE, SIGXFSZ};

std::vector<std::string> RecordedRun() { return {"--json", "run.json", "long.xml"}; }

/// A long run that has begun, with a signal sent to the command.
struct SignalledRun {
  explicit SignalledRun(int signal, const std::vector<std::string>& arguments, const char* lines)
      : command(LauncherIn(study, arguments)), mark(command) {
    study.Write("long.xml", LongAnalysisText());
    process.emplace(command);
    EXPECT_TRUE(lines == nullptr ? process->WaitForOutput("\nBurnin: 1 ")
                                 : WaitForText(study.Path() / lines, "\nBurnin: 1 "));
    EXPECT_GE(mark.Living().size(), 2U);
    process->Signal(signal);
  }

  TinyStudy study;
  Command command;
  ProcessMark mark;
  std::optional<Process> process;
};

TEST(SignalledCommandTest, EndsTheProgramAndKeepsItsRecord) {
  for (const int signal : kAskingSignals) {
    SCOPED_TRACE(signal);
    SignalledRun run(signal, RecordedRun(), nullptr);
    EXPECT_TRUE(run.process->EndsWithin(kTimeToEnd));
    EXPECT_TRUE(run.mark.LivingAfter(kTimeToEnd).empty());
    EXPECT_TRUE(run.study.Has("run.json"));
    if (run.study.Has("run.json")) {
      ExpectHolds(run.study.Read("run.json"),
                  "\"exitStatus\": " + std::to_string(128 + signal) + ",");
    }
  }
}

TEST(SignalledCommandTest, EndsAllChains) {
  for (const int signal : kAskingSignals) {
    SCOPED_TRACE(signal);
    SignalledRun run(signal, {"--chains", "2", "--jobs", "2", "long.xml"},
                     "out/chain-1/analysis.log.output.txt");
    EXPECT_TRUE(run.process->EndsWithin(kTimeToEnd));
    EXPECT_TRUE(run.mark.LivingAfter(kTimeToEnd).empty());
  }
}

TEST(SignalledCommandTest, ThatIsKilledLeavesNoProgram) {
  for (const int signal : {SIGKILL, SIGSEGV, SIGABRT}) {
    SCOPED_TRACE(signal);
    SignalledRun run(signal, RecordedRun(), nullptr);
    EXPECT_TRUE(run.mark.LivingAfter(kTimeToEnd).empty());
    SignalledRun chains(signal, {"--chains", "2", "--jobs", "2", "long.xml"},
                        "out/chain-2/analysis.log.output.txt");
    EXPECT_TRUE(chains.mark.LivingAfter(kTimeToEnd).empty());
    SignalledRun bar(signal, {"--progress", "long.xml"}, "out/analysis.log.output.txt");
    EXPECT_TRUE(bar.mark.LivingAfter(kTimeToEnd).empty());
  }
}

TEST(SignalledCommandTest, FailedWritesAreNoReasonToEnd) {
  for (const int signal : kIgnoredSignals) {
    SCOPED_TRACE(signal);
    SignalledRun run(signal, RecordedRun(), nullptr);
    EXPECT_FALSE(run.process->EndsWithin(std::chrono::milliseconds(200)));
    EXPECT_GE(run.mark.Living().size(), 2U);
    run.process->Signal(SIGTERM);
    EXPECT_EQ(run.process->Wait().exitStatus, 128 + SIGTERM);
  }
}

/// The value of a line of /proc/ID/status, a set of signals.
std::uint64_t SignalSet(int process, const std::string& name) {
  std::ifstream file("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(name + ":")) {
      return std::stoull(line.substr(name.size() + 1), nullptr, 16);
    }
  }
  ADD_FAILURE() << "no " << name;
  return 0;
}

std::uint64_t SetOf(int signal) { return std::uint64_t{1} << (signal - 1); }

/// The marked process that is the program and not the command.
int ProgramAmong(const std::vector<int>& processes) {
  for (const int id : processes) {
    if (fs::read_symlink("/proc/" + std::to_string(id) + "/exe") == fs::canonical(HOVAR_PROGRAM)) {
      return id;
    }
  }
  return 0;
}

TEST(SignalledCommandTest, TheProgramStartsWithAnEmptyMask) {
  const TinyStudy study;
  study.Write("long.xml", LongAnalysisText());
  Command command = LauncherIn(study, {});
  command.program = "/usr/bin/env";
  command.arguments = {"env",          "--block-signal", "--ignore-signal=USR1,CHLD",
                       HOVAR_LAUNCHER, "--json",         "run.json",
                       "long.xml"};
  const ProcessMark mark(command);
  Process process(command);
  ASSERT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
  const int program = ProgramAmong(mark.Living());
  ASSERT_NE(program, 0);
  EXPECT_EQ(SignalSet(program, "SigBlk"), 0U);
  EXPECT_EQ(SignalSet(program, "SigIgn"), SetOf(SIGPIPE) | SetOf(SIGXFSZ));
  process.Signal(SIGKILL);
  EXPECT_TRUE(mark.LivingAfter(kTimeToEnd).empty());
}

}  // namespace
}  // namespace Testing
