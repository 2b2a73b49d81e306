// Every system call of whole runs made to fail in turn: with an error of the device, a full disk,
// an interruption; and reads and writes that move only a part.

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <optional>

#include "faults/fault_answers.h"
#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/sample.h"
#include "faults/system_calls.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledWrites = 150;

class SystemCallFaultTest : public testing::TestWithParam<const char*> {
 protected:
  SystemCallFaultTest() { study_.Enlarge(); }

  RunResult RunWith(const SystemCallFault& fault) {
    faults_.Clear();
    return runs_.Run(study_.Path(), GetParam(), [&] { faults_.Arm(fault); });
  }

  /// A run without a fault, which is the measure of all others.
  void RunWhole() {
    const RunResult whole = RunWith({});
    ASSERT_EQ(whole.end, ProcessEnd{0}) << whole.Text();
    answers_.emplace(GetParam(), whole, study_.Output());
    calls_ = faults_.Report().count;
    ASSERT_GT(calls_, 50);
  }

  /// So many calls of a kind has a whole run.
  int CountOf(SystemCall call) {
    study_.RemoveOutput();
    RunWith({.only = call});
    return faults_.Report().count;
  }

  void ExpectWhole(const RunResult& result) { answers_->ExpectWhole(result, study_.Output()); }

  void ExpectAnswer(const RunResult& result, const SystemCallFault& fault) {
    const SystemCallReport& report = faults_.Report();
    ASSERT_TRUE(report.hasFired);
    if (fault.error == EINTR) {
      ExpectWhole(result);
    } else if (!fault.isFromThenOn) {
      answers_->ExpectAnswer(report, result, study_.Output());
    } else if (result.end == ProcessEnd{0}) {
      ExpectWhole(result);  // only what cannot lose anything came last
    } else {
      // Neither an error line nor a prompt may have been written.
      answers_->ExpectBroken(result, study_.Output());
    }
  }

  FaultStudy study_;
  ForkedRuns runs_;
  SystemCallFaults faults_;
  std::optional<FaultAnswers> answers_;
  int calls_ = 0;
};

TEST_P(SystemCallFaultTest, EachFailingCallIsAnswered) {
  RunWhole();
  struct Kind {
    int error;
    bool isFromThenOn;
  };
  constexpr std::array kKinds = {Kind{EIO, false}, Kind{ENOSPC, false}, Kind{EINTR, false},
                                 Kind{EIO, true}, Kind{ENOSPC, true}};
  for (const SystemCall call : kSystemCalls) {
    const int calls = CountOf(call);
    // There are many writes, one for each line on standard output and in the log; few of the
    // others.
    const auto total = kKinds.size() * static_cast<std::size_t>(calls);
    Sample sample(call == SystemCall::kWrite ? kSampledWrites : total, total);
    for (const Kind& kind : kKinds) {
      for (int failing = 1; failing <= calls; ++failing) {
        if (sample.Takes()) {
          const SystemCallFault fault{SystemCallFault::Kind::kError, call, failing, kind.error,
                                      kind.isFromThenOn};
          SCOPED_TRACE(std::to_string(failing) + ", error " + std::to_string(fault.error) +
                       (fault.isFromThenOn ? " from then on" : ""));
          study_.RemoveOutput();
          ExpectAnswer(RunWith(fault), fault);
        }
      }
    }
    std::cout << NameOf(call) << ": " << sample.Text() << "\n";
  }
}

TEST_P(SystemCallFaultTest, PartsOfReadsAndWritesAreContinued) {
  RunWhole();
  study_.RemoveOutput();
  ExpectWhole(RunWith({.kind = SystemCallFault::Kind::kShort}));
  EXPECT_GT(faults_.Report().count, 4 * calls_);
}

// With the folder there already, failing to make it is no failure at all.
TEST_P(SystemCallFaultTest, MakingAFolderThatIsThereMayFail) {
  RunWhole();
  const int folders = CountOf(SystemCall::kMakeFolder);
  EXPECT_GT(folders, 0);
  for (const int error : {EIO, ENOSPC, EINTR}) {
    for (int failing = 1; failing <= folders; ++failing) {
      ExpectWhole(
          RunWith({SystemCallFault::Kind::kError, SystemCall::kMakeFolder, failing, error}));
    }
  }
}

TEST_P(SystemCallFaultTest, AFullDiskUnderAnyOutputFileIsAnError) {
  RunWhole();
  for (const auto& [name, content] : answers_->Complete()) {
    SCOPED_TRACE(name);
    study_.RemoveOutput();
    const std::filesystem::path file = study_.Path() / "out" / name;
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::create_symlink("/dev/full", file);
    answers_->ExpectFailed("IO Exception", RunWith({}), study_.Output());
  }
}

INSTANTIATE_TEST_SUITE_P(Runs, SystemCallFaultTest, testing::Values("batch.xml", "gee.xml"),
                         [](const auto& definition) {
                           const std::string name = definition.param;
                           return name.substr(0, name.find('.'));
                         });

// A run that fails: whatever else fails while its error is reported, it must not look like success.
TEST(ErrorEndingFaultTest, AnErrorWhileAnErrorIsReportedIsStillExitStatusOne) {
  const FaultStudy study;
  ForkedRuns runs;
  SystemCallFaults faults;
  const RunResult whole = runs.Run(study.Path(), "none.xml", [&] { faults.Arm({}); });
  ExpectFailed(whole, "File \"none.xml\" can not be opened");
  const int calls = faults.Report().count;
  EXPECT_GE(calls, 5) << "banner, file, error line, prompt, key";
  for (const int error : {EIO, ENOSPC, EINTR}) {
    for (const bool isFromThenOn : {false, true}) {
      for (int failing = 1; failing <= calls && !(isFromThenOn && error == EINTR); ++failing) {
        SCOPED_TRACE("call " + std::to_string(failing) + ", error " + std::to_string(error));
        faults.Clear();
        const RunResult result = runs.Run(study.Path(), "none.xml", [&] {
          faults.Arm({.failing = failing, .error = error, .isFromThenOn = isFromThenOn});
        });
        EXPECT_TRUE(faults.Report().hasFired);
        EXPECT_EQ(result.end, ProcessEnd{1}) << result.Text();
        if (error == EINTR) {
          EXPECT_EQ(result.Text(), whole.Text());
        }
      }
    }
  }
}

}  // namespace
}  // namespace Testing
