// Standard streams that cannot be written: never exit status 0.

#include <gtest/gtest.h>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

TEST(BrokenOutputTest, StandardOutputThatFailsIsAnError) {
  for (const Output output : {Output::kFull, Output::kClosed, Output::kBroken}) {
    for (const char* definition : {"prediction.xml", "none.xml"}) {
      SCOPED_TRACE(std::string(definition) + " " + std::to_string(static_cast<int>(output)));
      const TinyStudy study;
      Command command = HovarIn(study, {definition});
      command.output = output;
      const ProcessResult result = RunProcess(command);
      EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
      EXPECT_TRUE(result.error.starts_with("Error: ")) << result.error;
    }
  }
}

TEST(BrokenOutputTest, StandardErrorThatFailsStillGivesExitStatusOne) {
  for (const Output error : {Output::kFull, Output::kClosed, Output::kBroken}) {
    SCOPED_TRACE(static_cast<int>(error));
    const ScratchFolder folder;
    Command command = HovarIn(folder, {"none.xml"});
    command.error = error;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_TRUE(result.output.starts_with(kBanner)) << result.output;
  }
}

// Nobody who could press a key has seen the prompt.
TEST(BrokenOutputTest, WithoutAPromptNoKeyIsAwaited) {
  for (const Output output : {Output::kFull, Output::kClosed, Output::kBroken}) {
    SCOPED_TRACE(static_cast<int>(output));
    const TinyStudy study;
    Command command = HovarIn(study, {"none.xml"});
    command.input = Input::kOpenPipe;
    command.output = output;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_EQ(result.error, "Error: IO Exception\nError: IO Exception\n");
  }
}

TEST(BrokenOutputTest, AllStandardStreamsClosedStillGivesExitStatusOne) {
  const ScratchFolder folder;
  Command command = HovarIn(folder, {"none.xml"});
  command.input = Input::kClosed;
  command.output = Output::kClosed;
  command.error = Output::kClosed;
  EXPECT_EQ(RunProcess(command).exitStatus, 1);
}

// A file opened in place of a closed standard stream must not receive what is meant for the stream.
TEST(BrokenOutputTest, FilesDoNotTakeThePlaceOfClosedStreams) {
  const TinyStudy study;
  Command command = HovarIn(study, {"analysis.xml"});
  command.input = Input::kClosed;
  command.error = Output::kClosed;
  ExpectSuccess(RunProcess(command), std::string(kTinyReading) + kTinyElimination + kTinyFits);
  EXPECT_EQ(study.Read("out/analysis.log"), std::string(kTinyReadingLog) + kTinyElimination);
  EXPECT_EQ(study.Read("out/fitted.csv"), std::string(kCoefficientHeader) + kTinyCoefficients);
}

TEST(BrokenOutputTest, AClosedStandardErrorDoesNotSpoilTheLogOfARunThatFails) {
  const TinyStudy study;
  study.Write("coefficients.csv", "");
  Command command = HovarIn(study, {"prediction.xml"});
  command.error = Output::kClosed;
  EXPECT_EQ(RunProcess(command).exitStatus, 1);
  EXPECT_EQ(study.Read("out/prediction.log"), kTinyReadingLog);
}

}  // namespace
}  // namespace Testing
