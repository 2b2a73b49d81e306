// `hovar --check` where the system has devices, names of any bytes, and folders that are gone while
// somebody is in them.

#include <gtest/gtest.h>

#include <chrono>

#include "check_runs.h"
#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST(CheckPathsTest, Devices) {
  const std::string null = Replaced(PredictionText(), "<Folder>out<", "<Folder>/dev<");
  ExpectRows({
      Changed(AnalysisText(), "<Folder>out<", "<Folder>/dev/null<", "d.xml:7:9"),
      {"all outputs dropped",
       WithValues(null, {{"IndividualPredictions", "null"},
                         {"HospitalPredictions", "null"},
                         {"LogFile", "null"}}),
       {},
       ""},
  });
}

TEST(CheckPathsTest, WhiteSpaceThatWindowsHasInNoName) {
  const std::string words = "White space round the text";
  ExpectWarnings({
      Surprising(">fitted.csv<", ">\tfitted.csv<", "d.xml:8:25", words),
      Surprising(">fitted.csv<", ">fitted.csv\t<", "d.xml:8:25", words),
      Surprising(">fitted.csv<", ">fitted\n.csv<", "d.xml:8:25", words),
  });
}

TEST(CheckDescriptionTest, ALineFeedInAName) {
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,ZA,ZB,XA,\"X\nB\"\n"
              "a,A,1,0,0,1,1,0\nb,A,1,1,1,0,1,1\nc,A,0,0,1,1,0,0\nd,A,0,0,1,0,0,0\n");
  study.Write("d.xml", QuietAnalysis());
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  EXPECT_NE(output.find("  removed by column elimination:\n"
                        "    \"ZB\", \"X\\nB\": X is 0, or depends on other variables, in the "
                        "complete records with P = 0\n"),
            std::string::npos)
      << output;
}

// Processes that are watched while they run.
TEST(CheckAgreementTest, ASeedWithWhichAnAnalysisNeverEnds) {
  const TinyStudy study;
  // The second number has the first one as its low 32 bits.
  for (const char* word : {"2422800383", "6717767679"}) {
    study.Write("d.xml",
                Replaced(QuietAnalysis(), "<Element>3<", "<Element>" + std::string(word) + "<"));
    const ProcessResult check = CheckDefinition(study);
    EXPECT_EQ(check.exitStatus, 1);
    EXPECT_TRUE(check.output.starts_with(
        "d.xml:31:10: error: The random generator stands still at this word, so the run would "
        "never end: no normal number can be drawn. Write another number.\n"))
        << check.output;
    Process process(HovarIn(study, {"d.xml"}));
    EXPECT_TRUE(process.WaitForOutput("MCMC Analysis"));
    EXPECT_FALSE(process.EndsWithin(std::chrono::seconds(1)));  // six draws, otherwise
  }
  // Without iterations no number is drawn.
  study.Write("d.xml", Replaced(AnalysisText(), "<Element>3<", "<Element>2422800383<"));
  EXPECT_EQ(ExpectAgreement(study).find("random generator"), std::string::npos);
}

// On Windows the nesting of a batch is limited by another stack.
TEST(CheckBatchTest, BatchesThatNameThemselves) {
  const std::string again =
      " again within itself, until memory or open files run out. Remove it from the list.";
  const auto error = [&again](const std::string& place, const std::string& name) {
    return place + ": error: The batch would start \"" + name + "\"" + again;
  };
  const std::string self = BatchText({"d.xml"});
  ExpectRows({
      {"at once", self, {}, error("d.xml:3:13", "d.xml")},
      {"by another spelling", BatchText({".\\d.xml"}), {}, error("d.xml:3:13", ".\\d.xml")},
      {"through another one",
       BatchText({"inner.xml"}),
       {{"inner.xml", self}},
       error("inner.xml:3:13", "d.xml")},
  });
  // After a run, which would be repeated until no more log files can be open.
  const TinyStudy repeated;
  repeated.Write("d.xml", BatchText({"prediction.xml", "d.xml"}));
  EXPECT_EQ(CheckDefinition(repeated).output,
            error("d.xml:4:13", "d.xml") + "\n1 error, 0 warnings\n");
  EXPECT_EQ(CheckDefinition(repeated).exitStatus, 1);
  for (const bool isSymbolic : {false, true}) {
    const TinyStudy study;
    study.Write("d.xml", BatchText({"link.xml"}));
    if (isSymbolic) {
      fs::create_symlink("d.xml", study.Path() / "link.xml");
    } else {
      fs::create_hard_link(study.Path() / "d.xml", study.Path() / "link.xml");
    }
    EXPECT_EQ(ExpectAgreement(study), error("d.xml:3:13", "link.xml") + "\n1 error, 0 warnings\n");
  }
}

/// A command in a folder below the study's that `make` makes and enters.
Command InFolder(const TinyStudy& study, const Command& command, const std::string& make) {
  Command shell;
  shell.program = "/bin/sh";
  shell.folder = study.Path();
  shell.arguments = {"sh", "-c", make + " && exec \"$@\"", "sh"};
  shell.arguments.insert(shell.arguments.end(), command.arguments.begin(), command.arguments.end());
  return shell;
}

TEST(CheckPathsTest, ACurrentFolderWithoutAName) {
  const TinyStudy study;
  const std::string definition = study.Write(
      "d.xml",
      WithValues(ValidationText(), {{"Data", study.File("data.csv")},
                                    {"RegressionCoefficients", study.File("coefficients.csv")},
                                    {"IndividualPredictions", study.File("individual.csv")},
                                    {"Folder", study.File("out")}}));
  const std::string make = "mkdir gone && cd gone && rmdir ../gone";
  const ProcessResult check = RunProcess(InFolder(study, CheckIn(study, {definition}), make));
  EXPECT_EQ(check.output, "0 errors, 0 warnings\n");
  EXPECT_EQ(check.exitStatus, 0);
  const ScratchFolder links;
  const ProcessResult run =
      RunProcess(InFolder(study, HovarByLink(links, study, {definition}), make));
  EXPECT_EQ(run.exitStatus, 0) << run.error;
}

}  // namespace
}  // namespace Testing
