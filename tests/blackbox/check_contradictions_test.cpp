// `hovar --check` warns of records in which a condition is present on admission and not found.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "check_runs.h"
#include "launcher_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// Records of one hospital: so many with Y = 0 and P = 1, with Y = 0 and P = 0, and with Y = 0 and an
/// indicator that is missing although the other one is 1; then three with Y = 1.
std::string WithContradictions(int contradictions, int others, int unknown) {
  std::string text = "Key,Hospital,Y,PA,PB\n";
  const auto add = [&text](int count, const std::string& cells) {
    for (int i = 0; i < count; ++i) {
      text += "k,A," + cells + "\n";
    }
  };
  add(contradictions, "0,0,1");
  add(others, "0,0,0");
  add(unknown, "0,1,");
  add(1, "1,1,1");
  add(2, "1,0,0");
  return text;
}

std::string CheckContradictions(const std::string& data) {
  const TinyStudy study;
  study.Write("data.csv", data);
  study.Write("d.xml", WithValues(QuietAnalysis(), {{"NumberOfPoaIndicators", "2"}}));
  return CheckDefinition(study, {"--data", "d.xml"}).output;
}

TEST(CheckContradictionsTest, OneInAHundredIsWarnedOf) {
  const std::string output = CheckContradictions(WithContradictions(1, 99, 40));
  EXPECT_TRUE(output.starts_with(
      "data.csv:1:16: warning: 1 record has Y = 0 and P = 1; P would be taken as 0 there. See "
      "whether 1 means \"present on admission\" in the indicators.\n"))
      << output;
  ExpectHolds(output,
              "\n  Y = 0 and P = 1, P taken as 0: 1 (1.00 % of the records with Y = 0 and known "
              "P)\n  P missing although an indicator is 1: 40\n");
}

TEST(CheckContradictionsTest, FewerAreDescribedAlone) {
  const std::string output = CheckContradictions(WithContradictions(1, 100, 0));
  EXPECT_TRUE(output.starts_with("\"data.csv\": 104 records")) << output;
  ExpectHolds(output, "  Y = 0 and P = 1, P taken as 0: 1 (0.99 % of the records with ");
}

TEST(CheckContradictionsTest, NoneAreNotMentioned) {
  EXPECT_EQ(CheckContradictions(WithContradictions(0, 9, 5)).find("Y = 0 and P = 1"),
            std::string::npos);
}

TEST(CheckContradictionsTest, EveryCheckOfTheDataWarns) {
  // A file in quotes goes the other way through the reader.
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA\na,\"A\",0,1\nb,\"A\",0,1\nc,A,0,0\nd,B,1,0\ne,B,1,1\n");
  for (const std::string& definition : {QuietAnalysis(), PredictionText()}) {
    study.Write("d.xml", definition);
    ExpectHolds(CheckDefinition(study).output,
                "data.csv:1:16: warning: 2 records have Y = 0 and P = 1; P would be taken as 0 ");
  }
}

TEST(CheckContradictionsTest, ThePlantedOnesOfTheExamplesAreNotWarnedOf) {
  const ScratchFolder folder;
  for (const char* name : {"data.csv", "analysis.xml"}) {
    fs::copy_file(fs::path(HOVAR_EXAMPLES) / "quickstart" / name, folder.Path() / name);
  }
  const std::string output = CheckDefinition(folder, {"--data", "analysis.xml"}).output;
  EXPECT_EQ(output.find("P would be taken as 0"), std::string::npos) << output;
  ExpectHolds(output, "  Y = 0 and P = 1, P taken as 0: 4 (0.10 % ");
}

}  // namespace
}  // namespace Testing
