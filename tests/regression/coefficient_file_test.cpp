#include "regression/coefficient_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "named_results.h"
#include "support/allocation_fault.h"
#include "support/data_sets.h"
#include "support/outcome.h"
#include "support/streams.h"

namespace {

using Hovar::CoefficientEstimate;
using Hovar::RegressionResults;
using Testing::InputStream;
using Testing::MakeResults;
using Testing::Observe;
using Testing::Outcome;
using Testing::OutputStream;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

const std::string kHeader =
    "Variables Names,,[X|Z],,,,[P|X],mse,ese,[Y|Z],mse,ese,[Y|X],mse,ese,"
    "\"[Y|X,P=0]\",mse,ese,\"[Y|X,P=0,MCMC]\",mse,ese\n";

std::string Write(const RegressionResults& results) {
  OutputStream stream;
  WriteCoefficientFile(results, stream.Writer());
  return stream.Content();
}

struct Reading : Outcome {
  RegressionResults results;
};

Reading Read(const std::string& text) {
  const InputStream stream(text);
  Reading reading;
  static_cast<Outcome&>(reading) = Observe([&] { ReadCoefficientFile(reading.results, *stream); });
  return reading;
}

TEST(CoefficientFileTest, TextIsExact) {
  RegressionResults results =
      MakeResults({"XIntercept", "age,old", "say \"x\""}, {"ZIntercept", "zage", ""});
  results.xzTables[0].probability = {0.25, 0.125};
  results.xzTables[1].probability = {0, 1};
  results.blocks[0][0] = {-0.5, 0.1, 0.2};
  results.blocks[1][0] = {1234567, 0.00001234567, -1};
  results.blocks[2][0] = {1.0 / 3, -1, 1e100};
  results.blocks[3][0] = {2, 0, 0};
  results.blocks[4][0] = {0, -1, -1};
  results.blocks[4][2] = {-1, -1, 7};
  EXPECT_EQ(Write(results),
            kHeader +
                "XIntercept,ZIntercept,,,,,-0.5,0.1,0.2,1.23457e+06,1.23457e-05,,0.333333,,1e+100,"
                "2,0,0,0,,\n"
                "\"age,old\",zage,0.75,0.25,0.875,0.125,0,,,0,,,0,,,0,,,0,,\n"
                "\"say \"\"x\"\"\",,1,0,0,1,0,,,0,,,0,,,0,,,-1,,7\n");
}

TEST(CoefficientFileTest, StandardErrorIsWrittenWhenItIsNotBelowZero) {
  struct Case {
    CoefficientEstimate estimate;
    std::string expected;
  };
  for (const Case& c : std::vector<Case>{
           {{kNaN, kNaN, kNaN}, "nan,,"},
           {{-kNaN, -kNaN, 0}, "nan,,0"},
           {{kInfinity, kInfinity, -kInfinity}, "inf,inf,"},
           {{-kInfinity, 0.5, -1e-300}, "-inf,0.5,"},
           {{-0.0, -0.0, 1e-300}, "-0,-0,1e-300"},
           {{5, -1, -1}, "5,,"},
           {{5, -0.5, -2}, "5,,"},
       }) {
    RegressionResults results = MakeResults({"X"}, {"Z"});
    results.blocks[1][0] = c.estimate;
    EXPECT_EQ(Write(results), kHeader + "X,Z,,,,,0,,," + c.expected + ",0,,,0,,,0,,\n");
  }
}

TEST(CoefficientFileTest, TablesThatAreNoNumbersAreWrittenAsTheyAre) {
  RegressionResults results = MakeResults({"X", "X1"}, {"Z", "Z1"});
  results.xzTables[0].probability = {kNaN, kInfinity};
  EXPECT_EQ(Write(results), kHeader + "X,Z,,,,,0,,,0,,,0,,,0,,,0,,\n" +
                                "X1,Z1,nan,nan,-inf,inf,0,,,0,,,0,,,0,,,0,,\n");
}

TEST(CoefficientFileTest, ResultsWithoutVariablesAreAHeader) {
  EXPECT_EQ(Write(MakeResults({}, {})), kHeader);
}

TEST(CoefficientFileTest, WhatWasWrittenIsReadBack) {
  RegressionResults results =
      MakeResults({"XIntercept", "a,b", "c\"d", "e\nf"}, {"ZIntercept", "", " g ", "\xC3\xA9"});
  for (std::int32_t k = 0; k < 3; ++k) {
    results.xzTables[k].probability = {0.0625 * k, 1 - 0.125 * k};
  }
  // Values of at most six digits, and marks of values that are not available.
  for (std::size_t b = 0; b < results.blocks.size(); ++b) {
    for (std::int32_t i = 0; i < 4; ++i) {
      results.blocks[b][i] = {static_cast<double>(b) - 0.5 * i, i == 1 ? -1 : 0.25 * i,
                              b == 2 ? -1 : (i == 3 ? 3.5e-05 : 0.125 * i)};
    }
  }
  const std::string text = Write(results);
  const Reading reading = Read(text);
  EXPECT_EQ(reading.Failure(), "");
  EXPECT_EQ(reading.output, "") << "reading is silent";
  EXPECT_EQ(reading.results.VariableCount(), 4);
  EXPECT_EQ(Testing::Texts(reading.results.xNames), Testing::Texts(results.xNames));
  EXPECT_EQ(Testing::Texts(reading.results.zNames), Testing::Texts(results.zNames));
  ASSERT_EQ(reading.results.xzTables.Size(), 4) << "one for each variable, the last one unused";
  for (std::int32_t k = 0; k < 3; ++k) {
    EXPECT_EQ(reading.results.xzTables[k].probability, results.xzTables[k].probability);
  }
  for (std::size_t b = 0; b < results.blocks.size(); ++b) {
    ASSERT_EQ(reading.results.blocks[b].Size(), 4);
    for (std::int32_t i = 0; i < 4; ++i) {
      EXPECT_EQ(reading.results.blocks[b][i].estimate, results.blocks[b][i].estimate);
      EXPECT_EQ(reading.results.blocks[b][i].modelStandardError,
                results.blocks[b][i].modelStandardError);
      EXPECT_EQ(reading.results.blocks[b][i].empiricalStandardError,
                results.blocks[b][i].empiricalStandardError);
    }
  }
  EXPECT_EQ(Write(reading.results), text);
}

TEST(CoefficientFileTest, ValuesThatAreNotFiniteAreReadBack) {
  const Reading reading = Read(kHeader + "X,Z,,,,,nan,,,inf,inf,nan,-inf,,,0x1p3,0x10,1e2,1,,\n");
  EXPECT_EQ(reading.Failure(), "");
  const RegressionResults& results = reading.results;
  EXPECT_TRUE(std::isnan(results.blocks[0][0].estimate));
  EXPECT_EQ(results.blocks[1][0].estimate, kInfinity);
  EXPECT_EQ(results.blocks[1][0].modelStandardError, kInfinity);
  EXPECT_TRUE(std::isnan(results.blocks[1][0].empiricalStandardError));
  EXPECT_EQ(results.blocks[2][0].estimate, -kInfinity);
  EXPECT_EQ(results.blocks[3][0].estimate, 8);
  EXPECT_EQ(results.blocks[3][0].modelStandardError, 16);
  EXPECT_EQ(results.blocks[3][0].empiricalStandardError, 100);
}

TEST(CoefficientFileTest, TablesAreReadFromTheFourthAndTheSixthCell) {
  // The complements beside them are not looked at.
  const Reading reading = Read(kHeader + "X,Z,a,b,c,d,1,,,2,,,3,,,4,,,5,,\n" +
                               "X1,Z1,x, 0.25,\"y,z\" ,0.5w,1,,,2,,,3,,,4,,,5,,\n");
  // Cells are skipped without a look at quotes, so a comma in one is the end of it.
  EXPECT_NE(reading.Failure(), "");
  const Reading good = Read(kHeader + "X,Z,a,b,c,d,1,,,2,,,3,,,4,,,5,,\n" +
                            "X1,Z1,x, 0.25,y,0.5w,1,,,2,,,3,,,4,,,5,,\n");
  EXPECT_EQ(good.Failure(), "");
  EXPECT_EQ(good.results.xzTables[0].probability, (std::array<double, 2>{0.25, 0.5}));
}

// Which cells must be numbers: the estimates, and after the first row the fourth and the sixth
// cell. Everything else is text, skipped, or what strtod makes of it.
TEST(CoefficientFileTest, EachCellThatMustBeANumberIsRequired) {
  for (const std::size_t row : {0U, 1U}) {
    for (std::size_t cell = 0; cell < 21; ++cell) {
      for (const std::string replacement : {"x", "", "-", "."}) {
        const bool isEstimate = cell >= 6 && cell % 3 == 0;
        const bool isTable = row == 1 && (cell == 3 || cell == 5);
        std::string text = kHeader;
        for (std::size_t r = 0; r < 2; ++r) {
          for (std::size_t c = 0; c < 21; ++c) {
            text += (r == row && c == cell ? replacement : "1") + (c < 20 ? "," : "\n");
          }
        }
        EXPECT_EQ(Read(text).Failure(),
                  isEstimate || isTable ? "EndOfStreamException: Unexpected end of stream" : "")
            << "row " << row << ", cell " << cell << " <" << replacement << ">";
      }
    }
  }
}

TEST(CoefficientFileTest, FileThatEndsWithinARowIsRefused) {
  // The last row has its line feed early: after each cell before the last estimate.
  std::string row = "X,Z";
  for (std::size_t cells = 2; cells <= 18; ++cells) {
    EXPECT_EQ(Read(kHeader + row + "\n").Failure(),
              "EndOfStreamException: Unexpected end of stream")
        << row;
    row += cells < 6 ? "," : ",1";
  }
  for (const std::string only : {"", "X"}) {
    EXPECT_EQ(Read(kHeader + only + "\n").Failure(),
              "EndOfStreamException: Unexpected end of stream");
  }
}

TEST(CoefficientFileTest, StandardErrorThatIsNoNumberIsWhatStrtodMakesOfIt) {
  struct Case {
    std::string cell;
    double expected;
  };
  for (const Case& c : std::vector<Case>{{"", -1},
                                         {"abc", 0},
                                         {" ", 0},
                                         {"0.5x", 0.5},
                                         {" 2", 2},
                                         {"-3", -3},
                                         {"\"0.25\"", 0.25},
                                         {"\"\"", -1},
                                         {"1e", 1}}) {
    const Reading reading = Read(kHeader + "X,Z,,,,,1," + c.cell + ",,2,,,3,,,4,,,5,,\n");
    EXPECT_EQ(reading.Failure(), "") << c.cell;
    EXPECT_EQ(reading.results.blocks[0][0].modelStandardError, c.expected) << c.cell;
    EXPECT_EQ(reading.results.blocks[0][0].empiricalStandardError, -1.0) << c.cell;
    EXPECT_EQ(reading.results.blocks[1][0].estimate, 2.0) << c.cell;
  }
}

TEST(CoefficientFileTest, LastRowWithoutItsLineFeedIsLost) {
  const std::string row0 = "X,Z,,,,,1,,,2,,,3,,,4,,,5,,\n";
  const std::string row1 = "X1,Z1,0,1,0,1,1,,,2,,,3,,,4,,,5,,";
  const Reading reading = Read(kHeader + row0 + row1);
  EXPECT_EQ(reading.Failure(), "");
  EXPECT_EQ(Testing::Texts(reading.results.xNames), (std::vector<std::string>{"X"}));
  EXPECT_EQ(Read(kHeader + row0 + row1 + "\n").results.VariableCount(), 2);
}

TEST(CoefficientFileTest, FileWithoutALineIsRefused) {
  for (const std::string text : {"", "Variables Names"}) {
    EXPECT_EQ(Read(text).Failure(), "InvalidArgumentException: Invalid argument") << text;
  }
  const Reading reading = Read(kHeader);
  EXPECT_EQ(reading.Failure(), "");
  EXPECT_EQ(reading.results.VariableCount(), 0);
}

TEST(CoefficientFileTest, HeaderIsSkippedWhateverItSays) {
  const std::string row = "X,Z,,,,,1,,,2,,,3,,,4,,,5,,\n";
  EXPECT_EQ(Read("\n" + row).results.VariableCount(), 1);
  EXPECT_EQ(Read("x\n" + row).results.blocks[4][0].estimate, 5.0);
}

TEST(CoefficientFileTest, RulesOfCsvHold) {
  const std::string row = "X,Z,,,,,1,,,2,,,3,,,4,,,5,,\n";
  EXPECT_EQ(Read(kHeader + "\"X" + row).Failure(), "InvalidCsvFormatException: Invalid CSV format");
  EXPECT_EQ(Read(kHeader + "a\"" + row).Failure(), "InvalidCsvFormatException: Invalid CSV format");
  EXPECT_EQ(Read(kHeader + std::string(1, '\0') + row).Failure(),
            "InvalidInputException: Invalid input string");
}

TEST(CoefficientFileTest, EachFailingAllocationOfAReadEndsInOutOfMemory) {
  const InputStream stream(kHeader + "X,Z,,,,,1,,,2,,,3,,,4,,,5,,\n" +
                           "X1,Z1,0,1,0,1,1,,,2,,,3,,,4,,,5,,\n");
  Testing::ExpectOutOfMemoryAtEachAllocation([&] {
    stream->Seek(0);
    RegressionResults results;
    ReadCoefficientFile(results, *stream);
  });
}

}  // namespace
