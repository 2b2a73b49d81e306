// The sentences of `hovar --check`: what is wrong, with the text that is there, and what to do.

#include <gtest/gtest.h>

#include <algorithm>

#include "check_runs.h"

namespace Testing {
namespace {

/// A definition and data, and all lines that the check prints of them but for the count.
struct Exact {
  std::string definition;
  std::string data;
  std::string lines;
};

void ExpectLines(const std::vector<Exact>& rows) {
  for (const Exact& row : rows) {
    const TinyStudy study;
    study.Write("d.xml", row.definition);
    study.Write("data.csv", row.data);
    const ProcessResult check = CheckDefinition(study);
    const auto count = std::count(row.lines.begin(), row.lines.end(), '\n');
    EXPECT_EQ(check.output, row.lines + std::to_string(count) +
                                (count == 1 ? " error" : " errors") + ", 0 warnings\n");
    EXPECT_EQ(check.exitStatus, 1);
  }
}

TEST(CheckSentencesTest, FaultsOfDefinitionsAreToldWithWhatToDo) {
  const std::string good = kTinyData;
  ExpectLines({
      {Replaced(QuietAnalysis(), "<LogFile>analysis.log</LogFile>\n", ""), good,
       "d.xml:10:1: error: <LogFile> is due here, but \"</Output>\" stands here. Every "
       "element "
       "is required, in a fixed order and nothing between.\n"},
      {Replaced(QuietAnalysis(), "<Steps>4<", "<Steps>12abc<"), good,
       "d.xml:37:8: error: The value \"12abc\" of <Steps> is no whole number. Write digits "
       "alone.\n"},
      {Replaced(QuietAnalysis(), "<Thinning>1<", "<Thinning>0<"), good,
       "d.xml:35:11: error: Every 0th step cannot be kept. Write 1 or more.\n"},
      {Replaced(QuietAnalysis(), "<Folder>out<", "<Folder>new/deep<"), good,
       "d.xml:7:9: error: The folder \"new/deep\" cannot be made: \"new\" is no folder. Make "
       "it "
       "first; only the last folder of a path is made.\n"},
      {Replaced(QuietAnalysis(), "Indicators>1<", "Indicators>2<"), good,
       "d.xml:4:24: error: The lines of \"data.csv\" have 4 fields; behind key, hospital, Y "
       "and "
       "2 POA indicators that leaves -1 for Z and X, which come in pairs. Correct the number "
       "of indicators.\n"},
      {Replaced(QuietAnalysis(), "<Steps>4<", "<Steps>\t x<"), good,
       "d.xml:37:10: error: The value \"x\" of <Steps> is no whole number. Write digits "
       "alone.\n"},
      {Replaced(QuietAnalysis(), "<Steps>4<", "<Steps>" + std::string(5000, '1') + "x<"), good,
       "d.xml:37:8: error: The value \"" + std::string(60, '1') +
           "...\" of <Steps> is no whole number. Write digits alone.\n"},
      {Replaced(QuietAnalysis(), "<Analysis>",
                "<Analysis a=\"" + std::string(5000, 'x') + "\" a=\"\">"),
       good, "d.xml:1:1: error: An attribute is given twice. Remove one of the two.\n"},
      {Replaced(QuietAnalysis(), "<Analysis>", "<Analysis /x>"), good,
       "d.xml:1:1: error: The element \"<Analysis>\" is empty. Write a start tag, its content "
       "and an end tag.\n"},
      {Replaced(QuietAnalysis(), "<Data>", "<DataFile/>"), good,
       "d.xml:3:1: error: <Data> is due here, but \"<DataFile/>\" stands here. Every element "
       "is required, in a fixed order and nothing between.\n"},
      {"<?xml version=\"1.0\"?x>\n" + QuietAnalysis(), good,
       "d.xml:1:21: error: The declaration does not end with ?>. Close it.\n"},
      {"<?xml version=\"1.0\">\n" + QuietAnalysis(), good,
       "d.xml:1:20: error: The declaration does not end with ?>. Close it.\n"},
      // Both are told: the check does not stop at the first one.
      {Replaced(Replaced(QuietAnalysis(), "<Thinning>1<", "<Thinning>0<"), "data.csv", "none.csv"),
       good,
       "d.xml:3:7: error: The data file \"none.csv\" does not exist. Correct the name, or the "
       "folder that you start in: paths are taken from there.\n"
       "d.xml:35:11: error: Every 0th step cannot be kept. Write 1 or more.\n"},
  });
}

TEST(CheckSentencesTest, FaultsOfDataAreToldWithWhatToDo) {
  const std::string good = kTinyData;
  ExpectLines({
      {QuietAnalysis(), Replaced(good, "c,A,0,0", "c,A,NA,0"),
       "data.csv:4:5: error: Field 3 (Y, \"Y\") holds \"NA\". Write 0 or 1; it may not be "
       "missing.\n"},
      {QuietAnalysis(), Replaced(good, "c,A,0,0", "c,A,0,2"),
       "data.csv:4:7: error: Field 4 (POA indicator, \"POA\") holds \"2\". Write 0 or 1, or "
       "leave it empty where it is missing.\n"},
      {QuietAnalysis(), Replaced(good, "c,A,0,0", "c,B,0,0") + "g,A,0,0\n",
       "data.csv:8:3: error: The hospital \"A\" comes again after another one. Sort the "
       "records "
       "by hospital.\n"},
      {QuietAnalysis(), Replaced(Replaced(good, "Hospital,Y", "Hospital,"), "c,A,0", "c,A,2"),
       "data.csv:4:5: error: Field 3 (Y) holds \"2\". Write 0 or 1; it may not be missing.\n"},
  });
}

TEST(CheckSentencesTest, AtMostFiveMissingVariablesAreNamed) {
  struct Missing {
    int first;
    int last;
    std::string sentence;
  };
  for (const Missing& missing :
       {Missing{
            1, 5,
            "The data have 1 variable of the 6 in the coefficient file; missing: \"X1\", \"X2\", "
            "\"X3\", \"X4\", \"X5\". Use"},
        Missing{
            2, 8,
            "The data have 1 variable of the 8 in the coefficient file; missing: \"X2\", \"X3\", "
            "\"X4\", \"X5\", \"X6\" and 2 more. Use"},
        // The same X with another Z is missing too, and twice the same is not.
        Missing{
            0, 0,
            "The data have 1 variable of the 2 in the coefficient file; missing: \"X\". Use"}}) {
    const TinyStudy study;
    study.Write("d.xml", PredictionText());
    study.Write("data.csv", kHeader + "a,A,1,0,1,1\n");
    const std::string values = ",0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
    std::string coefficients = std::string(kCoefficientHeader) + kModelRow + "X,Z" + values;
    for (int i = missing.first; i <= missing.last; ++i) {
      const std::string number = std::to_string(i);
      coefficients += (i == 0 ? "X,Z0" : "X" + number + ",Z" + number) + values;
    }
    study.Write("coefficients.csv", coefficients);
    const std::string output = CheckDefinition(study).output;
    EXPECT_NE(output.find(missing.sentence), std::string::npos) << output;
  }
}

TEST(CheckSentencesTest, AFindingStaysOnItsLine) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(AnalysisText(), "data.csv", "a\nb\x01"));
  const std::string output = CheckDefinition(study).output;
  EXPECT_TRUE(output.starts_with("d.xml:3:7: error: The data file \"a\\nb\\x01\" does not exist."))
      << output;
}

}  // namespace
}  // namespace Testing
