// A disk that is full under an output file, which a device of the system plays.

#include <gtest/gtest.h>

#include "launcher_runs.h"
#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

TEST(FullDiskTest, UnderAnOutputFileIsAnError) {
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

TEST(FullDiskTest, UnderTheSummaryIsAnError) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(AnalysisText(), "<Steps>0<", "<Steps>2<"));
  study.Write("out/mcmc/empty", "");
  std::filesystem::create_symlink("/dev/full", study.Path() / "out/mcmc/Summary.csv");
  const ProcessResult result = RunHovar(study, {"d.xml"});
  EXPECT_EQ(result.error, "Error: IO Exception\n");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_FALSE(study.Has("out/fitted.csv"));
}

TEST(FullDiskTest, UnderARunRecordIsAnError) {
  const TinyStudy study;
  const ProcessResult result = RunLauncher(study, {"--json", "/dev/full", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.error,
            "hovar: the run is complete; its record could not be written: /dev/full: the disk is "
            "full\n");
  EXPECT_TRUE(study.Has("out/fitted.csv"));
  EXPECT_FALSE(HasTemporaryFile(study));
}

TEST(FullDiskTest, UnderAReportIsAnError) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  study.Write("out/a.csv", "f");
  const ProcessResult result =
      RunLauncher(study, {"--report", "out", "--output", "/dev/full"}, launcher);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "hovar: cannot write /dev/full\n");
}

TEST(LogFailureTest, AWriterThatFailsIsTheLastOneToGetItsLine) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"prediction.xml", "validation.xml"}));
  study.Write("out/other", "");
  std::filesystem::create_symlink("/dev/full", study.Path() / "out/validation.log");
  // Standard output and the log of the first run stand before the log of the second one.
  ExpectError(RunHovar(study, {"batch.xml"}), "IO Exception",
              std::string(kTinyReading) +
                  "Calculating individual predictions\n"
                  "Calculating hospital-aggregated predictions\n"
                  "Reading data file...\nNumber of records: 6\n");
  EXPECT_EQ(study.Read("out/prediction.log"),
            std::string(kTinyReadingLog) + "Number of records: 6\n");
  EXPECT_FALSE(study.Has("out/cstatistics.csv"));
}

}  // namespace
}  // namespace Testing
