// Signals that ask a process to end, as processes of this system send them.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>

#include "foundation/io/platform/processes.h"
#include "support/child_process.h"
#include "support/files.h"

namespace {

namespace Platform = Vell::IO::Platform;
using Testing::RunInChild;

class StopRequestTest : public testing::TestWithParam<int> {};

TEST_P(StopRequestTest, IsRememberedAndEndsASleep) {
  const int signal = GetParam();
  const auto end = RunInChild([signal] {
    Platform::RememberStopRequests();
    const bool before = Platform::StopRequest() == 0;
    std::raise(signal);
    Platform::Sleep(600'000);
    return before && Platform::StopRequest() == signal ? 0 : 1;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{.exitStatus = 0});
}

TEST_P(StopRequestTest, StaysIgnoredWhereItWasIgnored) {
  const int signal = GetParam();
  const auto end = RunInChild([signal] {
    static_cast<void>(std::signal(signal, SIG_IGN));
    Platform::RememberStopRequests();
    std::raise(signal);
    return Platform::StopRequest() == 0 ? 0 : 1;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{.exitStatus = 0});
}

TEST_P(StopRequestTest, EndsTheProcessWhenItIsNoLongerRemembered) {
  const int signal = GetParam();
  const auto end = RunInChild([signal] {
    Platform::RememberStopRequests();
    Platform::ForgetStopRequests();
    std::raise(signal);
    return 0;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{.signal = signal});
}

INSTANTIATE_TEST_SUITE_P(Signals, StopRequestTest,
                         testing::Values(SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGALRM,
                                         SIGPROF, SIGIO, SIGPWR));

TEST(StopRequestsTest, TheFirstOneIsNamedAndAllAreCounted) {
  const auto end = RunInChild([] {
    Platform::RememberStopRequests();
    for (const int signal : {SIGTERM, SIGINT, SIGQUIT, SIGXCPU}) {
      std::raise(signal);
    }
    return Platform::StopRequest() == SIGTERM && Platform::StopRequestCount() == 4 ? 0 : 1;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{.exitStatus = 0});
}

TEST(StopRequestsTest, AThirdOneAfterASecondEndsTheProcess) {
  const auto end = RunInChild([] {
    Platform::RememberStopRequests();
    std::raise(SIGINT);
    std::raise(SIGINT);
    Platform::Sleep(0);
    Platform::Sleep(1100);
    std::raise(SIGINT);
    return 0;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{.signal = SIGINT});
}

TEST(ResetSignalsTest, TheEndsOfChildrenAreReportedAgain) {
  const auto end = RunInChild([] {
    static_cast<void>(std::signal(SIGCHLD, SIG_IGN));
    Platform::ResetSignals();
    const char* const arguments[] = {"sh", "-c", "exit 7", nullptr};
    return Platform::WaitForProcess(Platform::StartProcess("/bin/sh", arguments, {}));
  });
  EXPECT_EQ(end, Testing::ProcessEnd{.exitStatus = 7});
}

TEST(ReadRegularTest, APipeIsNotWaitedFor) {
  const Testing::ScratchFolder folder;
  ASSERT_EQ(::mkfifo(folder.File("pipe").c_str(), 0600), 0);
  EXPECT_EQ(Platform::OpenFile(folder.File("pipe").c_str(), Platform::Access::kReadRegular),
            Platform::kNoFile);
  EXPECT_EQ(Platform::OpenFile("/dev/null", Platform::Access::kReadRegular), Platform::kNoFile);
  folder.Write("file", "f");
  const Platform::FileHandle file =
      Platform::OpenFile(folder.File("file").c_str(), Platform::Access::kReadRegular);
  ASSERT_NE(file, Platform::kNoFile);
  char byte = 0;
  EXPECT_EQ(Platform::ReadFile(file, &byte, 1), 1);
  EXPECT_EQ(Platform::CloseFile(file), true);
}

}  // namespace
