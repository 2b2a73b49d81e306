// The files that the command writes beside those of the program never take the place of a file that
// the runs read or write, nor of one that somebody named by mistake.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>

#include "launcher_runs.h"
#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// All files below a folder with what they hold, and links with what they lead to.
std::map<std::string, std::string> ContentsOf(const ScratchFolder& folder) {
  std::map<std::string, std::string> contents;
  for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
    const std::string name = fs::relative(entry.path(), folder.Path()).generic_string();
    contents[name] = entry.is_symlink()        ? "-> " + fs::read_symlink(entry.path()).string()
                     : entry.is_regular_file() ? ReadFile(entry.path())
                                               : "";
  }
  return contents;
}

/// Expects that a command line is refused with this line and nothing is made or changed.
void ExpectRefused(const ScratchFolder& folder, const std::vector<std::string>& arguments,
                   const std::string& line, const std::string& launcher = HOVAR_LAUNCHER) {
  const auto before = ContentsOf(folder);
  const ProcessResult result = RunLauncher(folder, arguments, launcher);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, line + "\n");
  EXPECT_EQ(ContentsOf(folder), before);
}

std::string RecordOfRun(const std::string& file) {
  return "hovar: the record cannot be written to " + file + ", a file of the run itself";
}

TEST(OwnFilesTest, ARecordIsNoResultThatIsNotThereYetByAnySpelling) {
  const TinyStudy study;
  fs::create_directory_symlink("out", study.Path() / "early");
  for (const std::string& file :
       {std::string("out/fitted.csv"), std::string("./out//fitted.csv"),
        std::string("out\\fitted.csv"), std::string("out/mcmc/../fitted.csv"),
        study.File("out/fitted.csv"), std::string("early/fitted.csv"), std::string("out"),
        std::string("out/mcmc"), std::string("out/mcmc/Chain.csv")}) {
    ExpectRefused(study, {"--json", file, "analysis.xml"}, RecordOfRun(file));
  }
}

TEST(OwnFilesTest, ARecordIsNoResultThatALinkLeadsTo) {
  const TinyStudy study;
  EXPECT_EQ(RunLauncher(study, {"analysis.xml"}).exitStatus, 0);
  fs::create_directory_symlink("out", study.Path() / "link");
  fs::create_directory_symlink("out/mcmc", study.Path() / "deep");
  fs::create_hard_link(study.Path() / "out/fitted.csv", study.Path() / "hard.json");
  fs::create_symlink("out/fitted.csv", study.Path() / "soft.json");
  for (const char* file : {"link/fitted.csv", "deep/../fitted.csv", "hard.json", "soft.json"}) {
    ExpectRefused(study, {"--json", file, "analysis.xml"}, RecordOfRun(file));
  }
}

TEST(OwnFilesTest, ARecordIsNoDefinitionOfANestedBatch) {
  const TinyStudy study;
  study.Write("inner.xml", BatchText({"prediction.xml", "later.xml"}));
  study.Write("outer.xml", BatchText({"inner.xml"}));
  for (const char* file : {"inner.xml", "later.xml", "prediction.xml"}) {
    ExpectRefused(study, {"--json", file, "outer.xml"}, RecordOfRun(file));
  }
}

TEST(OwnFilesTest, ARecordIsNotTheFileOfTheLines) {
  const TinyStudy study;
  for (const char* file : {"out/analysis.log.output.txt", "analysis.xml.output.txt"}) {
    ExpectRefused(study, {"--json", file, "--progress", "analysis.xml"}, RecordOfRun(file));
  }
}

TEST(OwnFilesTest, TheLinesAreNotWrittenOverAnInput) {
  const TinyStudy study;
  study.Write("out/analysis.log.output.txt", kTinyData);
  study.Write("d.xml", Replaced(AnalysisText(), "data.csv", "out/analysis.log.output.txt"));
  ExpectRefused(
      study, {"--progress", "d.xml"},
      "hovar: the program's lines cannot be written to out/analysis.log.output.txt, a file "
      "of the run itself");
}

TEST(OwnFilesTest, NamesThatTheRecordOnceNeededAreInputsLikeOthers) {
  for (const char* data : {"r.json.part", "r.json.output.part", "out/analysis.log.output.part"}) {
    const TinyStudy study;
    study.Write(data, kTinyData);
    study.Write("d.xml", Replaced(AnalysisText(), "data.csv", data));
    EXPECT_EQ(RunLauncher(study, {"--json", "r.json", "d.xml"}).exitStatus, 0);
    EXPECT_EQ(study.Read(data), kTinyData);
    ExpectHolds(study.Read("r.json"), "\"exitStatus\": 0");
  }
}

TEST(OwnFilesTest, ARecordDoesNotReplaceAFileThatIsNone) {
  const TinyStudy study;
  study.Write("notes.txt", "of a year");
  ExpectRefused(study, {"--json", "notes.txt", "prediction.xml"},
                "hovar: notes.txt is no record of a run, so it is not replaced; give the record "
                "another name, or one that ends with .json");
  study.Write("empty", "");
  for (int i = 0; i < 2; ++i) {  // then it is a record
    EXPECT_EQ(RunLauncher(study, {"--json", "empty", "prediction.xml"}).exitStatus, 0);
    ExpectHolds(study.Read("empty"), "hovar run record");
  }
  EXPECT_EQ(RunLauncher(study, {"--keep", "--json", "notes.txt", "prediction.xml"}).exitStatus, 0);
  EXPECT_EQ(study.Read("notes.txt.1"), "of a year");
}

TEST(OwnFilesTest, ARecordInTheFolderThatTheRunMakesIsWritten) {
  const TinyStudy study;
  EXPECT_EQ(RunLauncher(study, {"--json", "out/run.json", "analysis.xml"}).exitStatus, 0);
  ExpectHolds(study.Read("out/run.json"), "\"exitStatus\": 0");
}

TEST(OwnFilesTest, AFileIsNotKeptUnderTheNameOfAnOutput) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(AnalysisText(), "analysis.log", "fitted.csv.1"));
  study.Write("out/fitted.csv", "earlier");
  const ProcessResult result = RunLauncher(study, {"--keep", "d.xml"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.error, "hovar: kept out/fitted.csv as out/fitted.csv.2\n");
  EXPECT_EQ(study.Read("out/fitted.csv.2"), "earlier");
}

TEST(OwnFilesTest, AFileIsNotKeptUnderTheNameOfALinkThatLeadsNowhere) {
  const TinyStudy study;
  study.Write("out/fitted.csv", "earlier");
  fs::create_symlink("nowhere", study.Path() / "out/fitted.csv.1");
  EXPECT_EQ(RunLauncher(study, {"--keep", "analysis.xml"}).exitStatus, 0);
  EXPECT_TRUE(fs::is_symlink(study.Path() / "out/fitted.csv.1"));
  EXPECT_EQ(study.Read("out/fitted.csv.2"), "earlier");
}

TEST(OwnFilesTest, AnOptionIsNoName) {
  const TinyStudy study;
  ExpectRefused(study, {"--json", "--keep", "analysis.xml"},
                "hovar: --json needs a FILE, and --keep looks like an option; write ./--keep if it "
                "is a name\nhovar: see hovar --help");
  EXPECT_EQ(RunLauncher(study, {"--json=--keep", "analysis.xml"}).exitStatus, 0);
  ExpectHolds(study.Read("--keep"), "hovar run record");
}

TEST(OwnFilesTest, ChainsAreNotWrittenOverTheirInputs) {
  for (const char* file :
       {"out/chain-1/analysis.log.output.txt", "out/chain-2/chain-2.xml", "out/report.html"}) {
    const TinyStudy study;
    study.Write(file, kTinyData);
    study.Write("d.xml", Replaced(ChainedAnalysisText(2, 20), "data.csv", file));
    ExpectRefused(study, {"--chains", "2", "d.xml"},
                  "hovar: --chains would write over " + Shown(std::string(file)) +
                      ", a file of the run; nothing was written");
  }
}

TEST(OwnFilesTest, ChainsAreNotWrittenOverTheirResults) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(ChainedAnalysisText(2, 20), "fitted.csv", "chain-1.xml"));
  ExpectRefused(study, {"--chains", "2", "d.xml"},
                "hovar: --chains would write over out/chain-1/chain-1.xml, a file of the run; "
                "nothing was written");
}

class OwnReportTest : public testing::Test {
 protected:
  OwnReportTest() : launcher_(CopyTreeWithPageTo(place_.Path())) {
    std::string page = place_.Read("share/hovar/report.html");
    place_.Write(
        "share/hovar/report.html",
        Replaced(page, "<!DOCTYPE html>\n", "<!DOCTYPE html>\n<title>Hovar report</title>\n"));
    work_.Write("out/coefficients.csv", "name,value\n");
  }
  ScratchFolder place_;
  ScratchFolder work_;
  std::string launcher_;
};

TEST_F(OwnReportTest, IsNotWrittenOverATable) {
  for (const char* file :
       {"out/coefficients.csv", "out\\coefficients.csv", "./out/coefficients.csv"}) {
    ExpectRefused(
        work_, {"--report", "out", "--output", file},
        "hovar: " + Shown(std::string(file)) +
            " is no report of hovar, so it is not replaced; give the report another name, "
            "or one that ends with .html",
        launcher_);
  }
}

TEST_F(OwnReportTest, ReplacesAnEarlierReportWhateverItsName) {
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(RunLauncher(work_, {"--report", "out", "--output", "page.txt"}, launcher_).exitStatus,
              0);
    ExpectHolds(work_.Read("page.txt"), "coefficients.csv");
  }
}

TEST_F(OwnReportTest, HoldsNoEarlierReport) {
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(
        RunLauncher(work_, {"--report", "out", "--output", "out/page.txt"}, launcher_).exitStatus,
        0);
  }
  ExpectLacks(work_.Read("out/page.txt"), "data-path=\"page.txt\"");
  ExpectHolds(work_.Read("out/page.txt"), "data-path=\"coefficients.csv\"");
}

TEST(OwnFilesTest, NothingIsKeptUnderTheNameOfTheRecord) {
  const TinyStudy study;
  ASSERT_EQ(RunLauncher(study, {"analysis.xml"}).exitStatus, 0);
  const std::string log = study.Read("out/analysis.log");
  const ProcessResult result =
      RunLauncher(study, {"--keep", "--json", "out/analysis.log.1", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_EQ(study.Read("out/analysis.log.2"), log);
  ExpectHolds(study.Read("out/analysis.log.1"), "hovar run record");
}

TEST(OwnFilesTest, ChainsThatWriteIntoOneFolderAreRefused) {
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(5, 60));
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  ASSERT_EQ(RunLauncher(study, {"--chains", "2", "analysis.xml"}, launcher).exitStatus, 0);
  const std::string second = study.Read("out/chain-2/mcmc/Chain.csv");
  fs::create_directory_symlink("chain-2", study.Path() / "out/chain-3");
  const ProcessResult result =
      RunLauncher(study, {"--chains", "3", "analysis.xml", "--only", "3"}, launcher);
  EXPECT_EQ(result.exitStatus, 1);
  ExpectHolds(result.error, "hovar: --chains would write over ");
  EXPECT_EQ(study.Read("out/chain-2/mcmc/Chain.csv"), second);
}

}  // namespace
}  // namespace Testing
