// Every system call of whole runs made to fail in turn: with an error of the device, a full disk,
// an interruption; and reads and writes that move only a part.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/sample.h"
#include "faults/system_calls.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledWrites = 150;
constexpr int kStandardError = 2;

class SystemCallFaultTest : public testing::TestWithParam<const char*> {
 protected:
  SystemCallFaultTest() { study_.Enlarge(); }

  ForkedResult RunWith(const SystemCallFault& fault) {
    faults_.Clear();
    return runs_.Run(study_.Path(), GetParam(), [&] { faults_.Arm(fault); });
  }

  /// A run without a fault, whose output is the measure of all others.
  void RunWhole() {
    whole_ = RunWith({});
    ASSERT_EQ(whole_.end, ProcessEnd{0}) << whole_.Text();
    complete_ = study_.Output();
    calls_ = faults_.Report().count;
    ASSERT_GT(calls_, 50);
  }

  /// So many calls of a kind has a whole run.
  int CountOf(SystemCall call) {
    study_.RemoveOutput();
    RunWith({.only = call});
    return faults_.Report().count;
  }

  void ExpectWhole(const ForkedResult& result) {
    EXPECT_EQ(result.end, ProcessEnd{0}) << result.Text();
    EXPECT_EQ(result.error, whole_.error);
    EXPECT_EQ(study_.Output(), complete_);
  }

  /// The name of a file in an error line: as it was written, with a backslash where it was joined.
  static std::string WithoutBackslashes(std::string text) {
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
  }

  /// A run that must fail with this line; lines of earlier, answered errors may stand before it.
  void ExpectBroken(const ForkedResult& result, const std::string& line, bool hasPrompt) {
    EXPECT_EQ(result.end, ProcessEnd{1}) << result.Text();
    const std::string last = "Error: " + line + "\n";
    const std::string error = WithoutBackslashes(result.error);
    EXPECT_TRUE(error.ends_with(last) &&
                whole_.error.starts_with(error.substr(0, error.size() - last.size())))
        << "expected: " << last << result.Text();
    EXPECT_TRUE(!hasPrompt || result.output.ends_with(kPrompt)) << result.Text();
    ExpectBrokenOff(study_.Output(), complete_);
  }

  void ExpectAnswer(const ForkedResult& result, const SystemCallFault& fault) {
    const SystemCallReport& report = faults_.Report();
    ASSERT_TRUE(report.hasFired);
    SCOPED_TRACE(NameOf(report.call) + " of <" + report.path + ">");
    if (fault.error == EINTR) {
      ExpectWhole(result);
      return;
    }
    if (fault.isFromThenOn || report.file == kStandardError) {
      // Neither an error line nor a prompt can be written any more; or an error line could not.
      if (result.end == ProcessEnd{0}) {
        // Only what cannot lose anything came last.
        ExpectWhole(result);
      } else {
        EXPECT_EQ(result.end, ProcessEnd{1}) << result.Text();
        ExpectBrokenOff(study_.Output(), complete_);
      }
      return;
    }
    switch (report.call) {
      case SystemCall::kOpen:
        ExpectBroken(result, "File \"" + std::string(report.path) + "\" can not be opened", true);
        break;
      case SystemCall::kMakeFolder:
        if (report.isThere) {
          ExpectWhole(result);
          break;
        }
        // That it failed is not told: the folder is missing when its first file is opened.
        ExpectBroken(result,
                     "File \"" + std::string(report.path) + "/" +
                         (std::string_view(report.path) == "out" ? FirstLog() : "Summary.csv") +
                         "\" can not be opened",
                     true);
        break;
      case SystemCall::kClose:
        // Closing a file that was only read loses nothing.
        if (!report.isOpenForWriting) {
          ExpectWhole(result);
          break;
        }
        [[fallthrough]];
      case SystemCall::kRead:
      case SystemCall::kWrite:
      case SystemCall::kSeek:
      case SystemCall::kLength:
        if (report.call == SystemCall::kSeek && report.file <= kStandardError) {
          ExpectWhole(result);  // a pipe or a terminal has no position
        } else {
          ExpectBroken(result, "IO Exception", true);
        }
        break;
    }
  }

  static std::string FirstLog() {
    const std::string definition = GetParam();
    return definition == "batch.xml" ? "analysis.log"
                                     : definition.substr(0, definition.find('.')) + ".log";
  }

  FaultStudy study_;
  ForkedRuns runs_;
  SystemCallFaults faults_;
  ForkedResult whole_;
  OutputFiles complete_;
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

INSTANTIATE_TEST_SUITE_P(Runs, SystemCallFaultTest, testing::Values("batch.xml", "gee.xml"),
                         [](const auto& definition) {
                           const std::string name = definition.param;
                           return name.substr(0, name.find('.'));
                         });

}  // namespace
}  // namespace Testing
