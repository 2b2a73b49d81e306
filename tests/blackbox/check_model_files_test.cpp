// `hovar --check` and the program agree on the files that an earlier run wrote, coefficients and
// individual predictions; and what it warns of in the texts of input files.

#include <gtest/gtest.h>

#include "check_runs.h"
#include "foundation/io/platform/platform.h"

namespace Testing {
namespace {

namespace Platform = Vell::IO::Platform;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

Row Model(const std::string& what, const std::string& coefficients, const std::string& error = "") {
  return {what, PredictionText(), {{"coefficients.csv", coefficients}}, error};
}

TEST(CheckModelFilesTest, IdsWithCommasInPredictions) {
  // The reader takes every comma for a separator and stops lines after the first one.
  const std::string error =
      ": error: A key or hospital ID holds a comma, which separates here in spite of the quotes: "
      "values would be taken from wrong columns. Use IDs without commas.";
  const auto row = [&error](const std::string& ids, const std::string& place) {
    std::string rows = "a,A,1,0.9,0.75,0,0,0,1,0.3,1\n";
    for (int i = 0; i < 3; ++i) {
      rows += ids + ",1,0.9,0.75,0,0,0,1,0.3,1\n";
    }
    rows += "e,B,1,0.9,0.75,0,0,0,1,0.3,1\nf,B,1,0.9,0.75,0,0,0,1,0.3,1\n";
    return Row{
        ids, ValidationText(), {{"individual.csv", kIndividualHeader + rows}}, place + error};
  };
  ExpectRows({
      row("b,\"H,x\"", "individual.csv:3:3"),
      row("\"b,c\",A", "individual.csv:3:1"),
      row("\"b\",\"H,x\"", "individual.csv:3:5"),
  });
}

TEST(CheckModelFilesTest, CoefficientFiles) {
  const std::string header = kCoefficientHeader;
  const std::string prefix = header + "XIntercept,ZIntercept,,,,,";
  const std::string more = "X1,Z1,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
  ExpectRows({
      Model("no estimate", prefix + ",,,0,,,0,,,0,,,0,,\n", "coefficients.csv:2:27"),
      Model("text", prefix + "x,,,0,,,0,,,0,,,0,,\n", "coefficients.csv:2:27"),
      Model("text further on", prefix + "0,,,0,,,NA,,,0,,,0,,\n", "coefficients.csv:2:35"),
      Model("last estimate", prefix + "0,,,0,,,0,,,0,,,,,\n", "coefficients.csv:2:43"),
      Model("NA, then text", prefix + "0,,NA,x,,,0,,,0,,,0,,\n", "coefficients.csv:2:33"),
      Model("half an infinity", prefix + "infi,,,0,,,0,,,0,,,0,,\n", "coefficients.csv:2:27"),
      Model("half a nan", prefix + "-na,,,0,,,0,,,0,,,0,,\n", "coefficients.csv:2:27"),
      Model("words", prefix + "nan,,,inf,,,-Infinity,,,0,,,0,,\n"),
      Model("a header without names", "x\nXIntercept,ZIntercept,,,,,x,,,0,,,0,,,0,,,0,,\n",
            "coefficients.csv:2:27"),
      Model("a sign", prefix + "0,,,0,,,0,,,0,,,-,,\n", "coefficients.csv:2:43"),
      Model("short row", prefix + "0,,,0,,,0,,\n", "coefficients.csv:2:38"),
      Model("standard errors", prefix + "0,x,,0,-1,nan,0,,,0,,,0,,NA\n"),
      Model("any header", "anything\n" + std::string(kModelRow)),
      Model("empty", "", "coefficients.csv:1:1"),
      Model("header alone", header),
      Model("no line end", header.substr(0, header.size() - 1), "coefficients.csv:1:1"),
      Model("more variables", header + kModelRow + more, "coefficients.csv:1:1"),
      Model("row without its end", header + kModelRow + more.substr(0, more.size() - 1)),
      Model("intercept without its end", prefix + "0,,,0,,,0,,,0,,,0,,"),
      Model("a quote", prefix + "0,,,0,,,0,,,0,,,0,\",\n", "coefficients.csv:2:45"),
      Model("no [X|Z]", header + kModelRow + "X1,Z1,0.5,,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n",
            "coefficients.csv:3:11"),
      {"one variable twice",
       PredictionText(),
       {{"data.csv", kHeader + "a,A,1,0,1,1\n"},
        {"coefficients.csv",
         header + kModelRow + Replaced(more, "X1,Z1", "X,Z") + Replaced(more, "X1,Z1", "X,Z")}},
       "coefficients.csv:1:1"},
      {"more variables, validation",
       ValidationText(),
       {{"coefficients.csv", header + kModelRow + more}},
       "coefficients.csv:1:1"},
      {"a table that is none",
       PredictionText(),
       {{"coefficients.csv", kTinyData}},
       "coefficients.csv:2:8"},
  });
}

TEST(CheckModelFilesTest, IndividualPredictions) {
  const auto row = [](const std::string& what, const std::string& from, const std::string& to,
                      const std::string& error) {
    const std::string text = std::string(kIndividualHeader) + kIndividualRows;
    return Row{what, ValidationText(), {{"individual.csv", Replaced(text, from, to)}}, error};
  };
  const std::string header = kIndividualHeader;
  ExpectRows({
      row("text", "a,A,1,0.9", "a,A,1,x", "individual.csv:2:7"),
      row("empty", "a,A,1,0.9,0.75", "a,A,1,0.9,", "individual.csv:2:11"),
      row("last value", "0.3,1\nb", "0.3,e\nb", "individual.csv:2:28"),
      row("Y no", "a,A,1,0.9", "a,A,no,x", "individual.csv:2:8"),
      row("NA in a column that is not read", "0.75,0,0,0,1,0.3,1\nb", "0.75,NA,x,0,1,0.3,1\nb",
          "individual.csv:2:19"),
      row("blanks before nan", "a,A,1,0.9,0.75", "a,A,1,   nan,x", "individual.csv:2:14"),
      row("na", "a,A,1,0.9", "a,A,1,na", "individual.csv:2:7"),
      // The number is then looked for in the key of the next line.
      row("no last value and a number as key", "0.3,1\nb,A", "0.3,\n2,A", "individual.csv:2:28"),
      row("text, and no last value", "0.9,0.75,0,0,0,1,0.3,1\nb", "x,0.75,0,0,0,1,0.3,\nb",
          "individual.csv:2:7"),
      row("a blank as last value", "0.3,1\nb,A", "0.3, \n2,A", "individual.csv:2:28"),
      row("a short line", "a,A,1,0.9,0.75,0,0,0,1,0.3,1", "a,A,1,0.9,0.75,0",
          "individual.csv:2:17"),
      row("a comma in a key", "a,A,1", "\"a,b\",A,1", ""),
      row("unused columns", "a,A,1,0.9", "\"x \"\"y\"\"\",,7, 0.9 z", ""),
      row("one line less", "f,B,0,0.3,0.75,0,0.3,0.3,0,0.5,0\n", "", "individual.csv:7:1"),
      row("no last line feed", "0.5,0\n", "0.5,0", "individual.csv:7:33"),
      row("one line more", "0.5,0\n", "0.5,0\ng,C,1,0,0,0,0,0,0,0,0\n", ""),
      {"without data", Replaced(ValidationText(), "data.csv", "none.csv"), {}, "d.xml:3:7"},
      {"without coefficients",
       Replaced(ValidationText(), "coefficients.csv", "none.csv"),
       {},
       "d.xml:5:25"},
      {"none", ValidationText(), {{"individual.csv", ""}}, "individual.csv:1:1"},
      {"header alone", ValidationText(), {{"individual.csv", header}}, "individual.csv:2:1"},
  });
}

TEST(CheckModelFilesTest, TextsOfInputFiles) {
  const std::string header = kCoefficientHeader;
  const std::string two = "Key,Hospital,Y,POA,Z1,Z2,X1,X2\na,A,1,0,1,0,1,0\n";
  const auto row = [](const std::string& name) {
    return "X" + name + ",Z" + name + ",0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
  };
  std::string predictions = std::string(kIndividualHeader) + kIndividualRows;
  ExpectWarnings({
      {PredictionText(),
       {{"data.csv", std::string(kByteOrderMark) + kTinyData}},
       "data.csv:1:1",
       "byte order mark"},
      {PredictionText(),
       {{"coefficients.csv", std::string(kByteOrderMark) + header + kModelRow}},
       "coefficients.csv:1:1",
       "byte order mark"},
      {PredictionText(),
       {{"coefficients.csv", header + kModelRow + "X1,Z1,0"}},
       "coefficients.csv:3:8",
       "The last line does not end with a line feed, so its variable is "
       "lost."},
      {PredictionText(),
       {{"coefficients.csv", header}},
       "coefficients.csv:1:1",
       "No complete line stands behind the header"},
      {PredictionText(),
       {{"data.csv", two}, {"coefficients.csv", header + kModelRow + row("2") + row("1")}},
       "coefficients.csv:3:1",
       "The coefficients of \"X2\" would serve for \"X1\" of the data"},
      {PredictionText(),
       {{"data.csv", Replaced(two, "X1,X2", "X1,X1")},
        {"coefficients.csv", header + kModelRow + Replaced(row("2"), "X2", "X1") + row("1")}},
       "coefficients.csv:3:1",
       "The coefficients of \"Z2\" would serve for \"Z1\" of the data"},
      {PredictionText(),
       {{"data.csv", two}, {"coefficients.csv", header + row("1") + row("2")}},
       "coefficients.csv:2:1",
       "The row of the intercept is missing, so all models would predict without an intercept, and "
       "missing values of \"X1\" would count as 0."},
      {PredictionText(),
       {{"data.csv", Replaced(two, "X1,X2", "XIntercept,X2")},
        {"coefficients.csv", header + Replaced(row("1"), "X1", "XIntercept")}},
       "coefficients.csv:2:1",
       "The row of the intercept is missing"},
      {ValidationText(),
       {{"data.csv", "Key,Hospital,Y,POA,Z1,X1\na,A,1,0,1,\n"},
        {"coefficients.csv", header + row("1")},
        {"individual.csv", std::string(kIndividualHeader) + "a,A,1,0,0,0,0,0,0,0,0\n"}},
       "coefficients.csv:2:1",
       "The row of the intercept is missing"},
      {ValidationText(),
       {{"individual.csv", predictions + "g,C,1,0,0,0,0,0,0,0,0\n"}},
       "individual.csv:9:1",
       "The file has 7 complete lines for the 6 records of \"data.csv\""},
      {ValidationText(),
       {{"individual.csv", Replaced(predictions, "a,A,1", "\"a,b\",A,1")}},
       "individual.csv:2:1",
       "A key or hospital ID holds a comma"},
  });
}

TEST(CheckModelFilesTest, CarriageReturnsWhereTheProgramKeepsThem) {
  const std::vector<Warning> rows = {
      {Replaced(QuietAnalysis(), "<Input>\n", "<Input>\r\n"), {}, "d.xml:2:8", "carriage return"},
      {PredictionText(),
       {{"data.csv", Replaced(kTinyData, "POA\n", "POA\r\n")}},
       "data.csv:1:19",
       "on Linux the last name of the header keeps the carriage return"},
      {PredictionText(),
       {{"data.csv", Replaced(kTinyData, "c,A,0,0\n", "c,A,0,0\r\n")}},
       "data.csv:4:8",
       "on Linux the last field of the line keeps the carriage return"},
  };
  if (Platform::TextLineEnds() == Platform::LineEnds::kLineFeeds) {
    ExpectWarnings(rows);
    return;
  }
  for (const Warning& row : rows) {
    const TinyStudy study;
    WriteFiles(study, row);
    EXPECT_EQ(CheckDefinition(study, {"--strict", "d.xml"}).output, "0 errors, 0 warnings\n");
    EXPECT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  }
}

TEST(CheckModelFilesTest, IdsWithLineFeedsInPredictions) {
  // The line breaks within the ID; the reader takes the two halves for records.
  const std::string words =
      "A key or hospital ID holds a line feed, which separates here in spite of the quotes: values "
      "would be taken from wrong columns. Use IDs without line feeds.";
  const std::string last = "f,B,0,0.3,0.75,0,0.3,0.3,0,0.5,0\n";
  const std::string text = std::string(kIndividualHeader) + kIndividualRows;
  const std::string values = ",0,0.3,0.75,0,0.3,0.3,0,0.5,0\n";
  ExpectRows({{"in the middle",
               ValidationText(),
               {{"individual.csv", Replaced(text, "c,A,0,0.6", "\"c\nx\",\"A\n1\",0,0.6")}},
               "individual.csv:4:1: error: " + words}});
  const TinyStudy study;
  study.Write("data.csv", Replaced(kTinyData, "f,B,0,0\n", "f,\"C\n1\",0,0\n"));
  study.Write("individual.csv", Replaced(text, last, "f,\"C\n1\"" + values));
  study.Write("d.xml", ValidationText());
  EXPECT_EQ(ExpectAgreement(study),
            "individual.csv:7:1: warning: " + words + "\n0 errors, 1 warning\n");
}

TEST(CheckModelFilesTest, VariablesAreCountedWithoutTheInterceptAlone) {
  const auto lines = [](const std::string& rows) {
    const TinyStudy study;
    study.Write("data.csv", "Key,Hospital,Y,POA,Za,Xa\na,A,1,0,1,1\n");
    study.Write("coefficients.csv", std::string(kCoefficientHeader) + rows);
    study.Write("d.xml", PredictionText());
    return CheckDefinition(study).output;
  };
  const std::string model = kModelRow;
  const std::string row = ",0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
  const std::string cure = ". Use the coefficient file of an Analysis of the same variables.\n";
  EXPECT_EQ(lines(Replaced(model, "XIntercept", "X0")),
            "coefficients.csv:1:1: error: The data have 0 variables of the 1 in the coefficient "
            "file; missing: \"X0\"" +
                cure + "1 error, 0 warnings\n");
  EXPECT_EQ(lines("Xa,Za" + row + "Xb,Zb" + row),
            "coefficients.csv:1:1: error: The data have 1 variable of the 2 in the coefficient "
            "file; missing: \"Xb\"" +
                cure + "1 error, 0 warnings\n");
  EXPECT_EQ(lines(model + "Xb,Zb" + row),
            "coefficients.csv:1:1: error: The data have 0 variables of the 1 in the coefficient "
            "file; missing: \"Xb\"" +
                cure + "1 error, 0 warnings\n");
  // Its row at another place.
  EXPECT_EQ(lines("Xa,Za" + row + Replaced(model, ",,,,,-", ",0,0,0,0,-")),
            "coefficients.csv:2:1: warning: The coefficients of \"Xa\" would serve for "
            "\"XIntercept\" of the data: variables are matched by position. Use the file as the "
            "program wrote it.\n0 errors, 1 warning\n");
}

}  // namespace
}  // namespace Testing
