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

struct EndingSignal {
  int number;
  const char* effect;
};

constexpr EndingSignal kRequests[] = {
    {SIGTERM, "signal=SIGTERM"}, {SIGINT, "signal=SIGINT"}, {SIGHUP, "signal=SIGHUP"}};

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

  /// A run in which the signal takes the place of a call.
  CommandResult RunWith(FaultPlace place, const CommandCall& call, const char* effect,
                        StandIn program = StandIn::kNone) const {
    study_.Restore();
    return command_.Run(place, {call, effect, false}, program);
  }

  CommandStudy study_;
  TracedCommand command_;
  CommandAnswers answers_;
};

TEST_P(CommandKillTest, KilledAtEachCall) {
  const std::vector<CommandCall> calls = CallsOf(FaultPlace::kCommand);
  Sample sample(kSampledKills, calls.size());
  for (const CommandCall& call : calls) {
    if (sample.Takes()) {
      SCOPED_TRACE(call.name + " " + std::to_string(call.number));
      const CommandResult result = RunWith(FaultPlace::kCommand, call, "signal=SIGKILL");
      if (result.run.end.signal == SIGKILL) {
        answers_.ExpectKilled(result);
      } else {
        answers_.ExpectWhole(result);  // it had less to wait for, and ended with fewer calls
      }
    }
  }
  std::cout << sample.Text() << "\n";
}

TEST_P(CommandKillTest, AskedToEndAtEachCall) {
  const std::vector<CommandCall> calls = CallsOf(FaultPlace::kCommand);
  Sample sample(kSampledKills, std::size(kRequests) * calls.size());
  for (const auto& [signal, effect] : kRequests) {
    for (const CommandCall& call : calls) {
      if (sample.Takes()) {
        SCOPED_TRACE(call.name + " " + std::to_string(call.number) + ", " + effect);
        answers_.ExpectEnd(RunWith(FaultPlace::kCommand, call, effect), signal);
      }
    }
  }
  std::cout << sample.Text() << "\n";
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
    const std::vector<CommandCall> calls = CallsOf(place);
    Sample sample(kSampledKills, std::size(kRequests) * calls.size());
    for (const char* const effect : {"signal=SIGKILL", "signal=SIGTERM", "signal=SIGSEGV"}) {
      for (const CommandCall& call : calls) {
        if (sample.Takes()) {
          SCOPED_TRACE(NameOf(place) + ", " + call.name + " " + std::to_string(call.number) + ", " +
                       effect);
          answers_.ExpectAnswer(RunWith(place, call, effect));
        }
      }
    }
    std::cout << NameOf(place) << ": " << sample.Text() << "\n";
  }
}

// The program would run on for a minute.
TEST_P(CommandChildTest, NoProgramOutlivesTheCommand) {
  study_.Restore();
  const std::vector<CommandCall> calls = command_.CallsBesideProgram();
  ASSERT_FALSE(calls.empty());
  constexpr const char* kEffects[] = {"signal=SIGKILL", "signal=SIGTERM", "signal=SIGINT",
                                      "signal=SIGHUP",  "signal=SIGQUIT", "signal=SIGUSR1",
                                      "signal=SIGXCPU", "signal=SIGSEGV"};
  Sample sample(kSampledKills, std::size(kEffects) * calls.size());
  for (const char* const effect : kEffects) {
    for (const CommandCall& call : calls) {
      if (sample.Takes()) {
        SCOPED_TRACE(call.name + " " + std::to_string(call.number) + ", " + effect);
        const CommandResult result = RunWith(FaultPlace::kCommand, call, effect, StandIn::kStaying);
        EXPECT_FALSE(result.hasHung);
        EXPECT_EQ(result.left, std::vector<std::string>());
      }
    }
  }
  std::cout << sample.Text() << "\n";
}

INSTANTIATE_TEST_SUITE_P(Tools, CommandChildTest, testing::ValuesIn(StartingTools()),
                         [](const auto& tool) { return tool.param.name; });

}  // namespace
}  // namespace Testing
