// Waiting for one key: on a terminal, which must be left as it was however the waiting ends, and on
// everything else that can stand in for standard input.

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "foundation/io/platform/platform.h"
#include "support/child_process.h"
#include "support/files.h"
#include "support/terminal_session.h"

namespace {

namespace Platform = Vell::IO::Platform;
using Testing::ChildProcess;
using Testing::Pipe;
using Testing::ProcessEnd;
using Testing::RunInChild;
using Testing::TerminalSession;
using Place = Testing::TerminalSession::Place;

// Long enough for a process that does not wait to be caught at it, nearly always; a slow machine
// can only make the check pass.
constexpr int kMoment = 50;

int WaitForKey() {
  Platform::WaitForKey();
  return 7;
}

const TerminalSession::Event kKeyTaken = TerminalSession::Exited(7);

TEST(KeyPressTest, OneKeyWithoutEnterServesAndIsNotShown) {
  TerminalSession session(Place::kForeground, WaitForKey);
  ASSERT_TRUE(session.WaitForKeyMode());
  EXPECT_FALSE(session.HasEcho());
  ASSERT_EQ(session.NextEvent(kMoment), TerminalSession::Event{}) << "nobody pressed a key yet";
  session.Type("x");
  EXPECT_EQ(session.NextEvent(), kKeyTaken);
  EXPECT_EQ(session.Shown(), "");
  EXPECT_EQ(session.Attributes(), session.InitialAttributes());
  EXPECT_EQ(session.UnreadBytes(), 0);
}

class KeyTest : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(Keys, KeyTest,
                         testing::Values("\r", "\n", " ", "\x1B", "\x7F", "Q",  // Q erases here
                                         "\x04",                                // the end of a file
                                         "\x1B[A", "\x1B[15~", "\x1BOP", "\xC3\xA4"));

TEST_P(KeyTest, IsTakenWithAllItsBytes) {
  TerminalSession session(Place::kForeground, WaitForKey);
  ASSERT_TRUE(session.WaitForKeyMode());
  session.Type(GetParam());
  EXPECT_EQ(session.NextEvent(), kKeyTaken);
  EXPECT_EQ(session.Attributes(), session.InitialAttributes());
  EXPECT_EQ(session.UnreadBytes(), 0);
}

TEST(KeyPressTest, KeysTypedEarlierDoNotServe) {
  TerminalSession session(Place::kForeground, WaitForKey, "abc\n");
  ASSERT_TRUE(session.WaitForKeyMode());
  ASSERT_EQ(session.NextEvent(kMoment), TerminalSession::Event{});
  session.Type("x");
  EXPECT_EQ(session.NextEvent(), kKeyTaken);
  EXPECT_EQ(session.UnreadBytes(), 0);
}

TEST(KeyPressTest, WaitingTwiceTakesTwoKeys) {
  const Pipe pipe;
  TerminalSession session(Place::kForeground, [&pipe] {
    Platform::WaitForKey();
    pipe.Write("1");
    Platform::WaitForKey();
    return 7;
  });
  ASSERT_TRUE(session.WaitForKeyMode());
  session.Type("x");
  EXPECT_EQ(pipe.ReadByte(), '1');
  ASSERT_TRUE(session.WaitForKeyMode());
  ASSERT_EQ(session.NextEvent(kMoment), TerminalSession::Event{});
  session.Type("y");
  EXPECT_EQ(session.NextEvent(), kKeyTaken);
  EXPECT_EQ(session.Attributes(), session.InitialAttributes());
}

class SignalTest : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(Ending, SignalTest, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT),
                         [](const auto& info) {
                           return info.param == SIGINT    ? "Interrupt"
                                  : info.param == SIGTERM ? "Terminate"
                                  : info.param == SIGHUP  ? "HangUp"
                                                          : "Quit";
                         });

TEST_P(SignalTest, EndsTheProcessAndLeavesTheTerminalAsItWas) {
  TerminalSession session(Place::kForeground, WaitForKey);
  ASSERT_TRUE(session.WaitForKeyMode());
  session.Signal(GetParam());
  EXPECT_EQ(session.NextEvent(), TerminalSession::Killed(GetParam()));
  EXPECT_EQ(session.Attributes(), session.InitialAttributes());
}

TEST_P(SignalTest, StaysIgnoredWhereItWasIgnoredBefore) {
  TerminalSession session(Place::kForeground, [] {
    std::signal(GetParam(), SIG_IGN);
    return WaitForKey();
  });
  ASSERT_TRUE(session.WaitForKeyMode());
  session.Signal(GetParam());
  ASSERT_EQ(session.NextEvent(kMoment), TerminalSession::Event{});
  session.Type("x");
  EXPECT_EQ(session.NextEvent(), kKeyTaken);
  EXPECT_EQ(session.Attributes(), session.InitialAttributes());
}

TEST_P(SignalTest, EndsTheProcessAsUsualAfterTheKey) {
  TerminalSession session(Place::kForeground, [] {
    Platform::WaitForKey();
    std::raise(GetParam());
    return 7;
  });
  ASSERT_TRUE(session.WaitForKeyMode());
  session.Type("x");
  EXPECT_EQ(session.NextEvent(), TerminalSession::Killed(GetParam()));
}

TEST(KeyPressTest, InterruptKeyStillInterrupts) {
  TerminalSession session(Place::kForeground, WaitForKey);
  ASSERT_TRUE(session.WaitForKeyMode());
  session.Type("\x03");
  EXPECT_EQ(session.NextEvent(), TerminalSession::Killed(SIGINT));
  EXPECT_EQ(session.Attributes(), session.InitialAttributes());
}

TEST(KeyPressTest, SuspendedProcessGivesTheTerminalBackAndWaitsOnWhenContinued) {
  TerminalSession session(Place::kForeground, WaitForKey);
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(session.WaitForKeyMode());
    session.Signal(SIGTSTP);
    ASSERT_EQ(session.NextEvent(), TerminalSession::Stopped());
    EXPECT_EQ(session.Attributes(), session.InitialAttributes());
    session.Signal(SIGCONT);
  }
  ASSERT_TRUE(session.WaitForKeyMode());
  ASSERT_EQ(session.NextEvent(kMoment), TerminalSession::Event{});
  session.Type("x");
  EXPECT_EQ(session.NextEvent(), kKeyTaken);
  EXPECT_EQ(session.Attributes(), session.InitialAttributes());
}

TEST(KeyPressTest, BackgroundProcessReturnsAtOnceAndLeavesTheTerminalAlone) {
  TerminalSession session(Place::kBackground, WaitForKey, "typed for the shell\n");
  EXPECT_EQ(session.NextEvent(), kKeyTaken) << "not stopped either";
  EXPECT_EQ(session.Attributes(), session.InitialAttributes());
  EXPECT_EQ(session.UnreadBytes(), 20) << "typed keys belong to the foreground";
}

TEST(StandardInputTest, IsATerminalOnlyWhereItIsOne) {
  TerminalSession session(Place::kForeground,
                          [] { return Platform::StandardInputIsTerminal() ? 1 : 0; });
  EXPECT_EQ(session.NextEvent(), TerminalSession::Exited(1));
  EXPECT_EQ(RunInChild([] {
              Testing::ReplaceHandle(0, "/dev/null");
              return Platform::StandardInputIsTerminal() ? 1 : 0;
            }),
            ProcessEnd{0});
}

TEST(KeyPressWithoutTerminalTest, TakesOneByteOfAPipe) {
  const Pipe pipe;
  pipe.Write("ab");
  EXPECT_EQ(RunInChild([&pipe] {
              Testing::ReplaceHandle(0, pipe.ReadEnd());
              return WaitForKey();
            }),
            ProcessEnd{7});
  EXPECT_EQ(pipe.ReadByte(), 'b');
}

TEST(KeyPressWithoutTerminalTest, WaitsForThePipeEvenWhenSignalsCome) {
  Pipe pipe;
  const Pipe done;
  ChildProcess process([&] {
    Testing::ReplaceHandle(0, pipe.ReadEnd());
    const Testing::Interruptions interruptions;
    Platform::WaitForKey();
    done.Write("!");
    return 7;
  });
  EXPECT_FALSE(done.IsReadable(kMoment));
  pipe.Write("a");
  EXPECT_EQ(process.Wait(), ProcessEnd{7});
}

TEST(KeyPressWithoutTerminalTest, EndOfAPipeServes) {
  Pipe pipe;
  pipe.CloseWriteEnd();
  EXPECT_EQ(RunInChild([&pipe] {
              Testing::ReplaceHandle(0, pipe.ReadEnd());
              return WaitForKey();
            }),
            ProcessEnd{7});
}

TEST(KeyPressWithoutTerminalTest, FilesNullDeviceAndClosedInputServe) {
  const Testing::ScratchFolder folder;
  for (const std::string& input :
       {folder.Write("one", "x"), folder.Write("empty", ""), std::string("/dev/null")}) {
    EXPECT_EQ(RunInChild([&input] {
                Testing::ReplaceHandle(0, input);
                return WaitForKey();
              }),
              ProcessEnd{7})
        << input;
  }
  EXPECT_EQ(RunInChild([] {
              Testing::CloseHandle(0);
              return WaitForKey();
            }),
            ProcessEnd{7});
}

}  // namespace
