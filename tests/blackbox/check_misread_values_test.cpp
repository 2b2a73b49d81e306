// `hovar --check` warns of what the program reads without a word and otherwise than it was meant. The
// program must accept each of these files.

#include <gtest/gtest.h>

#include <string>

#include "check_runs.h"

namespace Testing {
namespace {

TEST(CheckMisreadValuesTest, CellsOfTheDataFile) {
  ExpectWarnings({
      Records("a,A,1,0,0.7,1\n", "data.csv:2:9",
              "Field 5 (Z, \"Z\") holds \"0.7\" and is read as 0. "),
      Records("a,A,1,0,1,1.9\n", "data.csv:2:11",
              "Field 6 (X, \"X\") holds \"1.9\" and is read as 1. "),
      Records("a,A,1,1x,1,1\n", "data.csv:2:7",
              "Field 4 (POA indicator, \"POA\") holds \"1x\" and is read as 1. "),
      Records("a,A,0x1,0,1,1\n", "data.csv:2:5",
              "Field 3 (Y, \"Y\") holds \"0x1\" and is read as 0. "),
      Records("a,A,1,0,4294967297,1\n", "data.csv:2:9", "holds \"4294967297\" and is read as 1. "),
      Records(
          "a,A,1,0,1,1\nb,A,1,0,1, 0 z\nc,A,1,0,1,0y\nd,A,1,0,1,1!\n", "data.csv:3:11",
          "holds \" 0 z\" and is read as 0; 2 more cells of this column are read otherwise than "
          "written. Write 0 or 1, and nothing else in the field."),
  });
}

TEST(CheckMisreadValuesTest, CellsBehindAQuotedHospital) {
  const TinyStudy study;
  WriteFiles(study, Records("k,\"A \"\"1\"\"\",1,0,0.7,1\n", "", ""));
  EXPECT_TRUE(CheckDefinition(study).output.starts_with(
      "data.csv:2:17: warning: Field 5 (Z, \"Z\") holds \"0.7\" and is read as 0. "))
      << CheckDefinition(study).output;
}

TEST(CheckMisreadValuesTest, OtherSpellingsOfTheSameNumberAreFine) {
  const TinyStudy study;
  WriteFiles(study, Records("a,A, 1,01,+1,1.0\nb,A,1 ,\t,-0, \nc,A,000,0,1.,1\t\n", "", ""));
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
}

TEST(CheckMisreadValuesTest, HospitalIds) {
  ExpectWarnings({
      Records("a,A,1,0,1,1\nb, A,1,0,1,1\n", "data.csv:3:3",
              "The hospital \" A\" counts as another one than \"A\", from which it differs in "
              "blanks, capital letters or leading zeros alone. Write"),
      Records("a,1,1,0,1,1\nb,01,1,0,1,1\nc,001,1,0,1,1\n", "data.csv:3:3",
              "leading zeros alone (2 such hospitals in all). Write"),
      Records("a,a,1,0,1,1\nb,A,1,0,1,1\n", "data.csv:3:3",
              "\"A\" counts as another one than \"a\""),
      Records("a,A,1,0,1,1\nb,,1,0,1,1\nc,,1,0,1,1\n", "data.csv:3:3",
              "The hospital ID is empty; the 2 records without one would count as one hospital."),
      Records("a,A,1,0,1,1\nb,\"B,1\",1,0,1,1\n", "data.csv:3:3",
              "The hospital ID \"B,1\" holds a comma or a line feed: a Validation of these "
              "predictions would take values from wrong columns."),
  });
  const TinyStudy study;
  WriteFiles(study, Records("a,0,1,0,1,1\nb,10,1,0,1,1\nc,100,1,0,1,1\n", "", ""));
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
  WriteFiles(study, Records("a, ,1,0,1,1\nb,,1,0,1,1\nc,,0,0,1,1\nd,   ,1,0,1,1\n", "", ""));
  const std::string empty = CheckDefinition(study).output;
  EXPECT_NE(empty.find("data.csv:2:3: warning: The hospital ID is empty; the 4 records without one "
                       "would count as 3 hospitals. Give"),
            std::string::npos)
      << empty;
}

TEST(CheckMisreadValuesTest, NumbersOfCoefficientFiles) {
  const auto file = [](const std::string& row) {
    return Warning{PredictionText(),
                   {{"coefficients.csv",
                     std::string(kCoefficientHeader) + "XIntercept,ZIntercept,,,,," + row + "\n"}},
                   "coefficients.csv:2:",
                   ""};
  };
  Warning text = file("1.5abc,,,0,,,0,,,0,,,0,,");
  text.place += "27";
  text.words = "Field 7 (\"[P|X]\") holds \"1.5abc\" and is read as 1.5. Use the file";
  Warning quoted = file("0,,,0,,,0,,,0.5 0,,,0,,");
  quoted.place += "39";
  quoted.words = "Field 16 (\"[Y|X,P=0]\") holds \"0.5 0\" and is read as 0.5. ";
  Warning fields = file("0,,,0,,,0,,,0,,,0,,,");
  fields.place += "47";
  fields.words = "The line has 22 fields instead of 21: values behind it would be taken";
  ExpectWarnings({text, quoted, fields});
  const TinyStudy study;
  WriteFiles(study, file("0x10,NA,, 0 ,,,-0,,,1e-9,,,nan,,"));
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
}

TEST(CheckMisreadValuesTest, IndividualPredictions) {
  const auto changed = [](const std::string& from, const std::string& to, const std::string& place,
                          const std::string& words) {
    const std::string text = std::string(kIndividualHeader) + kIndividualRows;
    return Warning{ValidationText(), {{"individual.csv", Replaced(text, from, to)}}, place, words};
  };
  ExpectWarnings({
      changed("b,A,1,0.6", "b,A,1,0.6;", "individual.csv:3:7",
              "Field 4 (\"E[Y|Z]\") holds \"0.6;\" and is read as 0.6. "),
      changed(
          "c,A,0", "x,A,0", "individual.csv:4:1",
          "The line is that of record \"x\" of hospital \"A\", and would serve for record \"c\" "
          "of hospital \"A\" of the data"),
      changed("d,B,1", "d,C,1", "individual.csv:5:1", "of hospital \"C\""),
  });
  const TinyStudy study;
  WriteFiles(study, changed("d,B,1", "\"d\",\"B\",1", "", ""));
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
}

TEST(CheckMisreadValuesTest, RealNumbersOfDefinitions) {
  ExpectWarnings({Surprising("<PriorPrecision>0<", "<PriorPrecision>0e-<", "d.xml:20:17",
                             "The text \"0e-\" is read as 0. Write a number, such as 1e-8.")});
}

TEST(CheckMisreadValuesTest, NumbersOfIndicators) {
  const std::string names = "ZAge,ZSex,ZRenal,ZLiver,XAge,XSex,XRenal,XLiver";
  const auto data = [&names](const std::string& indicators) {
    return Row{"",
               Replaced(PredictionText(), "Indicators>1<", "Indicators>" + indicators + "<"),
               {{"data.csv", "Key,Hospital,Y,P1,P2," + names + "\na,A,1,0,0,1,1,1,1,1,1,1,1\n"}},
               ""};
  };
  for (const char* const indicators : {"0", "4"}) {
    const TinyStudy study;
    study.Write("d.xml", data(indicators).definition);
    study.Write("data.csv", data(indicators).files[0].second);
    const std::string output = CheckDefinition(study).output;
    EXPECT_NE(output.find("d.xml:4:24: warning: With " + std::string(indicators)),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("With 2 they do, as in \"ZAge\" and \"XAge\"."), std::string::npos)
        << output;
  }
  const TinyStudy study;
  study.Write("d.xml", data("2").definition);
  study.Write("data.csv", data("2").files[0].second);
  EXPECT_EQ(CheckDefinition(study).output.find("do not go together"), std::string::npos);
}

TEST(CheckMisreadValuesTest, HeaderNamesAreShownWithoutTheirOwnQuotes) {
  const TinyStudy study;
  WriteFiles(study, Records("", "", ""));
  study.Write("data.csv", "Key,Hospital,Y,POA,\"Z \"\"1\"\"\",\"X.chf\"\na,A,1,0,1,NA\n");
  EXPECT_TRUE(CheckDefinition(study).output.starts_with(
      "data.csv:2:11: error: Field 6 (X, \"X.chf\") holds \"NA\". "))
      << CheckDefinition(study).output;
  study.Write("data.csv", "Key,Hospital,Y,POA,\"Z \"\"1\"\"\",\"X.chf\"\na,A,1,0,\"1\",1\n");
  EXPECT_TRUE(CheckDefinition(study).output.starts_with(
      "data.csv:2:9: error: Field 5 (Z, \"Z \"1\"\") holds \"1\" in double quotes. "))
      << CheckDefinition(study).output;
}

}  // namespace
}  // namespace Testing
