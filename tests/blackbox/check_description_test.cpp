// What `hovar --check --data` says of a data file. Figures are counted by hand in the records below.

#include <gtest/gtest.h>

#include <filesystem>

#include "check_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

// Eight records. Missing: P in d and e, XA in b, XC in c; complete are a, f, g and h. ZC is 0
// everywhere; without its variable c is complete too. XB is 1 in b and c alone, of which b is not
// complete and c has P = 1.
constexpr char kDescribedData[] =
    "Key,Hospital,Y,POA,ZA,ZB,ZC,ZD,XA,XB,XC,XD\n"
    "a,H1,1,0,1,0,0,1,1,0,0,1\n"
    "b,H1,0,0,0,1,0,1,,1,0,1\n"
    "c,H1,1,1,1,1,0,0,1,1,,0\n"
    "d,H2,0,,0,0,0,1,0,0,0,1\n"
    "e,H2,1,,1,0,0,1,1,0,0,1\n"
    "f,H3,0,0,0,1,0,0,0,0,0,1\n"
    "g,H3,1,0,1,0,0,0,0,0,0,0\n"
    "h,H3,0,0,0,0,0,0,0,0,0,0\n";

// Y: 4 of 8. P: 1 of the 6 known. Z: 4, 3, 0 and 4 of 8. X: 3 of 7, 2 of 8, 0 of 7, 5 of 8. X where
// Z = 0: 0 of 3, 0 of 5, 0 of 7, 1 of 4; where Z = 1: 3 of 4, 2 of 3, none of none, 4 of 4.
constexpr char kDescription[] =
    "\"data.csv\": 8 records, 3 hospitals, 4 variables, 1 POA indicator\n"
    "  Y = 1: 4 (50.00 %)\n"
    "  P = 1: 1 (16.67 % of the known), missing: 2 (25.00 %)\n"
    "  complete records: 4 (50.00 %), with P = 0: 4\n"
    "  hospitals without a complete record: 1\n"
    "    \"H2\", 2 records\n"
    "  variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing\n"
    "    \"ZA\", \"XA\": 50.00 %; 42.86 %, 0.00 %, 75.00 %; 12.50 %\n"
    "    \"ZB\", \"XB\": 37.50 %; 25.00 %, 0.00 %, 66.67 %; 0.00 %\n"
    "    \"ZC\", \"XC\": 0.00 %; 0.00 %, 0.00 %, -; 12.50 %\n"
    "    \"ZD\", \"XD\": 50.00 %; 62.50 %, 25.00 %, 100.00 %; 0.00 %\n";
constexpr char kDescribedRemoval[] =
    "  removed by column elimination:\n"
    "    \"ZB\", \"XB\": X is 0, or depends on other variables, in the complete records with P = "
    "0\n"
    "    \"ZC\", \"XC\": Z is 0 everywhere\n";
constexpr char kDescribedClasses[] =
    "  empty [X|Z] classes:\n"
    "    \"ZC\", \"XC\": no record with Z = 1 and a known X\n";

TEST(CheckDescriptionTest, FiguresWorkedByHand) {
  const TinyStudy study;
  study.Write("data.csv", kDescribedData);
  study.Write("d.xml", QuietAnalysis());
  ProcessResult check = CheckDefinition(study, {"--data", "d.xml"});
  // Of the four records with ZA = 0 three know XA, which is 0 in all of them.
  EXPECT_EQ(
      check.output,
      "data.csv:1:20: warning: Where \"ZA\" is 0, \"XA\" is 0 as far as it is known (3 "
      "records), so its 1 missing value there would be imputed as 0. Check that this Z proves "
      "it, or choose another one.\n" +
          std::string(kDescription) + kDescribedRemoval + kDescribedClasses +
          "0 errors, 1 warning\n");
  EXPECT_EQ(check.exitStatus, 0);
  // A prediction removes nothing. Data that several runs read are described once.
  study.Write("d.xml", BatchText({"prediction.xml", "prediction.xml"}));
  check = CheckDefinition(study, {"d.xml", "--data"});
  EXPECT_NE(check.output.find("\n" + std::string(kDescription) + kDescribedClasses + "0 errors, "),
            std::string::npos)
      << check.output;
  EXPECT_EQ(check.output.find(kDescription), check.output.rfind(kDescription));
}

TEST(CheckDescriptionTest, DependentColumnsOfTheExample) {
  // XConfirmed depends on the three tests and XNeverSeen is 0: so the example was made.
  const fs::path example = fs::path(HOVAR_EXAMPLES) / "quickstart";
  const ScratchFolder folder;
  for (const char* name :
       {"data.csv", "analysis.xml", "prediction.xml", "validation.xml", "batch.xml"}) {
    fs::copy_file(example / name, folder.Path() / name);
  }
  const ProcessResult check = CheckDefinition(folder, {"--strict", "--data", "batch.xml"});
  EXPECT_NE(check.output.find(
                "  removed by column elimination:\n"
                "    \"ZNeverSeen\", \"XNeverSeen\": X is 0 in all complete records\n"
                "    \"ZConfirmed\", \"XConfirmed\": X is 0, or depends on other variables, in the "
                "complete records with P = 0\n"
                "  empty [X|Z] classes: none\n"
                "0 errors, 0 warnings\n"),
            std::string::npos)
      << check.output;
  EXPECT_EQ(check.exitStatus, 0);
}

TEST(CheckDescriptionTest, StagesOfColumnElimination) {
  // 2 ZD = ZA + ZB + ZC, in which ZD has the largest weight. XE is 1 in no complete record.
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,ZA,ZB,ZC,ZD,ZE,XA,XB,XC,XD,XE\n"
              "a,A,1,0,0,0,0,0,0,0,0,0,0,0\n"
              "b,A,0,0,1,1,0,1,0,1,0,0,0,0\n"
              "c,A,1,0,1,0,1,1,0,0,1,0,0,0\n"
              "d,A,0,0,0,1,1,1,0,0,0,1,0,0\n"
              "e,A,1,0,0,0,0,0,1,0,0,0,1,0\n"
              "f,A,1,,0,0,0,0,1,0,0,0,1,1\n");
  study.Write("d.xml", QuietAnalysis());
  const ProcessResult check = CheckDefinition(study, {"--data", "d.xml"});
  EXPECT_NE(check.output.find("  removed by column elimination:\n"
                              "    \"ZD\", \"XD\": Z depends on other variables\n"
                              "    \"ZE\", \"XE\": X is 0 in all complete records\n"
                              "  empty [X|Z] classes: none\n"),
            std::string::npos)
      << check.output;
}

TEST(CheckDescriptionTest, NothingIsRemovedAndNoClassIsEmpty) {
  const TinyStudy study;
  study.Write("d.xml", QuietAnalysis());
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  EXPECT_TRUE(output.ends_with(
      "  variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing\n"
      "  removed by column elimination: none\n"
      "  empty [X|Z] classes: none\n"
      "0 errors, 0 warnings\n"))
      << output;
}

TEST(CheckDescriptionTest, SharesOfNothingAreNotTold) {
  const TinyStudy study;
  const Row row = Data("", "1", kHeader);
  study.Write("d.xml", row.definition);
  for (const auto& [name, content] : row.files) {
    study.Write(name, content);
  }
  EXPECT_EQ(CheckDefinition(study, {"--data", "d.xml"}).output,
            "\"data.csv\": 0 records, 0 hospitals, 1 variable, 1 POA indicator\n"
            "  Y = 1: 0 (-)\n"
            "  P = 1: 0 (- of the known), missing: 0 (-)\n"
            "  complete records: 0 (-), with P = 0: 0\n"
            "  hospitals without a complete record: 0\n"
            "  variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing\n"
            "    \"Z\", \"X\": -; -, -, -; -\n"
            "  empty [X|Z] classes:\n"
            "    \"Z\", \"X\": no record with Z = 1 and a known X\n"
            "    \"Z\", \"X\": no record with Z = 0 and a known X\n"
            "0 errors, 0 warnings\n");
}

TEST(CheckDescriptionTest, VariablesOfOneNameAreToldApartByTheOther) {
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,ZA,ZB,X,X\n"
              "a,A,1,0,0,1,0,1\nb,A,0,0,0,0,1,1\nc,A,1,0,0,1,0,0\nd,A,0,0,0,0,1,0\n");
  study.Write("d.xml", QuietAnalysis());
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  EXPECT_NE(output.find("  removed by column elimination:\n"
                        "    \"ZA\", \"X\": Z is 0 everywhere\n"
                        "  empty [X|Z] classes:\n"
                        "    \"ZA\", \"X\": no record with Z = 1 and a known X\n"
                        "0 errors, "),
            std::string::npos)
      << output;
}

TEST(CheckDescriptionTest, DataThatCannotBeReadAreNotDescribed) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(QuietAnalysis(), "Indicators>1<", "Indicators>2<"));
  const ProcessResult check = CheckDefinition(study, {"--data", "d.xml"});
  EXPECT_TRUE(check.output.starts_with("d.xml:4:24: error: ")) << check.output;
  EXPECT_TRUE(check.output.ends_with(".\n1 error, 0 warnings\n")) << check.output;
}

TEST(CheckDescriptionTest, AMissingIndicatorThatHidesAKnownOneIsCounted) {
  const TinyStudy study;
  const Row row = Data("", "2",
                       "Key,Hospital,Y,P1,P2,Z,X\na,A,1,1,,1,1\nb,A,1,,0,1,0\nc,A,0,,1,0,1\n"
                       "d,A,1,1,0,0,0\n");
  study.Write("d.xml", row.definition);
  for (const auto& [name, content] : row.files) {
    study.Write(name, content);
  }
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  EXPECT_NE(output.find("missing: 3 (75.00 %)\n  P missing although an indicator is 1: 2\n"),
            std::string::npos)
      << output;
}

TEST(CheckDescriptionTest, AtMostTwentyHospitalsWithoutACompleteRecordAreNamed) {
  for (const int count : {20, 21, 1000}) {
    const TinyStudy study;
    std::string records = "k,complete,1,0,1,1\nl,complete,0,0,0,0\n";
    for (int h = 1; h <= count; ++h) {
      records += "m,H" + std::to_string(h) + ",0,0,1,\n";
    }
    WriteFiles(study, Records(records, "", ""));
    const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
    const std::string more = count == 20
                                 ? ""
                                 : "    and " + std::to_string(count - 20) +
                                       (count == 21 ? " more hospital\n" : " more hospitals\n");
    EXPECT_NE(output.find("  hospitals without a complete record: " + std::to_string(count) +
                          "\n    \"H1\", 1 record\n"),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("    \"H20\", 1 record\n" + more + "  variables"), std::string::npos)
        << output;
  }
}

}  // namespace
}  // namespace Testing
