// What the program reads without a word and otherwise than it was meant, and the order in which
// `hovar --check` shows its warnings. The program must accept each of these files.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "check_runs.h"
#include "launcher_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// A prediction of records with one variable.
Warning Records(const std::string& records, const std::string& place, const std::string& words) {
  const Row row = Data("", "1", kHeader + records, "");
  auto files = row.files;
  return {row.definition, files, place, words};
}

TEST(CheckValuesTest, CellsOfTheDataFile) {
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

TEST(CheckValuesTest, CellsBehindAQuotedHospital) {
  const TinyStudy study;
  WriteFiles(study, Records("k,\"A \"\"1\"\"\",1,0,0.7,1\n", "", ""));
  EXPECT_TRUE(CheckDefinition(study).output.starts_with(
      "data.csv:2:17: warning: Field 5 (Z, \"Z\") holds \"0.7\" and is read as 0. "))
      << CheckDefinition(study).output;
}

TEST(CheckValuesTest, OtherSpellingsOfTheSameNumberAreFine) {
  const TinyStudy study;
  WriteFiles(study, Records("a,A, 1,01,+1,1.0\nb,A,1 ,\t,-0, \nc,A,000,0,1.,1\t\n", "", ""));
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
}

std::string WithSeed(const std::string& definition, const std::string& first,
                     const std::string& second) {
  return Replaced(Replaced(definition, "<Element>3<", "<Element>" + first + "<"), "<Element>5<",
                  "<Element>" + second + "<");
}

/// A prediction of one record with one variable, with passes of imputation.
Warning SeededPrediction(const std::string& record, const std::string& first,
                         const std::string& second, const std::string& place,
                         const std::string& words) {
  Warning row = Records(record, place, words);
  row.definition = WithSeed(WithChain(row.definition, "1", "1", "4"), first, second);
  return row;
}

TEST(CheckValuesTest, SeedsThatMakePoorRandomNumbers) {
  const std::string ones =
      "so all random numbers would be nearly 1, and nearly all missing values ";
  const std::string coarse = "so random numbers would have 65536 different values only. ";
  std::vector<Warning> rows = {
      SeededPrediction("a,A,1,0,1,\n", "2422800383", "5", "d.xml:16:10", ones),
      SeededPrediction("a,A,1,,1,1\n", "2422800383", "5", "d.xml:16:10", ones),
      SeededPrediction("a,A,1,,1,1\n", "2422800383", "1179647999", "d.xml:16:10", ones),
      SeededPrediction("a,A,1,,1,1\n", "3", "1179647999", "d.xml:17:10", coarse),
  };
  for (const char* word : {"1179647999", "2359295998", "3538943997", " 01179647999\n"}) {
    rows.push_back({WithSeed(QuietAnalysis(), "3", word), {}, "d.xml:32:10", coarse});
  }
  ExpectWarnings(rows);
  // Y is 1 and P unknown. All coefficients are 0, so P is 1 with probability 2/3, in all four
  // passes 0 with probability 1/81 by another seed; E[P|YPXZ], the last column, is its mean.
  const TinyStudy study;
  WriteFiles(study, rows[1]);
  ASSERT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  const std::string predicted = study.Read("out/predicted.csv");
  EXPECT_TRUE(predicted.ends_with(",0\n")) << predicted;
}

TEST(CheckValuesTest, SeedsThatDoNoHarm) {
  // Nothing is drawn where nothing is missing, nor for a P without the outcome.
  std::vector<Warning> rows = {
      SeededPrediction("a,A,1,0,1,1\n", "2422800383", "1179647999", "", ""),
      SeededPrediction("a,A,0,,1,1\n", "2422800383", "1179647999", "", ""),
      {WithSeed(QuietAnalysis(), "0", "0"), {}, "", ""},
      {WithSeed(QuietAnalysis(), "1179647999", "2422800383"), {}, "", ""},
      {WithSeed(QuietAnalysis(), "2422800382", "1179648000"), {}, "", ""},
  };
  Warning withoutPasses = Records("a,A,1,,1,1\n", "", "");  // Burnin and Steps 0
  withoutPasses.definition = WithSeed(withoutPasses.definition, "2422800383", "5");
  rows.push_back(withoutPasses);
  for (const Warning& row : rows) {
    SCOPED_TRACE(row.definition);
    const TinyStudy study;
    WriteFiles(study, row);
    EXPECT_EQ(ExpectAgreement(study), "0 errors, 0 warnings\n");
  }
}

TEST(CheckValuesTest, HospitalIds) {
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
}

TEST(CheckValuesTest, NumbersOfCoefficientFiles) {
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

TEST(CheckValuesTest, IndividualPredictions) {
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

TEST(CheckValuesTest, RealNumbersOfDefinitions) {
  ExpectWarnings({Surprising("<PriorPrecision>0<", "<PriorPrecision>0e-<", "d.xml:20:17",
                             "The text \"0e-\" is read as 0. Write a number, such as 1e-8.")});
}

TEST(CheckValuesTest, NumbersOfIndicators) {
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

TEST(CheckValuesTest, HeaderNamesAreShownWithoutTheirOwnQuotes) {
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

TEST(CheckPairsTest, AnXInThePlaceOfAZPointsToTheNumberOfIndicators) {
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA,ZA,ZB,XA,XB\na,A,1,1,1,0,1,0\nb,A,1,0,0,1,,1\n");
  study.Write("d.xml", WithValues(QuietAnalysis(), {{"NumberOfPoaIndicators", "3"}}));
  ExpectHolds(CheckDefinition(study).output,
              "data.csv:3:13: error: Field 7 (Z, \"XA\") is empty. Write 0 or 1; it may not be "
              "missing. If this is no Z column, correct the number of indicators.\n");
}

}  // namespace
}  // namespace Testing
