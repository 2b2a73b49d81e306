// Every system call of the command's tools, and of the programs that they start, made to fail and
// interrupted in turn, by strace.

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "faults/command_answers.h"
#include "faults/sample.h"
#include "faults/traced_run.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledFaults = 30;

struct PlacedFault {
  FaultPlace place = FaultPlace::kCommand;
  CallFault fault;
};

class CommandFaultTest : public testing::TestWithParam<CommandTool> {
 protected:
  CommandFaultTest()
      : study_(GetParam()), command_(GetParam(), study_), answers_(GetParam(), study_, command_) {}

  void SetUp() override {
    const std::string reason = WhyNothingCanBeTraced();
    ASSERT_TRUE(reason.empty()) << reason;
  }

  static std::vector<FaultPlace> Places() {
    return GetParam().startsProgram
               ? std::vector{FaultPlace::kCommand, FaultPlace::kStart, FaultPlace::kProgram}
               : std::vector{FaultPlace::kCommand};
  }

  template <typename Expect>
  void RunFaults(const std::vector<PlacedFault>& faults, Expect expect) {
    Sample sample(kSampledFaults, faults.size());
    int missed = 0;
    for (const auto& [place, fault] : faults) {
      if (sample.Takes()) {
        SCOPED_TRACE(NameOf(place) + ": " + fault.Text());
        study_.Restore();
        const CommandResult result = command_.Run(place, fault);
        missed += result.IsHit() ? 0 : 1;
        expect(result);
      }
    }
    std::cout << sample.Text() << ", " << missed << " missed\n";
  }

  CommandStudy study_;
  TracedCommand command_;
  CommandAnswers answers_;
};

/// True where the sanitizers have ended the process because a call of their own has failed.
bool IsEndOfSanitizers(const CommandResult& result) {
  return HOVAR_IS_SANITIZED != 0 &&
         result.run.error.find("Sanitizer: CHECK failed") != std::string::npos;
}

TEST_P(CommandFaultTest, EachFailingCallIsAnswered) {
  std::vector<PlacedFault> faults;
  for (const FaultPlace place : Places()) {
    study_.Restore();
    for (const CommandCall& call : command_.CallsOf(place)) {
      if (call.name == "access" && GetParam().startsProgram) {
        continue;  // where a folder seems not to be writable, the printed lines go to another one
      }
      if (call.name == "pipe2" && HOVAR_IS_SANITIZED != 0) {
        continue;  // without a pipe the sanitizers take memory for unreadable
      }
      for (const std::string& error : ErrorsOf(call.name)) {
        faults.push_back({place, {call, "error=" + error, false}});
      }
      // With every later close a pipe would stay open that the system would have closed.
      if (call.name != "close") {
        faults.push_back({place, {call, "error=" + ErrorsOf(call.name).front(), true}});
      }
    }
  }
  RunFaults(faults, [this](const CommandResult& result) {
    if (!IsEndOfSanitizers(result)) {
      answers_.ExpectAnswer(result);
    }
  });
}

TEST_P(CommandFaultTest, EachInterruptedCallIsRepeated) {
  std::vector<PlacedFault> faults;
  for (const FaultPlace place : Places()) {
    study_.Restore();
    for (const CommandCall& call : command_.CallsOf(place)) {
      if (IsInterruptible(call.name)) {
        faults.push_back({place, {call, "error=EINTR", false}});
      }
    }
  }
  RunFaults(faults, [this](const CommandResult& result) { answers_.ExpectWhole(result); });
}

INSTANTIATE_TEST_SUITE_P(Tools, CommandFaultTest, testing::ValuesIn(CommandTools()),
                         [](const auto& tool) { return tool.param.name; });

}  // namespace
}  // namespace Testing
