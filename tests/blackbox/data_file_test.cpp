// What a data file must be, seen through a prediction run without a coefficient file: a data file
// that is in order is read to its end, and then the coefficient file is missed.

#include <gtest/gtest.h>

#include "progress.h"
#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

// Two variables: the intercept and the columns Z and X.
const std::string kHeader = "Key,Hospital,Y,POA,Z,X\n";
const std::string kFirst = "a,A,1,0,1,1\n";

const std::string kStart = "Reading data file...\n";

struct Row {
  std::string what;
  std::string indicators;
  std::string data;
  std::string progress;
  std::string error;
};

void Expect(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what + ": " + row.data);
    const ScratchFolder folder;
    folder.Write("data.csv", row.data);
    folder.Write("d.xml",
                 Replaced(PredictionText(), "Indicators>1<", "Indicators>" + row.indicators + "<"));
    ExpectError(RunHovar(folder, {"d.xml"}), row.error, row.progress);
  }
}

/// Rows of files that are read to their end.
void ExpectRead(std::vector<Row> rows) {
  for (Row& row : rows) {
    row.error = CannotOpen("coefficients.csv");
  }
  Expect(rows);
}

TEST(DataFileTest, AllLinesHaveEquallyManyFields) {
  const std::string error = "Variable number of fields";
  Expect({
      {"a field less", "1", kHeader + "a,A,1,0,1\n", kStart, error},
      {"a field more", "1", kHeader + kFirst + "b,A,1,0,1,1,\n", kStart, error},
      {"a blank line at the end", "1", kHeader + kFirst + "\n", kStart, error},
      {"a header of its own size", "1", "Key\n" + kFirst, kStart, error},
  });
}

TEST(DataFileTest, FieldsBehindTheIndicatorsComeInPairs) {
  const std::string error = "Wrong number of POA indicators in definition file";
  Expect({
      {"one indicator more", "2", kHeader + kFirst, kStart, error},
      {"one indicator less", "0", kHeader + kFirst, kStart, error},
      {"a negative odd rest", "4", kHeader + kFirst, kStart, error},
      {"the smallest number", "-2147483648", kHeader + kFirst, kStart, error},
      {"one empty field", "1", "\n", kStart, error},
  });
}

TEST(DataFileTest, AFileWithoutItsColumnsIsRejected) {
  Expect({
      // Nothing at all: 0 lines, 0 fields, 0 - 1 - 3 = -4 after the indicator, -4 / 2 + 1 = -1.
      {"empty", "1", "", kStart + SizeLines(-1, -1), "Invalid argument"},
      {"a header without its end", "1", "Key,Hospital,Y,POA", kStart + SizeLines(-1, -1),
       "Invalid argument"},
      {"two fields", "1", "Key,Hospital\n", kStart + SizeLines(0, 0), "Index out of range"},
      {"two fields, three indicators", "3", "Key,Hospital\n", kStart + SizeLines(0, -1),
       "Invalid argument"},
      {"many indicators", "2147483647", kHeader + kFirst, kStart + SizeLines(1, -1073741821),
       "Invalid argument"},
  });
}

TEST(DataFileTest, ANegativeNumberOfIndicatorsIsRejected) {
  const TinyStudy study;
  study.Write("d.xml", Replaced(PredictionText(), "Indicators>1<", "Indicators>-1<"));
  const ProcessResult result = RunHovar(study, {"d.xml"});
  EXPECT_EQ(result.error, "Error: Invalid argument\n");
  EXPECT_EQ(result.exitStatus, 1);
}

TEST(DataFileTest, TheLastRecordEndsWithALineFeed) {
  const std::string error = "Data wrong format";
  Expect({
      {"two records", "1", kHeader + kFirst + "b,A,1,0,1,1",
       ReadingLines(1, 2) + HospitalLine("A", 0, 1), error},
      {"one record", "1", kHeader + "a,A,1,0,1,1", ReadingLines(0, 2), error},
      {"a blank after the end", "1", kHeader + kFirst + " ",
       ReadingLines(1, 2) + HospitalLine("A", 0, 1), error},
  });
}

TEST(DataFileTest, RecordsAreGroupedByHospital) {
  const std::string three = kHeader + "a,A,1,0,1,1\nb,B,1,0,1,1\nc,A,1,0,1,1\n";
  Expect({{"A comes again", "1", three,
           ReadingLines(3, 2) + HospitalLine("A", 0, 3) + HospitalLine("B", 1, 3) +
               HospitalLine("A", 2, 3),
           "Data must be grouped by hospital ID"}});
}

TEST(DataFileTest, HospitalsAreToldApartByTheirExactBytes) {
  ExpectRead(
      {{"like numbers", "1", kHeader + "a,1,1,0,1,1\nb,01,1,0,1,1\nc, 1,1,0,1,1\n",
        ReadingLines(3, 2) + HospitalLine("1", 0, 3) + HospitalLine("01", 1, 3) +
            HospitalLine(" 1", 2, 3) + "Number of hospitals: 3\n" + CountLines(3, 3),
        ""},
       {"quoted or not", "1", kHeader + "a,A,1,0,1,1\nb,\"A\",1,0,1,1\nc,\"a,\"\"b\",1,0,1,1\n",
        ReadingLines(3, 2) + HospitalLine("A", 0, 3) + HospitalLine("a,\"b", 2, 3) +
            "Number of hospitals: 2\n" + CountLines(3, 3),
        ""},
       {"a line feed in quotes", "1", kHeader + "a,\"A\nB\",1,0,1,1\nb,\"A\nB\",0,0,0,0\n",
        ReadingLines(2, 2) + HospitalLine("A\nB", 0, 2) + "Number of hospitals: 1\n" +
            CountLines(2, 2),
        ""},
       {"a carriage return", "0", "Key,Hospital,Y\r\na,A\r,1\r\nb,A,0\r\n",
        ReadingLines(2, 1) + HospitalLine("A\r", 0, 2) + HospitalLine("A", 1, 2) +
            "Number of hospitals: 2\n" + CountLines(2, 2),
        ""},
       {"an empty one", "1", kHeader + "a,,1,0,1,1\n",
        ReadingLines(1, 2) + HospitalLine("", 0, 1) + "Number of hospitals: 1\n" + CountLines(1, 1),
        ""}});
}

TEST(DataFileTest, CellsHoldZeroOrOne) {
  const std::string reading = ReadingLines(2, 2) + HospitalLine("A", 0, 2);
  std::vector<Row> rows;
  for (const char* number : {"2", "-1", "10", "4294967298"}) {
    for (const char* record :
         {"b,A,#,0,1,1\n", "b,A,1,#,1,1\n", "b,A,1,0,#,1\n", "b,A,1,0,1,#\n"}) {
      rows.push_back({"number", "1", kHeader + kFirst + Replaced(record, "#", number), reading,
                      "Invalid input"});
    }
  }
  for (const char* text : {"x", "-", "NA", "."}) {
    for (const char* record :
         {"b,A,#,0,1,1\n", "b,A,1,#,1,1\n", "b,A,1,0,#,1\n", "b,A,1,0,1,#\n"}) {
      rows.push_back(
          {"text", "1", kHeader + kFirst + Replaced(record, "#", text), reading, "IO Exception"});
    }
  }
  Expect(rows);
}

TEST(DataFileTest, OutcomeAndZAreNeverMissing) {
  const std::string reading = ReadingLines(2, 2) + HospitalLine("A", 0, 2);
  Expect({
      {"Y", "1", kHeader + kFirst + "b,A,,0,1,1\n", reading, "IO Exception"},
      {"a blank Y", "1", kHeader + kFirst + "b,A, ,0,1,1\n", reading, "IO Exception"},
      {"Z", "1", kHeader + kFirst + "b,A,1,0,,1\n", reading, "IO Exception"},
      // A number may stand after white space, line feeds included, so the search for Y goes on in
      // the next line: to its key, or to the end of the file.
      {"Y before a key", "0", "Key,Hospital,Y\na,A,\nb,A,1\n",
       ReadingLines(2, 1) + HospitalLine("A", 0, 2), "IO Exception"},
      {"Y at the end", "0", "Key,Hospital,Y\na,A,1\nb,A,\n",
       ReadingLines(2, 1) + HospitalLine("A", 0, 2), "Unexpected end of stream"},
      {"a line of two commas", "0", "Key,Hospital,Y\n,,\n",
       ReadingLines(1, 1) + HospitalLine("", 0, 1), "Unexpected end of stream"},
      {"Y before a key that is a number", "0", "Key,Hospital,Y\na,A,\n1,A,1\n",
       ReadingLines(2, 1) + HospitalLine("A", 0, 2) + HospitalLine("1", 1, 2),
       "Unexpected end of stream"},
  });
}

TEST(DataFileTest, EmptyIndicatorsAndXCellsAreMissing) {
  const auto read = [](int complete, int completeP0) {
    return ReadingLines(3, 2) + HospitalLine("A", 0, 3) + "Number of hospitals: 1\n" +
           CountLines(complete, completeP0);
  };
  const std::string second = kHeader + kFirst + "b,A,1,1,0,1\n";
  ExpectRead({
      {"nothing missing", "1", second + "c,A,1,0,1,1\n", read(3, 2), ""},
      {"P", "1", second + "c,A,1,,1,1\n", read(2, 1), ""},
      {"X", "1", second + "c,A,1,0,1,\n", read(2, 1), ""},
      {"blanks and tabs", "1", second + "c,A,1, \t,1, \t \n", read(2, 1), ""},
      {"before a carriage return", "1", second + "c,A,1,0,1,\r\n", read(2, 1), ""},
  });
}

// Blanks and tabs are an empty cell; other white space is searched for a number, line feeds
// included.
TEST(DataFileTest, OtherWhiteSpaceIsNoEmptyCell) {
  const std::string reading = ReadingLines(1, 2) + HospitalLine("A", 0, 1);
  Expect({
      {"POA", "1", kHeader + "a,A,1,\f,1,1\n", reading, "IO Exception"},
      {"X", "1", kHeader + "a,A,1,0,1,\f\n", reading, "Unexpected end of stream"},
      {"X before a carriage return alone", "1", kHeader + "a,A,1,0,1,\r", ReadingLines(0, 2),
       "Data wrong format"},
  });
}

// Numbers are clamped to 64 bits, of which the low 32 count.
TEST(DataFileTest, CellsBeyond32BitsAreTakenByTheirLowBits) {
  ExpectRead({{"2^32 + 1 and 2^32", "1", kHeader + "a,A,4294967297,4294967296,4294967297,1\n",
               ReadingLines(1, 2) + HospitalLine("A", 0, 1) + "Number of hospitals: 1\n" +
                   CountLines(1, 1),
               ""}});
  Expect({{"clamped to 2^63 - 1", "1", kHeader + "a,A,99999999999999999999,0,1,1\n",
           ReadingLines(1, 2) + HospitalLine("A", 0, 1), "Invalid input"}});
}

TEST(DataFileTest, WhatFollowsANumberInItsCellIsPassedOver) {
  ExpectRead({{"text after numbers", "1", kHeader + "a,A,1 yes,0\t,1.5,1abc\n",
               ReadingLines(1, 2) + HospitalLine("A", 0, 1) + "Number of hospitals: 1\n" +
                   CountLines(1, 1),
               ""},
              {"carriage returns", "1", "Key,Hospital,Y,POA,Z,X\r\na,A,1,0,1,1\r\nb,A,1,0,0,0\r\n",
               ReadingLines(2, 2) + HospitalLine("A", 0, 2) + "Number of hospitals: 1\n" +
                   CountLines(2, 2),
               ""}});
}

TEST(DataFileTest, AConditionPresentWithoutTheOutcomeIsSetToZero) {
  const std::string header = "Key,Hospital,Y,P1,P2\n";
  ExpectRead({
      {"one of two indicators", "2", header + "a,A,1,1,0\nb,A,0,0,1\nc,A,0,1,1\nd,A,0,0,0\n",
       ReadingLines(4, 1) + HospitalLine("A", 0, 4) + "Number of hospitals: 1\n" +
           "Warning: Y == 0 && P == 1 data in record: 1 - setting P equal to 0\n" +
           "Warning: Y == 0 && P == 1 data in record: 2 - setting P equal to 0\n" +
           CountLines(4, 3),
       ""},
      // With one indicator missing P is missing, and nothing is corrected.
      {"the other indicator missing", "2", header + "a,A,0,1,\nb,A,1,,1\nc,A,0,,0\n",
       ReadingLines(3, 1) + HospitalLine("A", 0, 3) + "Number of hospitals: 1\n" + CountLines(0, 0),
       ""},
  });
}

TEST(DataFileTest, WithoutIndicatorsNothingIsPresentOnAdmission) {
  ExpectRead({{"no indicators", "0", "Key,Hospital,Y\na,A,1\nb,A,0\n",
               ReadingLines(2, 1) + HospitalLine("A", 0, 2) + "Number of hospitals: 1\n" +
                   CountLines(2, 2),
               ""}});
}

TEST(DataFileTest, AHeaderAloneIsAFileWithoutRecords) {
  ExpectRead({{"no records", "1", kHeader,
               ReadingLines(0, 2) + "Number of hospitals: 0\n" + CountLines(0, 0), ""}});
}

TEST(DataFileTest, QuotesFollowTheirRules) {
  const std::string error = "Invalid CSV format";
  Expect({
      {"within a field", "1", kHeader + "a\"b,A,1,0,1,1\n", kStart, error},
      {"never closed", "1", kHeader + "\"a,A,1,0,1,1\n", kStart, error},
      {"text after quotes", "1", kHeader + "\"a\"x,A,1,0,1,1\n", kStart, error},
      {"in the header", "1", "Ke\"y,Hospital,Y,POA,Z,X\n", kStart, error},
      // Fields that are skipped end at the next comma, quoted or not.
      {"a comma in a key", "1", kHeader + "\"a,b\",A,1,0,1,1\n", ReadingLines(1, 2), error},
  });
}

TEST(DataFileTest, ANulByteIsRejected) {
  Expect({{"in a key", "1", kHeader + std::string("a\0,A,1,0,1,1\n", 13), kStart,
           "Invalid input string"},
          {"in a quoted name", "1", std::string("Key,Hospital,Y,POA,\"Z\0\",X\n", 26), kStart,
           "Invalid input string"}});
}

}  // namespace
}  // namespace Testing
