// `hovar --check` and the program agree on the shape and the cells of data files.

#include <gtest/gtest.h>

#include "check_runs.h"
#include "launcher_runs.h"

namespace Testing {
namespace {

TEST(CheckDataFileTest, ShapeOfTheDataFile) {
  const std::string first = "a,A,1,0,1,1\n";
  ExpectRows({
      Data("good", "1", kHeader + first),
      Data("a field less", "1", kHeader + "a,A,1,0,1\n", "data.csv:2:10"),
      Data("a field more", "1", kHeader + first + "b,A,1,0,1,1,\n", "data.csv:3:13"),
      Data("a blank line", "1", kHeader + first + "\n", "data.csv:3:1"),
      Data("a blank line between", "1", kHeader + "\n" + first, "data.csv:2:1"),
      Data("a header of its own size", "1", "Key\n" + first, "data.csv:2:3"),
      Data("an indicator more", "2", kHeader + first, "d.xml:4:24"),
      Data("an indicator less", "0", kHeader + first, "d.xml:4:24"),
      Data("negative", "-1", kHeader + first,
           "d.xml:4:24: error: The number of POA indicators is -1. Write 0 or more."),
      Data("negative and even", "-2", kHeader + first,
           "d.xml:4:24: error: The number of POA indicators is -2. Write 0 or more."),
      Data("far too many", "2147483647", kHeader + first, "d.xml:4:24"),
      Data("two too many", "4", kHeader + first, "d.xml:4:24"),
      Data("empty", "1", "", "data.csv:1:1"),
      Data("no line end", "1", "Key,Hospital,Y,POA,Z,X", "data.csv:1:23"),
      Data("a header alone", "1", kHeader),
      Data("last line feed missing", "1", kHeader + first + "b,A,1,0,1,1", "data.csv:3:12"),
      Data("a blank at the end", "1", kHeader + first + " ", "data.csv:3:2"),
      Data("two fields", "1", "Key,Hospital\n", "d.xml:4:24"),
      Data("a line feed alone", "1", "\n", "d.xml:4:24"),
      Data("a header without its first names", "1", ",,,,Z,X\n" + first),
      Data("a quoted header over two lines", "1", "\"Key\n\",Hospital,Y,POA,Z,X\n" + first,
           "data.csv:1:1"),
      Data("a comma in the header", "1", "Key,Hospital,\"Y, or N\",POA,Z,X\n" + first,
           "data.csv:1:14"),
      Data("a comma in a name", "1", Replaced(kHeader, "Z,X", "Z,\"X, Y\""),
           "coefficients.csv:1:1"),
      Data("a quoted header without its end", "1", "\"Key\n\",Hospital,Y,POA,Z,X", "data.csv:2:21"),
      Data("carriage returns", "1", "Key,Hospital,Y,POA,Z,Q,X,Q\r\na,A,1,0,1,1,0,0\r\n"),
      Data("byte order mark", "1", "\xEF\xBB\xBF" + kHeader + first),
      Data("byte order mark before a quote", "1",
           "\xEF\xBB\xBF\"Key\",Hospital,Y,POA,Z,X\n" + first, "data.csv:1:2"),
  });
}

TEST(CheckDataFileTest, ANegativeNumberOfIndicatorsWithMoreCellsThan31BitsCount) {
  // 2200 * 1,000,001 cells.
  std::string data = "Key,Hospital,Y\n";
  for (int i = 0; i < 2200; ++i) {
    data += "k,A,1\n";
  }
  ExpectRows({Data("negative", "-2000000", data, "d.xml:4:24")});
}

TEST(CheckDataFileTest, CellsOfTheDataFile) {
  const std::string first = kHeader + "a,A,1,0,1,1\n";
  ExpectRows({
      Data("Y 2", "1", first + "b,A,2,0,1,1\n", "data.csv:3:5"),
      Data("Y empty", "1", first + "b,A,,0,1,1\n", "data.csv:3:5"),
      Data("Y text", "1", first + "b,A,yes,0,1,1\n", "data.csv:3:5"),
      Data("Y quoted", "1", first + "b,A,\"1\",0,1,1\n", "data.csv:3:5"),
      Data("POA 2", "1", first + "b,A,1,2,1,1\n", "data.csv:3:7"),
      Data("POA text", "1", first + "b,A,1,NA,1,1\n", "data.csv:3:7"),
      Data("POA empty", "1", first + "b,A,1,,1,1\n"),
      Data("Z empty", "1", first + "b,A,1,0,,1\n", "data.csv:3:9"),
      Data("Z -1", "1", first + "b,A,1,0,-1,1\n", "data.csv:3:9"),
      Data("Z -", "1", first + "b,A,1,0,-,1\n", "data.csv:3:9"),
      Data("X 10", "1", first + "b,A,1,0,1,10\n", "data.csv:3:11"),
      Data("X text", "1", first + "b,A,1,0,1,x\n", "data.csv:3:11"),
      Data("X empty", "1", first + "b,A,1,0,1,\n"),
      Data("text after numbers", "1", first + "b,A,1 yes,0\t,1.5,1abc\n"),
      Data("beyond ASCII", "1", first + "b,Z\xC3\xBCrich,7,0,1,1\n", "data.csv:3:10"),
      Data("hospital like a broken nan", "1", first + "b,North,2,0,1,1\n", "data.csv:3:9"),
      Data("hospital like a broken inf", "1", first + "b,Isala,,0,1,1\n", "data.csv:3:9"),
      Data("Y nan", "1", first + "b,A,nan,0,1,1\n", "data.csv:3:5"),
      Data("Z Na", "1", first + "b,A,1,0,Na,1\n", "data.csv:3:9"),
      Data("Y 2 without a name", "1", "Key,Hospital,,POA,Z,X\nb,A,2,0,1,1\n", "data.csv:2:5"),
      Data("hospital over two lines", "1", first + "b,\"Q\nR\",7,0,1,1\n", "data.csv:4:4"),
      Data("quoted hospital", "1", first + "b,\"Q, R\",7,0,1,1\n", "data.csv:3:10"),
      Data("grouping", "1", first + "b,B,1,0,1,1\nc,A,1,0,1,1\n", "data.csv:4:3"),
      Data("grouping with quotes", "1", first + "b,B,1,0,1,1\nc,\"A\",1,0,1,1\n", "data.csv:4:3"),
      Data("quoted or not", "1", first + "b,\"A\",1,0,1,1\n"),
      Data("a quote within", "1", first + "a\"b,A,1,0,1,1\n", "data.csv:3:2"),
      Data("a quote not closed", "1", first + "b,\"A,1,0,1,1\n", "data.csv:3:3"),
      Data("text after a quote", "1", first + "b,\"A\"x,1,0,1,1\n", "data.csv:3:6"),
      Data("a comma in a key", "1", first + "\"a,b\",A,1,0,1,1\n", "data.csv:3:5"),
      Data("NUL", "1", first + std::string("\0,A,1,0,1,1\n", 12), "data.csv:3:1"),
  });
}

TEST(CheckDataFileTest, EmptyOutcomesAtTheEndOfALine) {
  const auto row = [](const std::string& data, const std::string& error) {
    Row made = Data(data, "0", data, error);
    made.files[1].second = std::string(kCoefficientHeader) + kModelRow;
    return made;
  };
  ExpectRows({
      row("Key,Hospital,Y\na,A,1\nb,A,0\n", ""),
      row("Key,Hospital,Y\na,A,\nb,A,1\n", "data.csv:2:5"),
      row("Key,Hospital,Y\na,A,1\nb,A,\n", "data.csv:3:5"),
  });
}

TEST(CheckDataFileTest, QuotesWithinAFieldAndWhatHelps) {
  const std::string first = "a,A,1,0,1,1\n";
  const std::string within =
      ": error: A double quote stands within a field that does not begin with one. Remove it, or "
      "put quotes round the whole field and write each one inside twice.";
  const std::string quoted = "b,\"B\",1,0,1,1\n";
  const std::string name = Replaced(kHeader, "Z,X", "Z,X\"a");
  ExpectRows({
      Data("in the header", "1", name + first + quoted, "data.csv:1:23" + within),
      Data("in a key", "1", kHeader + first + "k\"5,A,1,0,1,1\n" + quoted, "data.csv:3:2" + within),
      Data("not closed", "1", kHeader + first + "b,\"A,1,0,1,1\n",
           "data.csv:3:3: error: A double quote is opened here and never closed. Close it, or "
           "remove it."),
      Data("a key as advised", "1", kHeader + first + "\"k\"\"5\",A,1,0,1,1\n" + quoted),
      Data("a leading name as advised", "1", Replaced(kHeader, "Key", "\"K\"\"y\"") + first),
  });
}

TEST(CheckDataFileTest, AnXInThePlaceOfAZPointsToTheNumberOfIndicators) {
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA,ZA,ZB,XA,XB\na,A,1,1,1,0,1,0\nb,A,1,0,0,1,,1\n");
  study.Write("d.xml", WithValues(QuietAnalysis(), {{"NumberOfPoaIndicators", "3"}}));
  ExpectHolds(CheckDefinition(study).output,
              "data.csv:3:13: error: Field 7 (Z, \"XA\") is empty. Write 0 or 1; it may not be "
              "missing. If this is no Z column, correct the number of indicators.\n");
}

}  // namespace
}  // namespace Testing
