// The wait for a key after an error, watched while it lasts: on a terminal, on a pipe, under
// signals. A run that succeeds never waits.

#include <gtest/gtest.h>

#include <csignal>

#include "runs.h"
#include "support/running_process.h"
#include "tiny_study.h"

namespace Testing {
namespace {

using std::chrono::milliseconds;

/// How long a process that waits for a key is watched: if it did not wait, it would be gone.
constexpr milliseconds kWatch{150};

TEST(ErrorEndingTest, AnOpenPipeIsWaitedFor) {
  const ScratchFolder folder;
  Process process(FailingRun(folder, Input::kOpenPipe));
  EXPECT_TRUE(process.WaitForOutput(kPrompt));
  EXPECT_FALSE(process.EndsWithin(kWatch));
  process.Type("x");
  ExpectError(process.Wait(), CannotOpen("none.xml"));
}

TEST(ErrorEndingTest, OnATerminalOneKeyWithoutEnterEndsIt) {
  const ScratchFolder folder;
  for (const char* key : {"x", " ", "\n", "\r", "\x1b", "\x04", "\xc3\xa4"}) {
    SCOPED_TRACE(static_cast<int>(key[0]));
    Process process(FailingRun(folder, Input::kTerminal));
    EXPECT_TRUE(process.WaitForOutput(kPrompt));
    EXPECT_FALSE(process.EndsWithin(milliseconds(50)));
    process.Type(key);
    ExpectError(process.Wait(), CannotOpen("none.xml"));
    EXPECT_EQ(process.TerminalText(), "") << "the key was echoed";
  }
}

TEST(ErrorEndingTest, KeysTypedBeforeThePromptDoNotCount) {
  const ScratchFolder folder;
  Process process(FailingRun(folder, Input::kTerminal, "typed ahead\n"));
  EXPECT_TRUE(process.WaitForOutput(kPrompt));
  EXPECT_FALSE(process.EndsWithin(kWatch));
  process.Type("x");
  ExpectError(process.Wait(), CannotOpen("none.xml"));
}

TEST(ErrorEndingTest, TheRestOfAnArrowKeyIsDropped) {
  const ScratchFolder folder;
  Process process(FailingRun(folder, Input::kTerminal));
  EXPECT_TRUE(process.WaitForOutput(kPrompt));
  EXPECT_FALSE(process.EndsWithin(milliseconds(50)));
  process.Type("\x1b[A");
  ExpectError(process.Wait(), CannotOpen("none.xml"));
  EXPECT_EQ(process.UnreadTerminalBytes(), 0);
}

TEST(ErrorEndingTest, TheTerminalIsLeftAsItWas) {
  const ScratchFolder folder;
  Process process(FailingRun(folder, Input::kTerminal));
  const std::string before = process.TerminalSettingsAtStart();
  EXPECT_TRUE(process.WaitForOutput(kPrompt));
  EXPECT_FALSE(process.EndsWithin(kWatch));
  EXPECT_NE(process.TerminalSettings(), before) << "keys are read as they come while it waits";
  process.Type("x");
  process.Wait();
  EXPECT_EQ(process.TerminalSettings(), before);
}

TEST(ErrorEndingTest, ASignalWhileItWaitsRestoresTheTerminalAndEndsIt) {
  const ScratchFolder folder;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    SCOPED_TRACE(signal);
    Process process(FailingRun(folder, Input::kTerminal));
    const std::string before = process.TerminalSettingsAtStart();
    EXPECT_TRUE(process.WaitForOutput(kPrompt));
    EXPECT_FALSE(process.EndsWithin(milliseconds(50)));
    process.Signal(signal);
    EXPECT_EQ(process.Wait().signal, signal);
    EXPECT_EQ(process.TerminalSettings(), before);
  }
}

TEST(ErrorEndingTest, InterruptFromTheKeyboardStillWorks) {
  const ScratchFolder folder;
  Process process(FailingRun(folder, Input::kTerminal));
  const std::string before = process.TerminalSettingsAtStart();
  EXPECT_TRUE(process.WaitForOutput(kPrompt));
  EXPECT_FALSE(process.EndsWithin(milliseconds(50)));
  process.Type("\x03");
  EXPECT_EQ(process.Wait().signal, SIGINT);
  EXPECT_EQ(process.TerminalSettings(), before);
}

TEST(ErrorEndingTest, OnATerminalNoKeyIsAwaitedWhenThePromptCannotBeWritten) {
  const ScratchFolder folder;
  for (const Output output : {Output::kFull, Output::kClosed, Output::kBroken}) {
    SCOPED_TRACE(static_cast<int>(output));
    Command command = FailingRun(folder, Input::kTerminal);
    command.output = output;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_EQ(result.error, "Error: IO Exception\nError: IO Exception\n");
  }
}

TEST(ErrorEndingTest, ARunThatSucceedsNeverWaits) {
  for (const Input input : {Input::kOpenPipe, Input::kTerminal, Input::kClosed}) {
    SCOPED_TRACE(static_cast<int>(input));
    const TinyStudy study;
    study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml", "validation.xml"}));
    Command command = HovarIn(study, {"batch.xml"});
    command.input = input;
    Process process(command);
    const ProcessResult result = process.Wait();
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.output.find(kPrompt), std::string::npos);
  }
}

TEST(ErrorEndingTest, ProgressShowsWhileARunGoesOn) {
  // A chain that would take minutes: its first lines are there at once.
  const TinyStudy study;
  study.Write("d.xml", LongAnalysisText());
  Process process(HovarIn(study, {"d.xml"}));
  EXPECT_TRUE(process.WaitForOutput("\nBurnin: 1 Intercept: "));
  EXPECT_EQ(study.Read("out/analysis.log"), std::string(kTinyReadingLog) + kTinyElimination);
  process.Signal(SIGTERM);
  EXPECT_EQ(process.Wait().signal, SIGTERM);
}

}  // namespace
}  // namespace Testing
