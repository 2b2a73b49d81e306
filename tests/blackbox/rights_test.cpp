// Files and folders that the user may not read or write: check and program must agree, and the
// check must say what is missing. Root may do everything, so as root both run without root's
// rights.

#include <gtest/gtest.h>

#include "check_runs.h"
#include "launcher_runs.h"
#include "limited_rights.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// What the check of d.xml prints when the program can not open a file.
std::string ErrorsWithoutRights(const ScratchFolder& folder, const std::string& file) {
  const ProcessResult check = RunProcess(WithoutRights(CheckIn(folder, {"d.xml"})));
  EXPECT_EQ(check.exitStatus, 1) << check.output;
  const ScratchFolder links;
  const ProcessResult run = RunProcess(WithoutRights(HovarByLink(links, folder, {"d.xml"})));
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.error, "Error: " + CannotOpen(file) + "\n");
  return check.output;
}

TEST(RightsTest, InputsThatMayNotBeRead) {
  struct Input {
    const char* file;
    std::string definition;
    std::string errors;
  };
  for (const Input& input :
       {Input{"d.xml", PredictionText(), "d.xml:1:1: error: The definition file \"d.xml\""},
        Input{"data.csv", PredictionText(), "d.xml:3:7: error: The data file \"data.csv\""},
        Input{"coefficients.csv", PredictionText(),
              "d.xml:5:25: error: The coefficient file \"coefficients.csv\""},
        Input{"individual.csv", ValidationText(),
              "d.xml:6:24: error: The file of individual predictions \"individual.csv\""},
        Input{"prediction.xml", BatchText({"prediction.xml"}),
              "d.xml:3:13: error: The definition file \"prediction.xml\""}}) {
    SCOPED_TRACE(input.file);
    const TinyStudy study;
    study.Write("d.xml", input.definition);
    const LimitedRights limited(study.Path() / input.file, kNone);
    EXPECT_EQ(ErrorsWithoutRights(study, input.file),
              input.errors +
                  " cannot be read. Ask for the right to read it.\n"
                  "1 error, 0 warnings\n");
  }
}

TEST(RightsTest, AFolderInWhichNoOtherMayBeMade) {
  const TinyStudy study;
  study.Write("d.xml", PredictionText());
  const LimitedRights limited(study.Path(), kReadAndSearch);
  EXPECT_EQ(ErrorsWithoutRights(study, "out\\prediction.log"),
            "d.xml:8:9: error: The folder \"out\" cannot be made: nothing may be written in \".\". "
            "Choose another folder.\n"
            "1 error, 0 warnings\n");
}

TEST(RightsTest, AFolderInWhichNoFileMayBeMade) {
  const TinyStudy study;
  study.Write("d.xml", ValidationText());
  fs::create_directory(study.Path() / "out");
  const LimitedRights limited(study.Path() / "out", kReadAndSearch);
  EXPECT_EQ(ErrorsWithoutRights(study, "out\\validation.log"),
            "d.xml:10:14: error: The file of C-statistics \"out/cstatistics.csv\" cannot be made: "
            "nothing may be written in \"out\". Choose another folder.\n"
            "d.xml:11:10: error: The log file \"out/validation.log\" cannot be made: nothing may "
            "be written in \"out\". Choose another folder.\n"
            "2 errors, 0 warnings\n");
}

TEST(RightsTest, AFileThatMayNotBeWritten) {
  const TinyStudy study;
  study.Write("d.xml", ValidationText());
  study.Write("out/cstatistics.csv", "");
  const LimitedRights limited(study.Path() / "out/cstatistics.csv", kReadOnly);
  EXPECT_EQ(ErrorsWithoutRights(study, "out\\cstatistics.csv"),
            "d.xml:10:14: error: The file of C-statistics \"out/cstatistics.csv\" cannot be "
            "written. Ask for the right to write it.\n"
            "1 error, 0 warnings\n");
}

TEST(RightsTest, AFileThatMayBeWrittenInAFolderThatMayNot) {
  const TinyStudy study;
  study.Write("d.xml", ValidationText());
  study.Write("out/cstatistics.csv", "");
  study.Write("out/validation.log", "");
  const LimitedRights limited(study.Path() / "out", kReadAndSearch);
  const ProcessResult check = RunProcess(WithoutRights(CheckIn(study, {"d.xml"})));
  EXPECT_TRUE(check.output.ends_with("\n0 errors, 1 warning\n")) << check.output;
  const ScratchFolder links;
  const ProcessResult run = RunProcess(WithoutRights(HovarByLink(links, study, {"d.xml"})));
  EXPECT_EQ(run.exitStatus, 0) << run.error;
}

TEST(RightsTest, ResultsThatCannotBeMovedAsideStopTheRun) {
  const TinyStudy study;
  study.Write("out/predicted.csv", "earlier");
  study.Write("out/prediction.log", "earlier");
  const LimitedRights limited(study.Path() / "out", kReadAndSearch);
  const ProcessResult run =
      RunProcess(WithoutRights(LauncherIn(study, {"--keep", "prediction.xml"})));
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.error, "hovar: cannot move out/prediction.log aside\n");
  EXPECT_EQ(study.Read("out/prediction.log"), "earlier");
  EXPECT_EQ(study.Read("out/predicted.csv"), "earlier");
}

TEST(RightsTest, AReportNamesTheFileThatMayNotBeRead) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  study.Write("out/a.csv", "f");
  study.Write("out/b.csv", "f");
  const LimitedRights limited(study.Path() / "out/b.csv", kNone);
  const ProcessResult run =
      RunProcess(WithoutRights(LauncherIn(study, {"--report", "out"}, launcher)));
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.error, "hovar: cannot read out/b.csv\n");
  EXPECT_FALSE(study.Has("out/report.html"));
}

TEST(RightsTest, AReportGoesOnWithoutAFolderThatMayNotBeRead) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  study.Write("out/a.csv", "f");
  study.Write("out/lost+found/b.csv", "f");
  const LimitedRights limited(study.Path() / "out/lost+found", kNone);
  const ProcessResult run =
      RunProcess(WithoutRights(LauncherIn(study, {"--report", "out"}, launcher)));
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.error, "hovar: left out out/lost+found: you may not read it\n");
  ExpectHolds(study.Read("out/report.html"), "data-path=\"a.csv\"");
}

}  // namespace
}  // namespace Testing
