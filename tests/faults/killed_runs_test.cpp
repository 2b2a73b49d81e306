// Runs that are killed: what they leave is whole as far as it goes, and running again gives the
// same bytes as if nothing had happened.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <iostream>
#include <thread>

#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/sample.h"
#include "faults/system_calls.h"
#include "support/running_process.h"

namespace Testing {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kSampledCalls = 60;
constexpr int kSampledMoments = 25;
constexpr int kAllMoments = 2000;

/// The built program, so that its start and its end are met too.
Command BatchIn(const FaultStudy& study) {
  Command command;
  command.program = HOVAR_PROGRAM;
  command.folder = study.Path();
  command.arguments = {"C:\\hovar\\hovar.exe", "batch.xml"};
  return command;
}

class KilledRunTest : public testing::Test {
 protected:
  KilledRunTest() {
    const RunResult whole = runs_.Run(study_.Path(), "batch.xml");
    EXPECT_EQ(whole.end, ProcessEnd{0});
    complete_ = study_.Output();
    study_.RemoveOutput();
  }

  void ExpectGoodRerun() {
    ExpectBrokenOff(study_.Output(), complete_);
    ExpectSucceeded(runs_.Run(study_.Path(), "batch.xml"));
    EXPECT_EQ(study_.Output(), complete_);
    study_.RemoveOutput();
  }

  double MicrosecondsOfARun() {
    const auto start = Clock::now();
    EXPECT_EQ(RunProcess(BatchIn(study_)).exitStatus, 0);
    const std::chrono::duration<double, std::micro> duration = Clock::now() - start;
    EXPECT_EQ(study_.Output(), complete_);
    study_.RemoveOutput();
    return duration.count();
  }

  FaultStudy study_;
  ForkedRuns runs_;
  OutputFiles complete_;
};

TEST_F(KilledRunTest, BeforeAndBehindEverySystemCall) {
  SystemCallFaults faults;
  runs_.Run(study_.Path(), "batch.xml", [&] { faults.Arm({}); });
  study_.RemoveOutput();
  const int calls = faults.Report().count;
  ASSERT_GT(calls, 50);
  Sample sample(kSampledCalls, 2 * static_cast<std::size_t>(calls));
  for (const auto kind : {SystemCallFault::Kind::kKillBefore, SystemCallFault::Kind::kKillAfter}) {
    for (int call = 1; call <= calls; ++call) {
      if (sample.Takes()) {
        SCOPED_TRACE("call " + std::to_string(call));
        faults.Clear();
        const RunResult killed = runs_.Run(study_.Path(), "batch.xml",
                                           [&] { faults.Arm({.kind = kind, .failing = call}); });
        EXPECT_EQ(killed.end.signal, SIGKILL);
        ExpectGoodRerun();
      }
    }
  }
  std::cout << sample.Text() << "\n";
}

TEST_F(KilledRunTest, AtRandomMoments) {
  const double duration =
      std::min({MicrosecondsOfARun(), MicrosecondsOfARun(), MicrosecondsOfARun()});
  SeededRandom random = Sample::Random();
  const int moments = Sample::IsAll() ? kAllMoments : kSampledMoments;
  int broken = 0;
  for (int i = 0; i < moments; ++i) {
    const double delay = random.Real(0, 1.1 * duration);
    SCOPED_TRACE(std::to_string(delay) + " microseconds, " + random.Text());
    {
      const Process process(BatchIn(study_));
      std::this_thread::sleep_for(std::chrono::duration<double, std::micro>(delay));
    }  // which kills it
    broken += study_.Output() != complete_ ? 1 : 0;
    ExpectGoodRerun();
  }
  EXPECT_GT(broken, 0) << "every run was quicker than the kill";
  std::cout << broken << " of " << moments << " runs were broken off\n";
}

}  // namespace
}  // namespace Testing
