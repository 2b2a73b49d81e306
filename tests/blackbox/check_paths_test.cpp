// `hovar --check` on the files and folders that a definition names: inputs that cannot be read, outputs
// that cannot be made, and names that meet.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "check_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST(CheckPathsTest, InputFilesOfADefinition) {
  ExpectRows({
      Changed(AnalysisText(), "data.csv", "missing.csv", "d.xml:3:7"),
      Changed(AnalysisText(), ">data.csv", "> data.csv", "d.xml:3:7"),
      Changed(AnalysisText(), ">data.csv<", "><", "d.xml:3:7"),
      Changed(AnalysisText(), "data.csv", ".", "d.xml:3:7"),
      Changed(AnalysisText(), "data.csv", "/dev/null", "d.xml:3:7"),
      Changed(AnalysisText(), "data.csv", "./data.csv"),
      Changed(AnalysisText(), "data.csv", ".\\data.csv"),
      Changed(PredictionText(), "coefficients.csv", "missing.csv", "d.xml:5:25"),
      Changed(PredictionText(), "coefficients.csv", ".", "d.xml:5:25"),
      Changed(ValidationText(), "individual.csv", "missing.csv", "d.xml:6:24"),
      Changed(BatchText({"prediction.xml"}), "prediction.xml", "missing.xml", "d.xml:3:13"),
      Changed(BatchText({"prediction.xml"}), "prediction.xml", ".", "d.xml:3:13"),
      Changed(BatchText({"prediction.xml"}), "prediction.xml", " prediction.xml", "d.xml:3:13"),
      Changed(BatchText({"prediction.xml"}), "prediction.xml", "data.csv", "data.csv:1:1"),
  });
  const ScratchFolder empty;
  EXPECT_TRUE(ExpectAgreement(empty).starts_with("d.xml:1:1: error: ")) << "no definition";
  fs::create_directory(empty.Path() / "d.xml");
  EXPECT_TRUE(ExpectAgreement(empty).starts_with("d.xml:1:1: error: ")) << "a folder";
}

TEST(CheckPathsTest, OutputFoldersAndFiles) {
  ExpectRows({
      Changed(AnalysisText(), "<Folder>out<", "<Folder>a/b<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>a\\b<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>data.csv<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>out/<"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>out/.<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>.<"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>a..b<"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>a/b/../c<", "d.xml:7:9"),
      Changed(AnalysisText(), "<Folder>out<", "<Folder>" + std::string(300, 'x') + "<",
              "d.xml:7:9"),
      {"there", Replaced(AnalysisText(), "<Folder>out<", "<Folder>a\\b<"), {{"a/x", ""}}, ""},
      Changed(AnalysisText(), ">analysis.log<", ">logs/a.log<", "d.xml:10:10"),
      Changed(AnalysisText(), ">analysis.log<", "><", "d.xml:10:10"),
      Changed(AnalysisText(), ">analysis.log<", ">..<", "d.xml:10:10"),
      Changed(AnalysisText(), ">analysis.log<", ">../a.log<"),
      Changed(AnalysisText(), ">analysis.log<", ">" + std::string(256, 'x') + "<", "d.xml:10:10"),
      Changed(AnalysisText(), ">mcmc<", ">a/b<", "d.xml:9:16"),
      Changed(AnalysisText(), ">mcmc<", "><"),
      Changed(AnalysisText(), ">mcmc<", ">..<"),
      Changed(AnalysisText(), ">mcmc<", ">analysis.log<", "d.xml:9:16"),
      Changed(AnalysisText(), ">fitted.csv<", ">mcmc<", "d.xml:8:25"),
      Changed(AnalysisText(), ">fitted.csv<", ">mcmc/Chain.csv<"),
      Changed(AnalysisText(), ">fitted.csv<", ">analysis.log<"),
      {"a file as the chain's folder", AnalysisText(), {{"out/mcmc", ""}}, "d.xml:9:16"},
      {"a folder as the chain", AnalysisText(), {{"out/mcmc/Chain.csv/x", ""}}, "d.xml:9:16"},
      {"a folder as the log", AnalysisText(), {{"out/analysis.log/x", ""}}, "d.xml:10:10"},
      {"a folder as an output", PredictionText(), {{"out/hospital.csv/x", ""}}, "d.xml:10:22"},
      {"a folder as an output", ValidationText(), {{"out/cstatistics.csv/x", ""}}, "d.xml:10:14"},
      {"a file as the folder", ValidationText(), {{"out", ""}}, "d.xml:9:9"},
      {"earlier files", AnalysisText(), {{"out/mcmc/Chain.csv", "x"}, {"out/fitted.csv", "x"}}, ""},
  });
}

TEST(CheckPathsTest, AFolderThroughTheOneAbove) {
  const TinyStudy study;
  const std::string here = study.Path().filename().string();
  study.Write("d.xml", Replaced(QuietAnalysis(), "<Folder>out<", "<Folder>../" + here + "/out<"));
  EXPECT_EQ(ExpectAgreement(study), "0 errors, 0 warnings\n");
  EXPECT_TRUE(study.Has("out/fitted.csv"));
}

TEST(CheckPathsTest, OutputsThatAreInputs) {
  const auto in = [](const std::string& text, const std::string& from, const std::string& to) {
    return Replaced(Replaced(text, "<Folder>out<", "<Folder>.<"), from, to);
  };
  ExpectRows({
      {"log and data", in(AnalysisText(), ">analysis.log<", ">data.csv<"), {}, "d.xml:10:10"},
      {"log and no data", in(AnalysisText(), "data.csv", "analysis.log"), {}, "d.xml:3:7"},
      {"log and coefficients",
       in(PredictionText(), ">prediction.log<", ">coefficients.csv<"),
       {},
       "d.xml:11:10"},
      {"log and predictions",
       in(ValidationText(), ">validation.log<", ">individual.csv<"),
       {},
       "d.xml:11:10"},
      {"log and definition", in(AnalysisText(), ">analysis.log<", ">d.xml<"), {}, ""},
      {"coefficients and data", in(AnalysisText(), ">fitted.csv<", ">data.csv<"), {}, ""},
      {"predictions and data", in(PredictionText(), ">predicted.csv<", ">data.csv<"), {}, ""},
      {"statistics and predictions",
       in(ValidationText(), ">cstatistics.csv<", ">individual.csv<"),
       {},
       ""},
  });
}

TEST(CheckPathsTest, TheRootOfTheFileSystem) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(QuietAnalysis(), "<Folder>out<", "<Folder><"));
  const ProcessResult check = CheckDefinition(study);
  EXPECT_TRUE(
      check.output.starts_with("d.xml:7:9: warning: The output folder is empty, which "
                               "means the root of the file system. Write a point"))
      << check.output;
}

TEST(CheckPathsTest, OutputsThatExist) {
  ExpectWarnings({
      {QuietAnalysis(),
       {{"out/analysis.log", ""}},
       "d.xml:10:10",
       Shown("The log file \"out\\analysis.log\" exists and would be overwritten.")},
      {QuietAnalysis(), {{"out/fitted.csv", ""}}, "d.xml:8:25", "exists and would be overwritten"},
      {QuietAnalysis(), {{"out/mcmc/Chain.csv", ""}}, "d.xml:9:16", "The chain "},
      {QuietAnalysis(), {{"out/mcmc/Summary.csv", ""}}, "d.xml:9:16", "The summary of the chain "},
      {PredictionText(), {{"out/predicted.csv", ""}}, "d.xml:9:24", "exists"},
      {PredictionText(), {{"out/hospital.csv", ""}}, "d.xml:10:22", "exists"},
      {ValidationText(), {{"out/cstatistics.csv", ""}}, "d.xml:10:14", "exists"},
  });
}

TEST(CheckPathsTest, NamesThatMeet) {
  const std::string here = Replaced(QuietAnalysis(), "<Folder>out<", "<Folder>.<");
  ExpectWarnings({
      Surprising(">fitted.csv<", ">analysis.log<", "d.xml:8:25",
                 "is also the log file of this run"),
      Surprising(">fitted.csv<", ">./mcmc\\Chain.csv<", "d.xml:8:25",
                 "is also the chain of this run"),
      Surprising(">fitted.csv<", ">Analysis.LOG<", "d.xml:8:25",
                 Shown("differs from \"out\\analysis.log\" in capital letters alone")),
  });
  const bool ignoresCase = fs::exists(TinyStudy().Path() / "DATA.CSV");
  const std::string relation = ignoresCase ? "is the data file of this run"
                                           : "differs from the data file in capital letters alone";
  for (const auto& [name, words] : std::map<std::string, std::string>{
           {"data.csv",
            Shown("d.xml:8:25: warning: The coefficient file \".\\data.csv\" is the data file "
                  "of this run, which would be overwritten.")},
           {"d.xml",
            Shown("d.xml:8:25: warning: The coefficient file \".\\d.xml\" is the definition file "
                  "of this run, which would be overwritten.")},
           {"Data.csv", relation}}) {
    const TinyStudy study;
    study.Write("d.xml", Replaced(here, ">fitted.csv<", ">" + name + "<"));
    const ProcessResult check = CheckDefinition(study);
    EXPECT_EQ(check.exitStatus, 0);
    EXPECT_NE(check.output.find(words), std::string::npos) << check.output;
    // That would be refused.
    EXPECT_EQ(check.output.find("--keep"), std::string::npos) << check.output;
  }
  const TinyStudy study;
  fs::create_hard_link(study.File("data.csv"), study.File("linked.csv"));
  study.Write("d.xml", Replaced(here, ">fitted.csv<", ">linked.csv<"));
  EXPECT_NE(CheckDefinition(study).output.find("is the data file of this run"), std::string::npos);
}

}  // namespace
}  // namespace Testing
