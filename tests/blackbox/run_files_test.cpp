// Folders and files of a run: what is made when, and what cannot be opened.

#include <gtest/gtest.h>

#include <algorithm>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

struct Kind {
  std::string text;
  std::string log;
};

std::vector<Kind> Kinds() {
  return {{AnalysisText(), "analysis.log"},
          {PredictionText(), "prediction.log"},
          {ValidationText(), "validation.log"}};
}

TEST(OutputFolderTest, OnlyTheLastFolderOfThePathIsCreated) {
  for (const Kind& kind : Kinds()) {
    SCOPED_TRACE(kind.log);
    const TinyStudy study;
    for (const char* folder : {"a/b", "a\\b"}) {
      ExpectError(RunText(study, Replaced(kind.text, "<Folder>out<",
                                          "<Folder>" + std::string(folder) + "<")),
                  CannotOpen(std::string(folder) + "\\" + kind.log));
    }
    EXPECT_FALSE(study.Has("a"));
    std::filesystem::create_directory(study.Path() / "a");
    EXPECT_EQ(RunText(study, Replaced(kind.text, "<Folder>out<", "<Folder>a\\b<")).exitStatus, 0);
    EXPECT_TRUE(study.Has("a/b/" + kind.log));
  }
}

TEST(OutputFolderTest, AFileInItsPlaceShowsWhenTheLogIsOpened) {
  for (const Kind& kind : Kinds()) {
    const TinyStudy study;
    study.Write("out", "a file");
    ExpectError(RunText(study, kind.text), CannotOpen("out\\" + kind.log));
    EXPECT_EQ(study.Read("out"), "a file");
  }
}

TEST(OutputFolderTest, AnExistingFolderServes) {
  const TinyStudy study;
  study.Write("out/other", "stays");
  EXPECT_EQ(RunText(study, PredictionText()).exitStatus, 0);
  EXPECT_EQ(study.Read("out/other"), "stays");
}

TEST(OutputFolderTest, PathsAreJoinedAsTheyAreWritten) {
  // A separator at the end of the folder is doubled.
  const TinyStudy study;
  std::filesystem::create_directories(study.Path() / "out/prediction.log");
  ExpectError(RunText(study, Replaced(PredictionText(), "<Folder>out<", "<Folder>out\\<")),
              CannotOpen("out\\\\prediction.log"));
  const TinyStudy other;
  EXPECT_EQ(RunText(other, Replaced(PredictionText(), "<Folder>out<", "<Folder>out/<")).exitStatus,
            0);
  EXPECT_TRUE(other.Has("out/predicted.csv"));
}

TEST(OutputFolderTest, AnAbsolutePathIsUsedAsItIs) {
  const TinyStudy study;
  const ScratchFolder elsewhere;
  const std::string folder = elsewhere.File("results");
  EXPECT_EQ(RunText(study, Replaced(PredictionText(), "<Folder>out<", "<Folder>" + folder + "<"))
                .exitStatus,
            0);
  EXPECT_TRUE(elsewhere.Has("results/hospital.csv"));
}

TEST(LogFileTest, ALogThatCannotBeOpenedEndsTheRunBeforeAnythingIsRead) {
  for (const Kind& kind : Kinds()) {
    SCOPED_TRACE(kind.log);
    const TinyStudy study;
    std::filesystem::create_directories(study.Path() / "out" / kind.log);
    ExpectError(RunText(study, kind.text), CannotOpen("out\\" + kind.log));
  }
}

TEST(DefinitionErrorTest, NothingIsMadeBeforeTheDefinitionWasRead) {
  for (const Kind& kind : Kinds()) {
    const TinyStudy study;
    ExpectError(RunText(study, Replaced(kind.text, "<Steps>0<", "<Steps>x<")), "IO Exception");
    EXPECT_FALSE(study.Has("out"));
  }
}

TEST(InputFileTest, TheDataFileIsOpenedBeforeItsReadingIsAnnounced) {
  for (const Kind& kind : Kinds()) {
    SCOPED_TRACE(kind.log);
    const TinyStudy study;
    std::filesystem::remove(study.Path() / "data.csv");
    ExpectError(RunText(study, kind.text), CannotOpen("data.csv"));
    EXPECT_EQ(study.Read("out/" + kind.log), "");
  }
}

TEST(InputFileTest, AMissingFileIsNamedBehindTheData) {
  const TinyStudy study;
  std::filesystem::remove(study.Path() / "individual.csv");
  ExpectError(RunText(study, ValidationText()), CannotOpen("individual.csv"), kTinyReading);
  std::filesystem::remove(study.Path() / "coefficients.csv");
  for (const std::string& text : {PredictionText(), ValidationText()}) {
    ExpectError(RunText(study, text), CannotOpen("coefficients.csv"), kTinyReading);
  }
  EXPECT_FALSE(study.Has("out/predicted.csv"));
  EXPECT_FALSE(study.Has("out/cstatistics.csv"));
}

TEST(InputFileTest, AFolderIsNoInputFile) {
  for (const char* input : {"data.csv", "coefficients.csv", "individual.csv"}) {
    SCOPED_TRACE(input);
    const TinyStudy study;
    std::filesystem::remove(study.Path() / input);
    std::filesystem::create_directory(study.Path() / input);
    const ProcessResult result = RunHovar(study, {"validation.xml"});
    EXPECT_TRUE(result.error == "Error: " + CannotOpen(input) + "\n" ||
                result.error == "Error: IO Exception\n")
        << result.error;
    EXPECT_EQ(result.exitStatus, 1);
  }
}

TEST(InputFileTest, BothSlashesSeparateFolders) {
  const TinyStudy study;
  study.Write("in/data.csv", kTinyData);
  for (const char* path : {"in\\data.csv", "in/data.csv"}) {
    EXPECT_EQ(RunText(study, Replaced(PredictionText(), "data.csv", path)).exitStatus, 0);
  }
}

TEST(OutputFileTest, AFileThatCannotBeCreatedIsNamed) {
  struct Row {
    std::string text;
    std::string name;
    std::string progress;
  };
  const std::string analysis = std::string(kTinyReading) + kTinyElimination + kTinyFits;
  const std::string individual = std::string(kTinyReading) + "Calculating individual predictions\n";
  const std::vector<Row> rows = {
      {AnalysisText(), "mcmc\\Summary.csv", analysis},
      {AnalysisText(), "mcmc\\Chain.csv", analysis},
      {AnalysisText(), "fitted.csv", analysis},
      {PredictionText(), "predicted.csv", individual},
      {PredictionText(), "hospital.csv",
       individual + "Calculating hospital-aggregated predictions\n"},
      {ValidationText(), "cstatistics.csv",
       std::string(kTinyReading) + "Y|Z\nY|X\nP|X\nP|YPZX\n0/1\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const TinyStudy study;
    std::string path = row.name;
    std::replace(path.begin(), path.end(), '\\', '/');
    std::filesystem::create_directories(study.Path() / "out" / path);
    ExpectError(RunText(study, row.text), CannotOpen("out\\" + row.name), row.progress);
  }
}

TEST(OutputFileTest, AFileInPlaceOfTheChainFolderShowsWhenTheSummaryIsOpened) {
  const TinyStudy study;
  study.Write("out/mcmc", "a file");
  ExpectError(RunText(study, AnalysisText()), CannotOpen("out\\mcmc\\Summary.csv"),
              std::string(kTinyReading) + kTinyElimination + kTinyFits);
  const TinyStudy other;
  ExpectError(RunText(other, Replaced(AnalysisText(), ">mcmc<", ">a/b<")),
              CannotOpen("out\\a/b\\Summary.csv"),
              std::string(kTinyReading) + kTinyElimination + kTinyFits);
}

}  // namespace
}  // namespace Testing
