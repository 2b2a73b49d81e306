// `hovar --check` where the system has devices, names of any bytes, and folders that are gone while
// somebody is in them.

#include <gtest/gtest.h>

#include "check_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST(CheckAgreementTest, Devices) {
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

TEST(CheckWarningTest, WhiteSpaceThatWindowsHasInNoName) {
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

/// A command in a folder below the study's that `make` makes and enters.
Command InFolder(const TinyStudy& study, const Command& command, const std::string& make) {
  Command shell;
  shell.program = "/bin/sh";
  shell.folder = study.Path();
  shell.arguments = {"sh", "-c", make + " && exec \"$@\"", "sh"};
  shell.arguments.insert(shell.arguments.end(), command.arguments.begin(), command.arguments.end());
  return shell;
}

TEST(CheckAgreementTest, ACurrentFolderWithoutAName) {
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
