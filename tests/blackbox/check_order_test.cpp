// The order of what `hovar --check` prints: errors first, then warnings by their weight, earlier results
// in one line.

#include <gtest/gtest.h>

#include "check_runs.h"

namespace Testing {
namespace {

TEST(CheckOrderTest, EarlierResultsAreOneLine) {
  const TinyStudy study;
  study.Write("d.xml", BatchText({"analysis.xml", "prediction.xml", "validation.xml"}));
  for (const char* name :
       {"analysis.log", "fitted.csv", "mcmc/Chain.csv", "mcmc/Summary.csv", "prediction.log",
        "predicted.csv", "hospital.csv", "validation.log", "cstatistics.csv"}) {
    study.Write("out/" + std::string(name), "");
  }
  const std::string output = CheckDefinition(study).output;
  EXPECT_NE(
      output.find("analysis.xml:10:10: warning: 9 files of an earlier run would be overwritten in "
                  "\"out\": \"analysis.log\", \"" +
                  Shown("mcmc\\Summary.csv") + "\", \"" + Shown("mcmc\\Chain.csv") +
                  "\", \"fitted.csv\", \"prediction.log\", \"predicted.csv\", \"hospital.csv\", "
                  "\"validation.log\", \"cstatistics.csv\". Use --keep to move them aside.\n"),
      std::string::npos)
      << output;
}

TEST(CheckOrderTest, FilesOfSeveralFoldersAreNamedWithThem) {
  const TinyStudy study;
  study.Write("two.xml", Replaced(PredictionText(), "<Folder>out<", "<Folder>two<"));
  study.Write("d.xml", BatchText({"prediction.xml", "two.xml"}));
  study.Write("out/prediction.log", "");
  study.Write("two/prediction.log", "");
  EXPECT_EQ(CheckDefinition(study).output,
            Shown("prediction.xml:11:10: warning: 2 files of an earlier run would be overwritten: "
                  "\"out\\prediction.log\", \"two\\prediction.log\". Use --keep to move them "
                  "aside.\n0 errors, 1 warning\n"));
}

TEST(CheckOrderTest, AtMostTwelveEarlierResultsAreNamed) {
  const TinyStudy study;
  std::vector<std::string> definitions;
  for (int i = 1; i <= 13; ++i) {
    const std::string number = std::to_string(i);
    definitions.push_back(number + ".xml");
    study.Write(definitions.back(), WithValues(PredictionText(), {{"Folder", number}}));
    study.Write(number + "/prediction.log", "");
  }
  study.Write("d.xml", BatchText(definitions));
  const std::string output = CheckDefinition(study).output;
  EXPECT_NE(output.find(": 13 files of an earlier run would be overwritten: "), std::string::npos)
      << output;
  EXPECT_NE(output.find(Shown("\"12\\prediction.log\" and 1 more. ")), std::string::npos) << output;
}

TEST(CheckOrderTest, ErrorsThenWarningsByWeight) {
  const TinyStudy study;
  std::string text = Replaced(QuietAnalysis(), "<Steps>4<", "<Steps>1<");
  text = Replaced(text, "<Thinning>1<", "<Thinning>-1<");
  text = Replaced(text, ">fitted.csv<", ">Analysis.LOG<");
  study.Write("d.xml", text);
  study.Write("out/mcmc/Chain.csv", "");
  study.Write("data.csv", Replaced(kTinyData, "c,A,0,0", "c,A,0,NA"));
  std::string rest = CheckDefinition(study).output;
  for (const char* start : {"d.xml:35:11: error: The chain", "data.csv:4:7: error: Field 4",
                            "d.xml:35:11: warning: The thinning", "d.xml:9:16: warning: The chain ",
                            "d.xml:8:25: warning: The coefficient file "}) {
    EXPECT_TRUE(rest.starts_with(start)) << start << "\n" << rest;
    rest = rest.substr(rest.find('\n') + 1);
  }
  EXPECT_EQ(rest, "2 errors, 3 warnings\n");
}

TEST(CheckOrderTest, EarlierResultsComeAtTheirPlaceInABatch) {
  const TinyStudy study;
  study.Write("d.xml", BatchText({"prediction.xml", "v.xml"}));
  study.Write("v.xml", Replaced(ValidationText(), "validation.log", "prediction.log"));
  study.Write("out/predicted.csv", "");
  const std::string output = CheckDefinition(study).output;
  EXPECT_TRUE(output.starts_with("prediction.xml:9:24: warning: The file of individual")) << output;
  EXPECT_NE(output.find("\nv.xml:11:10: warning: The log file "), std::string::npos) << output;
}

}  // namespace
}  // namespace Testing
