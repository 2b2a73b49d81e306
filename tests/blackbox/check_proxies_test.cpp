// What `hovar --check --data` says of a Z that imputes one value or takes a variable out of the
// model. Counts are of the records written here, places of their header.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "check_runs.h"

namespace Testing {
namespace {

/// Checks an Analysis of a data file, without and with --data, and returns the warnings of the
/// latter. The former has none.
std::string Warnings(const std::string& data, const std::string& definition = QuietAnalysis()) {
  const TinyStudy study;
  study.Write("data.csv", data);
  study.Write("d.xml", definition);
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
  const ProcessResult check = CheckDefinition(study, {"--data", "d.xml"});
  EXPECT_EQ(check.exitStatus, 0);
  const std::string warnings = check.output.substr(0, check.output.find("\"data.csv\": "));
  const auto count = std::count(warnings.begin(), warnings.end(), '\n');
  EXPECT_TRUE(check.output.ends_with("\n0 errors, " + std::to_string(count) +
                                     (count == 1 ? " warning\n" : " warnings\n")))
      << check.output;
  EXPECT_EQ(CheckDefinition(study, {"--strict", "--data", "d.xml"}).exitStatus, count == 0 ? 0 : 1);
  return warnings;
}

/// Records of hospital A with Y in turn 1 and 0 and P = 0, from lines of cells.
std::string OneVariable(const std::vector<std::string>& cells) {
  std::string text = "Key,Hospital,Y,POA,ZFrail,XFrail\n";
  for (std::size_t i = 0; i < cells.size(); ++i) {
    text += "k,A," + std::string(i % 2 == 0 ? "1" : "0") + ",0," + cells[i] + "\n";
  }
  return text;
}

TEST(CheckProxiesTest, ACopyOfXWithZeroForWhatIsMissing) {
  EXPECT_EQ(Warnings(OneVariable({"1,1", "1,1", "0,0", "0,0", "0,0", "0,", "0,"})),
            "data.csv:1:20: warning: \"ZFrail\" repeats \"XFrail\" and is 0 where that is missing, "
            "so its 2 missing values would be imputed as 0. Use a Z from another source, which "
            "also tells something where X is missing.\n");
  // One record in which the two differ, and nothing missing at all.
  EXPECT_EQ(Warnings(OneVariable({"1,1", "1,1", "0,0", "0,0", "0,1", "0,", "0,"})), "");
  EXPECT_EQ(Warnings(OneVariable({"1,1", "1,1", "0,0", "0,0"})), "");
}

TEST(CheckProxiesTest, AClassInWhichAllKnownValuesAreEqual) {
  EXPECT_EQ(Warnings(OneVariable({"1,1", "1,0", "0,0", "0,0", "0,0", "0,"})),
            "data.csv:1:20: warning: Where \"ZFrail\" is 0, \"XFrail\" is 0 as far as it is known "
            "(3 records), so its 1 missing value there would be imputed as 0. Check that this Z "
            "proves it, or choose another one.\n");
  EXPECT_EQ(Warnings(OneVariable({"1,1", "0,0", "0,1", "1,", "1,", "0,"})),
            "data.csv:1:20: warning: Where \"ZFrail\" is 1, \"XFrail\" is 1 as far as it is known "
            "(1 record), so its 2 missing values there would be imputed as 1. Check that this Z "
            "proves it, or choose another one.\n");
  EXPECT_EQ(
      Warnings(OneVariable({"1,1", "1,1", "0,0", "0,0", "0,0", "0,", "0,", "1,"})),
      "data.csv:1:20: warning: Where \"ZFrail\" is 0, \"XFrail\" is 0 as far as it is known (3 "
      "records), so its 2 missing values there would be imputed as 0, and where \"ZFrail\" is 1, "
      "\"XFrail\" is 1 as far as it is known (2 records), so its 1 missing value there would be "
      "imputed as 1. Check that this Z proves it, or choose another one.\n");
  EXPECT_EQ(Warnings(OneVariable({"1,1", "1,0", "0,0", "0,0", "0,0"})), "") << "nothing missing";
  EXPECT_EQ(Warnings(OneVariable({"1,1", "1,0", "0,0", "0,1", "0,0", "0,", "1,"})), "") << "mixed";
}

TEST(CheckProxiesTest, AConstantZ) {
  const auto data = [](const std::string& name, const std::string& z) {
    return "Key,Hospital,Y,POA," + name + ",ZB,XA,XB\nk,A,1,0," + z + ",1,1,0\nk,A,0,0," + z +
           ",0,0,1\nk,A,1,0," + z + ",1,1,1\nk,A,0,0," + z + ",0,,0\n";
  };
  EXPECT_EQ(Warnings(data("ZA", "0")),
            "data.csv:1:20: warning: \"ZA\" is 0 in all 4 records, so it is removed together with "
            "\"XA\", which is 1 in 2 of 3 known values. Give it a Z that varies.\n");
  EXPECT_EQ(Warnings(data("\"Z, A\"", "1")),
            "data.csv:1:20: warning: \"Z, A\" is 1 in all 4 records, so it is removed together "
            "with \"XA\", which is 1 in 2 of 3 known values. Give it a Z that varies.\n");
}

TEST(CheckProxiesTest, TheZOfAnotherVariable) {
  const std::string data =
      "Key,Hospital,Y,POA,ZA,ZB,XA,XB\nk,A,1,0,1,1,1,1\nk,A,0,0,1,1,1,0\nk,A,1,0,0,0,0,1\nk,A,0,0,"
      "0,0,0,0\nk,A,1,0,0,0,1,\n";
  const std::string output = Warnings(data);
  // Either of two equal columns may go.
  const std::string first =
      "data.csv:1:20: warning: \"ZA\" equals \"ZB\" in all 5 records, so it is removed together "
      "with \"XA\", which is 1 in 3 of 5 known values. Give each variable a Z of its own.\n";
  const std::string second =
      "data.csv:1:23: warning: \"ZB\" equals \"ZA\" in all 5 records, so it is removed together "
      "with \"XB\", which is 1 in 2 of 4 known values. Give each variable a Z of its own.\n";
  EXPECT_TRUE(output == first || output == second) << output;
  EXPECT_EQ(Warnings(data + "k,A,1,0,0,1,1,1\nk,A,0,0,0,1,0,0\nk,A,0,0,0,0,0,1\n"), "");
}

TEST(CheckProxiesTest, AZThatFollowsFromOthers) {
  // 2 ZD = ZA + ZB + ZC, in which ZD has the largest weight.
  const std::string data =
      "Key,Hospital,Y,POA,ZA,ZB,ZC,ZD,XA,XB,XC,XD\na,A,1,0,0,0,0,0,0,0,0,0\nb,A,0,0,1,1,0,1,1,0,0,"
      "0\nc,A,1,0,1,0,1,1,0,1,0,1\nd,A,0,0,0,1,1,1,0,0,1,0\ne,A,1,0,0,0,0,0,0,0,0,1\n";
  EXPECT_EQ(Warnings(data),
            "data.csv:1:29: warning: \"ZD\" follows from \"ZA\", \"ZB\", \"ZC\" in all 5 records, "
            "so it is removed together with \"XD\", which is 1 in 2 of 5 known values. Give it a Z "
            "that the others do not tell.\n");
  EXPECT_EQ(Warnings(data + "f,A,1,0,0,0,0,1,0,0,0,0\n"), "");
}

TEST(CheckProxiesTest, AZThatIsDependentWithinTheTolerance) {
  // The singular values of the counts of intercept and Z, (8 1; 1 1), are (9 +- sqrt(53)) / 2: the
  // smaller one is 0.1057 times the larger.
  std::string data = "Key,Hospital,Y,POA,Z,X\n";
  for (int i = 0; i < 8; ++i) {
    data += std::string("k,A,") + (i % 2 == 0 ? "1" : "0") + ",0," + (i == 3 ? "1," : "0,") +
            (i % 3 == 0 ? "1\n" : "0\n");
  }
  const std::string tolerance = "<LinearDependence>\n<Tolerance>";
  EXPECT_EQ(Warnings(data, Replaced(QuietAnalysis(), tolerance + "1e-9", tolerance + "0.11")),
            "data.csv:1:20: warning: \"Z\" counts as dependent on other Z columns within the "
            "tolerance, so it is removed together with \"X\", which is 1 in 3 of 8 known values. "
            "Choose a smaller tolerance, or give it another Z.\n");
  EXPECT_EQ(Warnings(data, Replaced(QuietAnalysis(), tolerance + "1e-9", tolerance + "0.10")), "");
}

TEST(CheckProxiesTest, EqualZOfWhichTheToleranceLeavesNone) {
  // Z is 1 in one of 8 records, as above, and there twice: both columns are removed.
  std::string data = "Key,Hospital,Y,POA,ZA,ZB,XA,XB\n";
  for (int i = 0; i < 8; ++i) {
    data += std::string("k,A,") + (i % 2 == 0 ? "1" : "0") + ",0," + (i == 3 ? "1,1," : "0,0,") +
            (i % 3 == 0 ? "1," : "0,") + (i % 4 == 3 ? "1\n" : "0\n");
  }
  const std::string tolerance = "<LinearDependence>\n<Tolerance>";
  const std::string output =
      Warnings(data, Replaced(QuietAnalysis(), tolerance + "1e-9", tolerance + "0.3"));
  EXPECT_NE(output.find("data.csv:1:23: warning: \"ZB\" equals \"ZA\" in all 8 records, so it is "
                        "removed together with \"XB\", which is 1 in 2 of 8 known values. "),
            std::string::npos)
      << output;
  EXPECT_NE(output.find("data.csv:1:20: warning: \"ZA\" counts as dependent on other Z columns"),
            std::string::npos)
      << output;
}

/// Variables whose Z is 0 everywhere, after one that stays.
std::string ConstantColumns(int count) {
  std::string names[2];
  std::string ones;
  std::string zeros;
  for (int j = 1; j <= count; ++j) {
    names[0] += ",Z" + std::to_string(j);
    names[1] += ",X" + std::to_string(j);
    zeros += ",0";
    ones += ",1";
  }
  return "Key,Hospital,Y,POA,Z" + names[0] + ",X" + names[1] + "\na,A,1,0,1" + zeros + ",0" + ones +
         "\nb,A,0,0,1" + zeros + ",1" + zeros + "\nc,A,0,0,0" + zeros + ",1" + ones +
         "\nd,A,1,0,0" + zeros + ",0" + zeros + "\n";
}

TEST(CheckProxiesTest, OfManyEqualFaultsFiveAreToldInFull) {
  const std::string six = Warnings(ConstantColumns(6));
  EXPECT_EQ(std::count(six.begin(), six.end(), '\n'), 6);
  EXPECT_NE(six.find("data.csv:1:37: warning: \"Z6\" is 0 in all 4 records"), std::string::npos)
      << six;
  const std::string twelve = Warnings(ConstantColumns(12));
  EXPECT_EQ(std::count(twelve.begin(), twelve.end(), '\n'), 6);
  EXPECT_TRUE(
      twelve.ends_with("data.csv:1:37: warning: The same is wrong with 7 more Z columns: \"Z6\", "
                       "\"Z7\", \"Z8\", \"Z9\", \"Z10\" and 2 more. Do the same there.\n"))
      << twelve;
}

TEST(CheckProxiesTest, OnlyAnAnalysisEstimatesTablesAndRemovesColumns) {
  const TinyStudy study;
  study.Write("data.csv",
              Replaced(OneVariable({"1,1", "1,1", "0,0", "0,0", "0,"}), "ZFrail,XFrail", "Z,X"));
  study.Write("coefficients.csv", std::string(kCoefficientHeader) + kModelRow +
                                      "X,Z,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n");
  study.Write("d.xml", PredictionText());
  EXPECT_TRUE(
      CheckDefinition(study, {"--data", "d.xml"}).output.ends_with("0 errors, 0 warnings\n"));
  // Data that a Prediction has described before are judged all the same, once.
  study.Write("prediction.xml", PredictionText());
  study.Write("a.xml", QuietAnalysis());
  study.Write("d.xml", BatchText({"prediction.xml", "a.xml", "a.xml"}));
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  const std::string warning = "data.csv:1:20: warning: \"Z\" repeats \"X\"";
  EXPECT_NE(output.find(warning), std::string::npos) << output;
  EXPECT_EQ(output.find(warning), output.rfind(warning)) << output;
  EXPECT_EQ(output.find("\"data.csv\": 5 records"), output.rfind("\"data.csv\": 5 records"));
}

TEST(CheckProxiesTest, AnAnalysisThatEndsInAnErrorIsNotJudged) {
  // X is known with Z = 1 alone, and a second Z is constant; no complete record has P = 0.
  const TinyStudy study;
  study.Write("d.xml", QuietAnalysis());
  study.Write("data.csv", "Key,Hospital,Y,POA,ZA,ZB,XA,XB\na,A,1,1,0,1,1,1\nb,A,1,1,0,0,0,0\n");
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  EXPECT_TRUE(output.starts_with("data.csv:1:1: error: No record without missing values has P = 0"))
      << output;
  EXPECT_TRUE(output.ends_with("\n1 error, 0 warnings\n")) << output;
}

TEST(CheckProxiesTest, TheExamplesHaveGoodProxies) {
  for (const char* const name : {"quickstart", "gee"}) {
    const std::filesystem::path example = std::filesystem::path(HOVAR_EXAMPLES) / name;
    const ScratchFolder folder;
    for (const char* const file : {"data.csv", "analysis.xml"}) {
      std::filesystem::copy_file(example / file, folder.Path() / file);
    }
    const ProcessResult check = CheckDefinition(folder, {"--strict", "--data", "analysis.xml"});
    EXPECT_TRUE(check.output.ends_with("0 errors, 0 warnings\n")) << check.output;
    EXPECT_EQ(check.exitStatus, 0);
  }
}

}  // namespace
}  // namespace Testing
