// A record, a report, or the file for the lines of a run took the place of a result or an input,
// with exit status 0: names were compared before the folders of the results were there, and derived
// names not at all.

#include <gtest/gtest.h>

#include "blackbox/launcher_reports.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

constexpr char kRecordMark[] = "hovar run record";

/// Expects a refusal after which no result is there.
void ExpectRefused(const TinyStudy& study, const ProcessResult& result) {
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_NE(result.error, "");
  EXPECT_FALSE(study.Has("out/fitted.csv")) << result.error;
}

/// The study's analysis with its results in a folder, which may be there before the run.
void PrepareFolder(const TinyStudy& study, const std::string& folder, bool isThere) {
  study.Write("d.xml", WithValues(AnalysisText(), {{"Folder", folder}}));
  if (isThere) {
    fs::create_directories(study.Path() / "out/mcmc");
  }
}

TEST(ReplacedResultTest, ARecordWithTheNameOfAResultToCome) {
  for (const char* folder : {"out", "./out", "out/", "out\\", ".\\out", "out/../out"}) {
    for (const char* record :
         {"out/fitted.csv", "./out/fitted.csv", "out//fitted.csv", "out\\fitted.csv",
          "out/../out/fitted.csv", "out/mcmc/Chain.csv", "out/mcmc/../fitted.csv",
          "out/analysis.log", "%/out/fitted.csv", "%/out/mcmc/Summary.csv"}) {
      for (const bool isThere : {false, true}) {
        const TinyStudy study;
        PrepareFolder(study, folder, isThere);
        std::string name = record;
        if (name.front() == '%') {
          name.replace(0, 1, study.Path().string());
        }
        SCOPED_TRACE(std::string(folder) + ", " + name + (isThere ? ", there" : ""));
        ExpectRefused(study, RunLauncher(study, {"--json", name, "d.xml"}));
      }
    }
  }
}

TEST(ReplacedResultTest, ARecordWithTheNameOfAResultOfABatch) {
  for (const char* record : {"out/fitted.csv", "./out/predicted.csv", "out/analysis.log"}) {
    SCOPED_TRACE(record);
    const TinyStudy study;
    study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml"}));
    fs::create_directory(study.Path() / "out");
    ExpectRefused(study, RunLauncher(study, {"--json", record, "batch.xml"}));
  }
}

TEST(ReplacedResultTest, ARecordThatNamesTheResultByALinkedFolder) {
  for (const bool isThere : {true, false}) {
    SCOPED_TRACE(isThere);
    const TinyStudy study;
    if (isThere) {
      fs::create_directory(study.Path() / "out");
    }
    fs::create_directory_symlink("out", study.Path() / "link");
    ExpectRefused(study, RunLauncher(study, {"--json", "link/fitted.csv", "analysis.xml"}));
  }
}

// The folder above a link is that above what the link leads to.
TEST(ReplacedResultTest, ARecordThatNamesTheResultFromALinkedFolder) {
  const TinyStudy study;
  fs::create_directories(study.Path() / "out/mcmc");
  fs::create_directory_symlink("out/mcmc", study.Path() / "link");
  ExpectRefused(study, RunLauncher(study, {"--json", "link/../fitted.csv", "analysis.xml"}));
}

TEST(ReplacedResultTest, ARecordThatNamesTheLinesOfItsRun) {
  const TinyStudy study;
  const std::string lines = "out/analysis.log.output.txt";
  const ProcessResult result = RunLauncher(study, {"--progress", "--json", lines, "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1);
  if (study.Has(lines)) {
    ExpectLacks(study.Read(lines), kRecordMark);
  }
}

/// Runs an analysis of data of this name and expects them unchanged.
void ExpectDataStay(const std::string& name, const std::vector<std::string>& arguments) {
  SCOPED_TRACE(name);
  const TinyStudy study;
  const ScratchFolder place;
  study.Write("d.xml", Replaced(AnalysisText(), ">data.csv<", ">" + name + "<"));
  study.Write(name, kTinyData);
  const ProcessResult result = RunLauncher(study, arguments, CopyTreeWithPageTo(place.Path()));
  EXPECT_EQ(study.Read(name), kTinyData) << result.error;
  EXPECT_TRUE(result.exitStatus == 1 || study.Has("out/fitted.csv") ||
              study.Has("out/chain-1/fitted.csv"))
      << result.output << result.error;
}

TEST(ReplacedInputTest, DataWithTheNamesOfFilesThatTheToolsWrite) {
  ExpectDataStay("r.json.part", {"--json", "r.json", "d.xml"});
  ExpectDataStay("r.json.output.part", {"--json", "r.json", "d.xml"});
  ExpectDataStay("out/analysis.log.output.txt", {"--progress", "d.xml"});
  ExpectDataStay("out/analysis.log.output.part", {"--json", "/dev/null", "d.xml"});
  ExpectDataStay("out/chain-1/chain-1.xml", {"--chains", "1", "d.xml"});
  ExpectDataStay("out/chain-1/chain-1.xml.part", {"--chains", "1", "d.xml"});
  ExpectDataStay("out/chain-1/analysis.log.output.txt", {"--chains", "1", "d.xml"});
  ExpectDataStay("out/chain-1/fitted.csv", {"--chains", "1", "d.xml"});
  ExpectDataStay("out/report.html", {"--chains", "1", "d.xml"});
  ExpectDataStay("out/report.html.part", {"--chains", "1", "d.xml"});
}

// The program writes the coefficients over the definition that it was started with.
TEST(ReplacedInputTest, AChainWhoseResultHasTheNameOfItsDefinition) {
  const TinyStudy study;
  const ScratchFolder place;
  study.Write("d.xml", Replaced(AnalysisText(), ">fitted.csv<", ">chain-1.xml<"));
  const ProcessResult result =
      RunLauncher(study, {"--chains", "1", "d.xml"}, CopyTreeWithPageTo(place.Path()));
  EXPECT_EQ(result.exitStatus, 1);
  ExpectHolds(result.error, "chain-1.xml");
}

TEST(ReplacedInputTest, AnOptionIsNoNameOfAFile) {
  const TinyStudy study;
  const std::set<std::string> before = FilesBelow(study);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--json", "--keep", "analysis.xml"},
        {"--keep", "--json", "--progress", "analysis.xml"},
        {"--json", "-x", "analysis.xml"},
        {"--report", "out", "--output", "-x"}}) {
    const ProcessResult result = RunLauncher(study, arguments);
    EXPECT_EQ(result.exitStatus, 1);
    ExpectHolds(result.error, "./-");
    EXPECT_EQ(FilesBelow(study), before);
  }
  EXPECT_EQ(RunLauncher(study, {"--json", "./-x", "analysis.xml"}).exitStatus, 0);
  ExpectHolds(study.Read("-x"), kRecordMark);
}

TEST(ReplacedInputTest, AValueBehindAnEqualsSign) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  EXPECT_EQ(RunLauncher(study, {"--json=r.json", "--keep", "analysis.xml"}).exitStatus, 0);
  ExpectHolds(study.Read("r.json"), kRecordMark);
  EXPECT_EQ(RunLauncher(study, {"--json=a=b", "analysis.xml"}).exitStatus, 0);
  ExpectHolds(study.Read("a=b"), kRecordMark);
  EXPECT_EQ(RunLauncher(study, {"--report", "out", "--output=all.html"}, launcher).exitStatus, 0);
  EXPECT_TRUE(study.Has("all.html"));
  EXPECT_EQ(RunLauncher(study, {"--chains=2", "--only=2", "analysis.xml"}, launcher).exitStatus, 0);
  EXPECT_TRUE(study.Has("out/chain-2/fitted.csv"));
  EXPECT_EQ(RunLauncher(study, {"--json=", "analysis.xml"}).exitStatus, 1);
  EXPECT_EQ(RunLauncher(study, {"--keep=yes", "analysis.xml"}).exitStatus, 1);
}

TEST_F(ReportTest, ATableIsNotReplacedByThePage) {
  for (const char* file : {"out/coefficients.csv", "./out/coefficients.csv", "out/sub/a.csv",
                           "out/../out/coefficients.csv", "link/coefficients.csv"}) {
    SCOPED_TRACE(file);
    work_.Write("out/coefficients.csv", "table");
    work_.Write("out/sub/a.csv", "table");
    if (!work_.Has("link")) {
      fs::create_directory_symlink("out", work_.Path() / "link");
    }
    const ProcessResult result = Report({"out", "--output", file});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.error, "");
    EXPECT_EQ(work_.Read(file), "table");
  }
}

TEST_F(ReportTest, AnEarlierPageIsNoPartOfTheNextOne) {
  work_.Write("out/a.csv", "f");
  EXPECT_EQ(Report({"out", "--output", "out/page.txt"}).exitStatus, 0);
  const std::string first = work_.Read("out/page.txt");
  EXPECT_EQ(Report({"out", "--output", "out/page.txt"}).exitStatus, 0);
  EXPECT_EQ(work_.Read("out/page.txt"), first);
  EXPECT_EQ(Report({"out", "--output", "out/../out/page.txt"}).exitStatus, 0);
  EXPECT_EQ(work_.Read("out/page.txt"), first);
}

}  // namespace
}  // namespace Testing
