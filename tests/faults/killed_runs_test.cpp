// Runs that are killed: what they leave is whole as far as it goes, and running again gives the
// same bytes as if nothing had happened.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/sample.h"
#include "faults/system_calls.h"

namespace Testing {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kSampledCalls = 60;
constexpr int kSampledMoments = 25;
constexpr int kAllMoments = 2000;

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
  const auto start = Clock::now();
  runs_.Run(study_.Path(), "batch.xml");
  const auto duration = std::chrono::duration<double, std::micro>(Clock::now() - start);
  study_.RemoveOutput();
  Sample sample(1, 1);
  SeededRandom random(Sample::IsAll() ? 2 : 1);
  int broken = 0;
  const int moments = Sample::IsAll() ? kAllMoments : kSampledMoments;
  for (int i = 0; i < moments; ++i) {
    const double delay = random.Real(0, 1.1 * duration.count());
    SCOPED_TRACE(std::to_string(delay) + " microseconds");
    {
      const ChildProcess run([&] {
        std::filesystem::current_path(study_.Path());
        ReplaceHandle(0, "/dev/null");
        ReplaceHandle(1, "/dev/null");
        return RunHere("batch.xml");
      });
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
