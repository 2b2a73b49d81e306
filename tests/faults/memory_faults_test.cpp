// Every allocation of whole runs made to fail in turn. What a failed run leaves behind is reported
// by the leak check of the address sanitizer.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "faults/counted_new.h"
#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/sample.h"
#include "foundation/memory.h"
#include "support/allocation_fault.h"
#include "support/raised.h"

namespace {

int allocationsBeforeMain = 0;

void* CountBeforeMain(std::size_t bytes) noexcept {
  ++allocationsBeforeMain;
  return std::calloc(1, bytes);
}

/// Built before every other static object: from then on allocations count, until the tests begin.
struct FirstObject {
  FirstObject() { Vell::SetAllocationFunction(CountBeforeMain); }
};
__attribute__((init_priority(101))) FirstObject firstObject;

class EndOfCount : public testing::Environment {
  void SetUp() override { wasCounting_ = Vell::SetAllocationFunction(nullptr) == CountBeforeMain; }
  void TearDown() override { EXPECT_TRUE(wasCounting_); }

  bool wasCounting_ = false;
};
const testing::Environment* const endOfCount =
    testing::AddGlobalTestEnvironment(new EndOfCount);  // which gtest deletes

}  // namespace

namespace Testing {
namespace {

constexpr std::size_t kSampledRuns = 150;

class MemoryFaultTest : public testing::TestWithParam<const char*> {
 protected:
  MemoryFaultTest() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(study_.Path());
    EXPECT_NE(std::freopen("/dev/null", "r", stdin), nullptr);
  }
  ~MemoryFaultTest() override { std::filesystem::current_path(before_); }

  struct Run {
    int exitStatus = 0;
    int allocations = 0;
    bool hasFired = false;
    std::string output;
    std::string error;
  };

  static Run RunWith(int failing, AllocationFault::Extent extent) {
    OutputCapture capture;
    Run run;
    {
      const AllocationFault fault(failing, extent);
      run.exitStatus = RunHere(GetParam());
      run.allocations = fault.Count();
      run.hasFired = fault.HasFired();
    }
    run.output = capture.TakeOutput();
    run.error = capture.TakeError();
    return run;
  }

  FaultStudy study_;

 private:
  std::filesystem::path before_;
};

TEST_P(MemoryFaultTest, EachFailingAllocationIsOutOfMemory) {
  const Run whole = RunWith(0, AllocationFault::Extent::kOnce);
  ASSERT_EQ(whole.exitStatus, 0);
  ASSERT_GT(whole.allocations, 50);
  const OutputFiles complete = study_.Output();
  Sample sample(kSampledRuns, 2 * static_cast<std::size_t>(whole.allocations));
  for (const auto extent : {AllocationFault::Extent::kOnce, AllocationFault::Extent::kFromThenOn}) {
    for (int failing = 1; failing <= whole.allocations; ++failing) {
      if (!sample.Takes()) {
        continue;
      }
      SCOPED_TRACE("allocation " + std::to_string(failing));
      study_.RemoveOutput();
      const Run run = RunWith(failing, extent);
      EXPECT_TRUE(run.hasFired);
      EXPECT_EQ(run.exitStatus, 1);
      // A run with clusters may have written lines of factorisations that failed before.
      const std::string line = "Error: Out of memory\n";
      EXPECT_TRUE(run.error.ends_with(line) &&
                  whole.error.starts_with(run.error.substr(0, run.error.size() - line.size())))
          << run.error;
      EXPECT_TRUE(run.output.starts_with(failing > 1 ? kBanner : "") &&
                  run.output.ends_with(kPrompt))
          << run.output;
      ExpectBrokenOff(study_.Output(), complete);
    }
  }
  // And nothing of all this is left for the next run.
  study_.RemoveOutput();
  EXPECT_EQ(RunWith(0, AllocationFault::Extent::kOnce).exitStatus, 0);
  EXPECT_EQ(study_.Output(), complete);
  std::cout << sample.Text() << "\n";
}

TEST_P(MemoryFaultTest, NothingIsAllocatedByOtherMeans) {
  OutputCapture capture;
  int exitStatus = 1;
  int count = 0;
  {
    const CountedNew news;
    exitStatus = RunHere(GetParam());
    count = news.Count();
  }
  EXPECT_EQ(exitStatus, 0);
  EXPECT_EQ(count, 0);
}

TEST(CountedNewTest, SeesAContainer) {
  const CountedNew news;
  const std::string text(1000, 'x');
  EXPECT_GT(news.Count(), 0) << text;
}

INSTANTIATE_TEST_SUITE_P(Runs, MemoryFaultTest, testing::ValuesIn(kStudyDefinitions),
                         NameOfStudyRun);

TEST(MemoryBeforeMainTest, NothingIsAllocatedBeforeTheProgramBegins) {
  EXPECT_EQ(allocationsBeforeMain, 0);
  // The count works.
  Vell::SetAllocationFunction(CountBeforeMain);
  Vell::ReleaseBlock(Vell::AllocateZeroed(8));
  Vell::SetAllocationFunction(nullptr);
  EXPECT_EQ(std::exchange(allocationsBeforeMain, 0), 1);
}

}  // namespace
}  // namespace Testing
