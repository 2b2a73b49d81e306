// The command's tools, and the programs that they start, killed or asked to end at every system
// call.

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>

#include "faults/command_answers.h"
#include "faults/sample.h"
#include "faults/traced_run.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledKills = 20;

/// What takes the place of a call.
struct Ending {
  int signal;
  const char* effect;
};

constexpr Ending kKill{SIGKILL, "signal=SIGKILL"};
constexpr Ending kTerminate{SIGTERM, "signal=SIGTERM"};
constexpr Ending kInterrupt{SIGINT, "signal=SIGINT"};
constexpr Ending kHangUp{SIGHUP, "signal=SIGHUP"};
constexpr Ending kFault{SIGSEGV, "signal=SIGSEGV"};

class CommandKillTest : public testing::TestWithParam<CommandTool> {
 protected:
  CommandKillTest()
      : study_(GetParam()), command_(GetParam(), study_), answers_(GetParam(), study_, command_) {}

  void SetUp() override {
    const std::string reason = WhyNothingCanBeTraced();
    ASSERT_TRUE(reason.empty()) << reason;
  }

  std::vector<CommandCall> CallsOf(FaultPlace place) const {
    study_.Restore();
    return command_.CallsOf(place);
  }

  /// Runs with each signal in the place of each call, and gives `expect` the result and the signal.
  template <typename Expect>
  void EndAtEach(const std::vector<CommandCall>& calls, FaultPlace place,
                 const std::vector<Ending>& endings, StandIn program, Expect expect) const {
    ASSERT_FALSE(calls.empty());
    Sample sample(kSampledKills, endings.size() * calls.size());
    for (const Ending& ending : endings) {
      for (const CommandCall& call : calls) {
        if (sample.Takes()) {
          const CallFault fault{call, ending.effect, false};
          SCOPED_TRACE(NameOf(place) + ": " + fault.Text());
          study_.Restore();
          expect(command_.Run(place, fault, program), ending.signal);
        }
      }
    }
    std::cout << NameOf(place) << ": " << sample.Text() << "\n";
  }

  CommandStudy study_;
  TracedCommand command_;
  CommandAnswers answers_;
};

TEST_P(CommandKillTest, KilledAtEachCall) {
  EndAtEach(CallsOf(FaultPlace::kCommand), FaultPlace::kCommand, {kKill}, StandIn::kNone,
            [this](const CommandResult& result, int) {
              if (result.run.end.signal == SIGKILL) {
                answers_.ExpectKilled(result);
              } else {
                answers_.ExpectWhole(result);  // it had less to wait for, and made fewer calls
              }
            });
}

TEST_P(CommandKillTest, AskedToEndAtEachCall) {
  EndAtEach(CallsOf(FaultPlace::kCommand), FaultPlace::kCommand, {kTerminate, kInterrupt, kHangUp},
            StandIn::kNone, [this](const CommandResult& result, int signal) {
              answers_.ExpectEnd(result, signal);
            });
}

INSTANTIATE_TEST_SUITE_P(Tools, CommandKillTest, testing::ValuesIn(CommandTools()),
                         [](const auto& tool) { return tool.param.name; });

/// The tools that start programs.
std::vector<CommandTool> StartingTools() {
  std::vector<CommandTool> tools;
  for (const CommandTool& tool : CommandTools()) {
    if (tool.startsProgram) {
      tools.push_back(tool);
    }
  }
  return tools;
}

class CommandChildTest : public CommandKillTest {};

TEST_P(CommandChildTest, AKilledProgramIsReported) {
  for (const FaultPlace place : {FaultPlace::kStart, FaultPlace::kProgram}) {
    EndAtEach(CallsOf(place), place, {kKill, kTerminate, kFault}, StandIn::kNone,
              [this](const CommandResult& result, int) { answers_.ExpectAnswer(result); });
  }
}

// The program would run on for a minute.
TEST_P(CommandChildTest, NoProgramOutlivesTheCommand) {
  study_.Restore();
  EndAtEach(command_.CallsBesideProgram(), FaultPlace::kCommand,
            {kKill,
             kTerminate,
             kInterrupt,
             kHangUp,
             kFault,
             {SIGQUIT, "signal=SIGQUIT"},
             {SIGUSR1, "signal=SIGUSR1"},
             {SIGXCPU, "signal=SIGXCPU"}},
            StandIn::kStaying, [](const CommandResult& result, int) {
              EXPECT_FALSE(result.hasHung);
              EXPECT_EQ(result.left, std::vector<std::string>());
            });
}

INSTANTIATE_TEST_SUITE_P(Tools, CommandChildTest, testing::ValuesIn(StartingTools()),
                         [](const auto& tool) { return tool.param.name; });

}  // namespace
}  // namespace Testing
