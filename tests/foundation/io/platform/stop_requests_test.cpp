// Signals that ask a process to end, as processes of this system send them.

#include <gtest/gtest.h>

#include <csignal>

#include "foundation/io/platform/processes.h"
#include "support/child_process.h"

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

INSTANTIATE_TEST_SUITE_P(Signals, StopRequestTest, testing::Values(SIGINT, SIGTERM, SIGHUP));

}  // namespace
