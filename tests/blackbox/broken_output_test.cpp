// Output that cannot be written: never exit status 0.

#include <gtest/gtest.h>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

TEST(BrokenOutputTest, AFullDiskUnderAnOutputFileIsAnError) {
  struct Row {
    const char* definition;
    const char* file;
    std::string progress;
  };
  const std::string analysis = std::string(kTinyReading) + kTinyElimination + kTinyFits;
  const std::string individual = std::string(kTinyReading) + "Calculating individual predictions\n";
  // A log line goes to standard output first.
  const std::string firstLine = "Reading data file...\nNumber of records: 6\n";
  const std::vector<Row> rows = {
      {"analysis.xml", "analysis.log", firstLine},
      {"analysis.xml", "mcmc/Chain.csv", analysis},
      {"analysis.xml", "fitted.csv", analysis},
      {"prediction.xml", "prediction.log", firstLine},
      {"prediction.xml", "predicted.csv", individual},
      {"prediction.xml", "hospital.csv",
       individual + "Calculating hospital-aggregated predictions\n"},
      {"validation.xml", "validation.log", firstLine},
      {"validation.xml", "cstatistics.csv",
       std::string(kTinyReading) + "Y|Z\nY|X\nP|X\nP|YPZX\n0/1\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.file);
    const TinyStudy study;
    study.Write("out/mcmc/empty", "");
    std::filesystem::create_symlink("/dev/full", study.Path() / "out" / row.file);
    ExpectError(RunHovar(study, {row.definition}), "IO Exception", row.progress);
  }
}

TEST(BrokenOutputTest, AFullDiskUnderTheSummaryIsAnError) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(AnalysisText(), "<Steps>0<", "<Steps>2<"));
  study.Write("out/mcmc/empty", "");
  std::filesystem::create_symlink("/dev/full", study.Path() / "out/mcmc/Summary.csv");
  const ProcessResult result = RunHovar(study, {"d.xml"});
  EXPECT_EQ(result.error, "Error: IO Exception\n");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_FALSE(study.Has("out/fitted.csv"));
}

TEST(BrokenOutputTest, StandardOutputThatFailsIsAnError) {
  for (const Output output : {Output::kFull, Output::kClosed}) {
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
  for (const Output error : {Output::kFull, Output::kClosed}) {
    SCOPED_TRACE(static_cast<int>(error));
    const ScratchFolder folder;
    Command command = HovarIn(folder, {"none.xml"});
    command.error = error;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_TRUE(result.output.starts_with(kBanner)) << result.output;
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
