// `hovar --progress`: one bar around a whole run, and its lines in a file.

#include <gtest/gtest.h>

#include "launcher_runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST(ProgressTest, TheBarReachesTheEndAndTheLinesAreInTheFile) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml", "validation.xml"}));
  const std::pair<const char*, const char*> rows[] = {{"analysis.xml", "analysis.log"},
                                                      {"prediction.xml", "prediction.log"},
                                                      {"validation.xml", "validation.log"},
                                                      {"batch.xml", "analysis.log"}};
  for (const auto& [definition, log] : rows) {
    SCOPED_TRACE(definition);
    fs::remove_all(study.Path() / "out");
    const ProcessResult plain = RunLauncher(study, {definition});
    std::map<std::string, std::string> files;
    for (const std::string& file : FilesBelow(study)) {
      files[file] = study.Read(file);
    }
    fs::remove_all(study.Path() / "out");
    const ProcessResult result = RunLauncher(study, {"--progress", definition});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "");
    const std::string capture = "out/" + std::string(log) + ".output.txt";
    EXPECT_TRUE(
        result.error.ends_with("[####################] 100 %\n"
                               "hovar: done, 0 warnings; output in " +
                               Shown("out\\") + std::string(log) + ".output.txt\n"))
        << result.error;
    EXPECT_EQ(WithoutSeconds(study.Read(capture)), WithoutSeconds(plain.output));
    for (const auto& [file, content] : files) {
      EXPECT_EQ(study.Read(file), content) << file;
    }
    EXPECT_EQ(FilesBelow(study).size(), files.size() + 1);
  }
}

TEST(ProgressTest, WithoutAFileForTheLinesNothingIsRun) {
  const TinyStudy study;
  study.Write("out/analysis.log.output.txt/inside", "");
  const ProcessResult result = RunLauncher(study, {"--progress", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.error,
            "hovar: cannot write " + Shown("out\\analysis.log.output.txt") + ": it is a folder\n");
  EXPECT_FALSE(study.Has("out/fitted.csv"));
}

TEST(ProgressTest, AnErrorIsShown) {
  const TinyStudy study;
  fs::remove(study.Path() / "data.csv");
  const ProcessResult result = RunLauncher(study, {"--progress", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "Error: " + CannotOpen("data.csv") +
                              "\nhovar: not done, 0 warnings; output in " +
                              Shown("out\\analysis.log.output.txt") + "\n");
  EXPECT_EQ(study.Read("out/analysis.log.output.txt"),
            kBanner + ("Error: " + CannotOpen("data.csv")) + "\n" + kPrompt);
}

TEST(ProgressTest, WithoutALogTheLinesStandBesideTheDefinition) {
  const TinyStudy study;
  study.Write("broken.xml", "<Analysis>\n");
  EXPECT_EQ(RunLauncher(study, {"--progress", "broken.xml"}).exitStatus, 1);
  ExpectHolds(study.Read("broken.xml.output.txt"), "Error: ");
  study.Write("deep.xml", Replaced(AnalysisText(), ">out<", ">none/out<"));
  const ProcessResult result = RunLauncher(study, {"--progress", "deep.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  ExpectHolds(result.error, "Error: " + CannotOpen("none/out\\analysis.log") + "\n");
  EXPECT_TRUE(study.Has("deep.xml.output.txt"));
}

TEST(ProgressTest, ALongRunTellsItsTimeLeft) {
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(20'000, 20'000));
  const ProcessResult result = RunLauncher(study, {"--progress", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 0);
  ExpectHolds(result.error, " left  Analysis, ");
  ExpectHolds(result.error, " of 20000\n");
  ExpectLacks(result.error, "\x1b");  // no terminal, no control
}

}  // namespace
}  // namespace Testing
