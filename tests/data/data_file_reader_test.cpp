#include "data/data_file_reader.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include "foundation/memory.h"
#include "support/allocation_fault.h"
#include "support/data_sets.h"
#include "support/outcome.h"
#include "support/streams.h"

namespace {

using Hovar::DataSet;
using Testing::Describe;
using Testing::InputStream;
using Testing::Observe;
using Testing::Outcome;
using Testing::Texts;

struct Reading : Outcome {
  DataSet data;
};

Reading Read(const std::string& text, std::int32_t poaCount) {
  const InputStream stream(text);
  Reading reading;
  static_cast<Outcome&>(reading) = Observe([&] { ReadDataFile(reading.data, *stream, poaCount); });
  return reading;
}

/// The cells that were read, or how reading failed.
std::string CellsOrFailure(const std::string& text, std::int32_t poaCount) {
  const Reading reading = Read(text, poaCount);
  return reading.Failure().empty() ? Describe(reading.data) : reading.Failure();
}

struct FileCase {
  std::string text;
  std::int32_t poaCount;
  std::string expected;  // cells or failure
};

void ExpectEach(const std::vector<FileCase>& cases) {
  for (const FileCase& c : cases) {
    SCOPED_TRACE("poaCount " + std::to_string(c.poaCount) + ", file:\n" + c.text);
    EXPECT_EQ(CellsOrFailure(c.text, c.poaCount), c.expected);
  }
}

/// Cells for one place of a record and what is expected to be read.
struct CellCase {
  std::string cell;
  std::string expected;  // one character of the record, or a failure
};

/// Puts every cell between `before` and `after` and expects that the record is `recordBefore`, the
/// expected character, `recordAfter`.
void ExpectEachCell(const std::vector<CellCase>& cases, std::int32_t poaCount,
                    const std::string& before, const std::string& after,
                    const std::string& recordBefore, const std::string& recordAfter) {
  for (const CellCase& c : cases) {
    SCOPED_TRACE("cell <" + c.cell + "> in " + before + "<>" + after);
    const std::string expected =
        c.expected.size() == 1 ? recordBefore + c.expected + recordAfter + "\n" : c.expected;
    EXPECT_EQ(CellsOrFailure(before + c.cell + after, poaCount), expected);
  }
}

const std::string kInvalidInput = "InvalidInputException: Invalid input";
const std::string kIOError = "IOException: IO Exception";
const std::string kEndOfStream = "EndOfStreamException: Unexpected end of stream";
const std::string kInvalidArgument = "InvalidArgumentException: Invalid argument";
const std::string kWrongPoaCount = "Exception: Wrong number of POA indicators in definition file";
const std::string kInvalidCsv = "InvalidCsvFormatException: Invalid CSV format";

/// Cells that hold a number, wherever they stand.
const std::vector<CellCase> kNumberCells = {
    {"0", "0"},
    {"1", "1"},
    // Blanks and tabs before the number; whatever follows its last digit is read past.
    {" 1", "1"},
    {"\t \t1", "1"},
    {"1 ", "1"},
    {"1x", "1"},
    {"0.9", "0"},
    {"1.0", "1"},
    {"1 0", "1"},
    {"1e5", "1"},
    {"0x1", "0"},
    // Other spellings of 0 and 1.
    {"01", "1"},
    {"+1", "1"},
    {"-0", "0"},
    {"+00", "0"},
    // A carriage return is white space before a number.
    {"\r1", "1"},
    // Integers are cut to 64 bits at the ends of their range and then to the low 32 bits:
    // 2^32, 2^32 + 1, -(2^32 - 1); below -2^63 they become -2^63.
    {"4294967296", "0"},
    {"4294967297", "1"},
    {"-4294967295", "1"},
    {"-99999999999999999999", "0"},
    // Numbers that are not 0 or 1, 2^32 + 2 and 2^63 - 1 (low bits -1) among them.
    {"2", kInvalidInput},
    {"-1", kInvalidInput},
    {"10", kInvalidInput},
    {"4294967298", kInvalidInput},
    {"2147483648", kInvalidInput},
    {"99999999999999999999", kInvalidInput},
    // No number.
    {"x", kIOError},
    {".", kIOError},
    {"+", kIOError},
    {"- 1", kIOError},
    {"--1", kIOError},
    {"nan", kIOError},
    // Quotes are for names and IDs only.
    {"\"1\"", kIOError},
    {"\"0,1\"", kIOError},
    {"1\"", kInvalidCsv},
    // A zero byte is never text.
    {std::string("1\0", 2), "InvalidInputException: Invalid input string"},
};

const std::vector<CellCase> kEmptyCells = {{"", "."}, {" ", "."}, {"\t", "."}, {" \t \t", "."}};

TEST(DataFileReaderTest, XCellIsZeroOneOrMissing) {
  const std::string header = "k,h,Y,Z,X\n";
  for (const auto& cases : {kNumberCells, kEmptyCells}) {
    ExpectEachCell(cases, 0, header + "1,A,1,0,", "\n", "A 1 0 0 ", "");
    // Not the last cell of its line.
    ExpectEachCell(cases, 0, "k,h,Y,Z1,Z2,X1,X2\n1,A,1,0,1,", ",1\n", "A 1 0 01 ", "1");
  }
}

TEST(DataFileReaderTest, IndicatorCellIsZeroOneOrMissing) {
  for (const auto& cases : {kNumberCells, kEmptyCells}) {
    ExpectEachCell(cases, 1, "k,h,Y,P\n1,A,1,", "\n", "A 1 ", " - -");
    ExpectEachCell(cases, 1, "k,h,Y,P,Z,X\n1,A,1,", ",0,1\n", "A 1 ", " 0 1");
  }
}

TEST(DataFileReaderTest, OutcomeIsZeroOrOne) {
  ExpectEachCell(kNumberCells, 0, "k,h,Y,Z,X\n1,A,", ",0,1\n", "A ", " 0 0 1");
  ExpectEachCell(kNumberCells, 0, "k,h,Y\n1,A,", "\n", "A ", " 0 - -");
  const std::vector<CellCase> empty = {{"", kIOError}, {" ", kIOError}, {"\t", kIOError}};
  ExpectEachCell(empty, 0, "k,h,Y,Z,X\n1,A,", ",0,1\n", "", "");
}

TEST(DataFileReaderTest, ZCellIsZeroOrOne) {
  ExpectEachCell(kNumberCells, 0, "k,h,Y,Z,X\n1,A,1,", ",1\n", "A 1 0 ", " 1");
  const std::vector<CellCase> empty = {{"", kIOError}, {" ", kIOError}, {"\t", kIOError}};
  ExpectEachCell(empty, 0, "k,h,Y,Z,X\n1,A,1,", ",1\n", "", "");
}

TEST(DataFileReaderTest, CellBeforeCarriageReturnAndLineFeedIsReadAsWithoutIt) {
  ExpectEach({
      // X
      {"k,h,Y,Z,X\r\n1,A,1,0,1\r\n2,A,0,1,0\r\n", 0, "A 1 0 0 1\nA 0 0 1 0\n"},
      {"k,h,Y,Z,X\r\n1,A,1,0,\r\n2,A,0,1,1\r\n", 0, "A 1 0 0 .\nA 0 0 1 1\n"},
      {"k,h,Y,Z,X\r\n1,A,1,0, \t\r\n", 0, "A 1 0 0 .\n"},
      // indicator
      {"k,h,Y,P\r\n1,A,1,1\r\n2,A,0,0\r\n", 1, "A 1 1 - -\nA 0 0 - -\n"},
      {"k,h,Y,P\r\n1,A,1,\r\n2,A,0, \r\n", 1, "A 1 . - -\nA 0 . - -\n"},
      // outcome
      {"k,h,Y\r\n1,A,1\r\n", 0, "A 1 0 - -\n"},
      // A carriage return that no line feed follows is not the end of a line.
      {"k,h,Y,Z1,Z2,X1,X2\n1,A,1,0,0,\r,1\n", 0, kIOError},
  });
}

// Before a number all white space is skipped, line feeds included, so a number that is missing at
// the end of a line is taken from the next one.
TEST(DataFileReaderTest, NumberMayStandOnTheNextLine) {
  ExpectEach({
      // Nothing follows.
      {"k,h,Y\n1,A,\n", 0, kEndOfStream},
      {"k,h,Y\n1,A, \t\n", 0, kEndOfStream},
      // The key 1 of the second record serves as the first outcome; the second record then starts
      // at its hospital and runs out of cells.
      {"k,h,Y\n1,A,\n1,A,0\n", 0, kEndOfStream},
      {"k,h,Y\n1,A,\n7,A,0\n", 0, kInvalidInput},
      {"k,h,Y\n1,A,\nx,A,0\n", 0, kIOError},
      // A form feed is no blank, so the cell is not missing: its number is the key of the second
      // record, whose indicator then is the end of the file.
      {"k,h,Y,P\n1,A,1,\f\n1,B,C,1\n", 1, "A 1 1 - -\nC 1 . - -\n"},
  });
}

TEST(DataFileReaderTest, FieldsStandInTheirOrder) {
  ExpectEach({
      {"k,h,Y\n1,A,0\n2,A,1\n", 0, "A 0 0 - -\nA 1 0 - -\n"},
      {"k,h,Y,P\n1,A,1,1\n", 1, "A 1 1 - -\n"},
      {"k,h,Y,P1,P2,Z1,Z2,Z3,X1,X2,X3\n1,A,1,0,0,1,0,0,0,0,1\n2,B,0,0,0,0,1,1,1,,0\n", 2,
       "A 1 0 100 001\nB 0 0 011 1.0\n"},
      // The same fields without indicators are four covariates.
      {"k,h,Y,Z1,Z2,Z3,Z4,X1,X2,X3,X4\n1,A,1,0,0,1,0,0,0,0,1\n", 0, "A 1 0 0010 0001\n"},
  });
}

TEST(DataFileReaderTest, InterceptIsOneInZAndX) {
  const DataSet data = Read("k,h,Y,Z,X\n1,A,0,0,\n2,A,0,0,\n", 0).data;
  ASSERT_EQ(data.variableCount, 2);
  for (const std::int32_t i : {0, 1}) {
    EXPECT_TRUE(data.z.Get(i, 0));
    EXPECT_TRUE(data.x.Value(i, 0));
    EXPECT_FALSE(data.x.IsMissing(i, 0));
  }
}

TEST(DataFileReaderTest, IndicatorsAreCombinedByOrOfValuesAndOfMissingMarks) {
  const std::string before = "k,h,Y,P1,P2\n1,A,1,";
  for (const auto& [cells, expected] : std::vector<std::pair<std::string, std::string>>{
           {"0,0", "0"},
           {"0,1", "1"},
           {"1,0", "1"},
           {"1,1", "1"},
           {",", "."},
           {"0,", "."},
           {",0", "."},
           // One indicator says that the condition was present, another is missing: the cell
           // is missing and its value bit is set.
           {"1,", "*"},
           {",1", "*"},
       }) {
    EXPECT_EQ(CellsOrFailure(before + cells + "\n", 2), "A 1 " + expected + " - -\n") << cells;
  }
}

TEST(DataFileReaderTest, IndicatorsOfARecordOweNothingToTheRecordBefore) {
  EXPECT_EQ(CellsOrFailure("k,h,Y,P1,P2\n1,A,1,1,1\n2,A,1,,0\n3,A,1,,\n4,A,1,0,0\n", 2),
            "A 1 1 - -\nA 1 . - -\nA 1 . - -\nA 1 0 - -\n");
}

TEST(DataFileReaderTest, NamesComeFromTheHeader) {
  const DataSet data = Read("k,h,Y,P,age,\"a,b\",\"say \"\"x\"\"\",, X2 ,X\r\n", 1).data;
  EXPECT_EQ(Texts(data.zNames),
            (std::vector<std::string>{"ZIntercept", "age", "a,b", "say \"x\""}));
  // The carriage return before the line feed belongs to the last name.
  EXPECT_EQ(Texts(data.xNames), (std::vector<std::string>{"XIntercept", "", " X2 ", "X\r"}));
}

TEST(DataFileReaderTest, NameMayHoldALineFeedInQuotes) {
  const DataSet data = Read("k,h,Y,\"z\n1\",x\n1,A,1,0,1\n", 0).data;
  EXPECT_EQ(Texts(data.zNames)[1], "z\n1");
  EXPECT_EQ(Describe(data), "A 1 0 0 1\n");
}

TEST(DataFileReaderTest, HospitalIdIsTextInItsExactBytes) {
  ExpectEach({
      // Quotes are not part of the ID, so the two records share a hospital.
      {"k,h,Y\n1,\"A\",0\n2,A,0\n", 0, "A 0 0 - -\nA 0 0 - -\n"},
      {"k,h,Y\n1,\"A,B\",0\n", 0, "A,B 0 0 - -\n"},
      {"k,h,Y\n1,\"A\"\"B\",0\n", 0, "A\"B 0 0 - -\n"},
      {"k,h,Y\n1,\"A\nB\",1\n", 0, "A\nB 1 0 - -\n"},
      {"k,h,Y\n1,A\r,1\n", 0, "A\r 1 0 - -\n"},
      {"k,h,Y\n1, A ,1\n", 0, " A  1 0 - -\n"},
      {"k,h,Y\n1,,1\n", 0, " 1 0 - -\n"},
  });
  const DataSet data = Read("k,h,Y\n1,01,0\n2,1,0\n3,1 ,0\n4,a,0\n5,A,0\n6,,0\n", 0).data;
  EXPECT_EQ(data.hospitalCount, 6) << "each ID is a hospital of its own";
}

// The record key is read past without a look at quotes, though the first pass respects them.
TEST(DataFileReaderTest, KeyInQuotesMustNotHoldAComma) {
  ExpectEach({
      {"k,h,Y\n\"1\",A,1\n", 0, "A 1 0 - -\n"},
      {"k,h,Y\n,A,1\n", 0, "A 1 0 - -\n"},
      {"k,h,Y\n\"1,2\",A,1\n", 0, kInvalidCsv},
  });
}

TEST(DataFileReaderTest, WrongShapesAreRefused) {
  const std::string variable = "Exception: Variable number of fields";
  const std::string wrongFormat = "Exception: Data wrong format";
  ExpectEach({
      {"k,h,Y\n1,A,1,0\n", 0, variable},
      {"k,h,Y,P\n1,A,1\n", 1, variable},
      // A blank line at the end is a line of one field.
      {"k,h,Y\n1,A,1\n\n", 0, variable},
      {"\nk,h,Y\n1,A,1\n", 0, variable},
      // Without the last line feed the last record is not counted, so bytes are left over.
      {"k,h,Y\n1,A,1\n2,A,0", 0, wrongFormat},
      {"k,h,Y\n1,A,1", 0, wrongFormat},
      {"k,h,Y\n1,A,1\n ", 0, wrongFormat},
      {"k,h,Y\n1,A,1\n,,,,", 0, wrongFormat},
      {"k,h,Y\n1,A,1\n\r", 0, wrongFormat},
      // What the two halves of an odd number of cells could be is not known.
      {"k,h,Y\n1,A,1\n", 1, kWrongPoaCount},
      {"k,h,Y,Z\n1,A,1,0\n", 0, kWrongPoaCount},
      {"k,h,Y,P,Z,X\n1,A,1,0,0,0\n", 0, kWrongPoaCount},
      {"k,h,Y,P,Z,X\n1,A,1,0,0,0\n", 4, kWrongPoaCount},
      {"k,h,Y\n", INT_MAX, kWrongPoaCount},
      // Fewer fields than the indicators ask for, by two and by four.
      {"k,h,Y,P\n1,A,1,0\n", 3, "InvalidArgumentException: Index out of range"},
      {"k\n1\n", 0, "InvalidArgumentException: Index out of range"},
      {"k,h,Y\n1,A,1\n", 4, kInvalidArgument},
      {"k,h,Y\n1,A,1\n", INT_MAX - 1, kInvalidArgument},
      // A count of indicators below 0.
      {"k,h,Y,Z,X\n1,A,1,0,1\n", -2, kInvalidArgument},
      {"k,h,Y\n1,A,1\n", -1, kWrongPoaCount},
      // The CSV rules.
      {"k,h,Y\n1,A\"B\",1\n", 0, kInvalidCsv},
      {"k,h,Y\n1,\"A\"B,1\n", 0, kInvalidCsv},
      {"k,h,Y\n1,\"A,1\n", 0, kInvalidCsv},
      {std::string("k,h,Y\n1,A\0,1\n", 13), 0, "InvalidInputException: Invalid input string"},
  });
}

// A count below 0 stands for as many more variables: 10,000,002 here, with bits for one record but
// without names.
TEST(DataFileReaderTest, NegativeCountOfIndicatorsNeedsNoMemoryForNames) {
  Vell::SetAllocationFunction([](std::size_t bytes) noexcept -> void* {
    return bytes > (std::size_t{1} << 25) ? nullptr : std::calloc(1, bytes);
  });
  const Reading reading = Read("k,h,Y,P\n1,A,1,0\n", -20'000'001);
  Vell::SetAllocationFunction(nullptr);
  EXPECT_EQ(reading.Failure(), "InvalidArgumentException: Invalid argument");
  EXPECT_EQ(reading.output,
            "Reading data file...\nNumber of records: 1\nNumber of variables: 10000002\n"
            "Reading data...\n");
}

TEST(DataFileReaderTest, EmptyFileEndsByTheRulesOfItsSizes) {
  // 0 fields and 0 lines: -1 records; -3 - poaCount cells for the covariates.
  ExpectEach({
      {"", 0, kWrongPoaCount},
      {"", 1, kInvalidArgument},  // -1 variables
      {"", 2, kWrongPoaCount},
      {"", -1, kInvalidArgument},  // 0 variables
      {"", -2, kWrongPoaCount},
      {"", -3, kInvalidArgument},  // 1 variable
      // A header that does not end is no line either.
      {"k,h,Y", 1, kInvalidArgument},
  });
  EXPECT_EQ(Read("", 1).log, "Number of records: -1\nNumber of variables: -1\n");
  EXPECT_EQ(Read("", -1).log, "Number of records: -1\nNumber of variables: 0\n");
  EXPECT_EQ(Read("", 0).log, "");
  EXPECT_EQ(Read("", 0).output, "Reading data file...\n");
}

TEST(DataFileReaderTest, HeaderAloneIsADataSetWithoutRecords) {
  const Reading reading = Read("k,h,Y,Z,X\n", 0);
  EXPECT_EQ(reading.Failure(), "");
  EXPECT_EQ(reading.output,
            "Reading data file...\n"
            "Number of records: 0\n"
            "Number of variables: 2\n"
            "Reading data...\n"
            "Number of hospitals: 0\n"
            "Counting non missing records:\n"
            "Number of non-missing records: 0\n"
            "Number of non-missing records with P = 0: 0\n");
  ASSERT_EQ(reading.data.hospitalStart.Size(), 1);
  EXPECT_EQ(reading.data.hospitalStart[0], 0);
}

TEST(DataFileReaderTest, ProgressGoesToStandardOutputAndCountsToTheLog) {
  const Reading reading = Read(
      "k,h,Y,P,Z,X\n"
      "1,A,1,1,0,1\n"
      "2,A,0,1,1,0\n"
      "3,\"B,b\",0,0,0,\n"
      "4,\"B,b\",1,0,1,1\n"
      "5,C,0,1,0,0\n",
      1);
  EXPECT_EQ(reading.Failure(), "");
  EXPECT_EQ(reading.output,
            "Reading data file...\n"
            "Number of records: 5\n"
            "Number of variables: 2\n"
            "Reading data...\n"
            "Hospital: A record: 0 / 5\n"
            "Hospital: B,b record: 2 / 5\n"
            "Hospital: C record: 4 / 5\n"
            "Number of hospitals: 3\n"
            "Warning: Y == 0 && P == 1 data in record: 1 - setting P equal to 0\n"
            "Warning: Y == 0 && P == 1 data in record: 4 - setting P equal to 0\n"
            "Counting non missing records:\n"
            "Number of non-missing records: 4\n"
            "Number of non-missing records with P = 0: 3\n");
  EXPECT_EQ(reading.log,
            "Number of records: 5\n"
            "Number of variables: 2\n"
            "Number of hospitals: 3\n"
            "Warning: Y == 0 && P == 1 data in record: 1 - setting P equal to 0\n"
            "Warning: Y == 0 && P == 1 data in record: 4 - setting P equal to 0\n"
            "Counting non missing records:\n"
            "Number of non-missing records: 4\n"
            "Number of non-missing records with P = 0: 3\n");
}

TEST(DataFileReaderTest, PresentOnAdmissionWithoutTheOutcomeBecomesZero) {
  const std::string header = "k,h,Y,P1,P2\n";
  const std::string warning =
      "Warning: Y == 0 && P == 1 data in record: 0 - setting P equal to 0\n";
  struct Case {
    std::string cells;  // Y, P1, P2
    std::string expected;
    bool isWarned;
  };
  for (const Case& c : std::vector<Case>{
           {"0,1,1", "A 0 0 - -\n", true},
           {"0,0,1", "A 0 0 - -\n", true},
           {"0,0,0", "A 0 0 - -\n", false},
           {"1,1,1", "A 1 1 - -\n", false},
           // P is missing and left alone, value bit and all.
           {"0,1,", "A 0 * - -\n", false},
           {"0,,", "A 0 . - -\n", false},
       }) {
    const Reading reading = Read(header + "1,A," + c.cells + "\n", 2);
    EXPECT_EQ(Describe(reading.data), c.expected) << c.cells;
    EXPECT_EQ(reading.log.find(warning) != std::string::npos, c.isWarned) << c.cells;
    EXPECT_EQ(reading.data.contradictionCount, c.isWarned ? 1 : 0) << c.cells;
  }
}

TEST(DataFileReaderTest, HospitalThatReappearsIsRefused) {
  const Reading reading = Read("k,h,Y,P\n1,A,0,1\n2,B,0,0\n3,A,0,0\n", 1);
  EXPECT_EQ(reading.Failure(), "Exception: Data must be grouped by hospital ID");
  // Found after all records were read, before anything is said about them.
  EXPECT_EQ(reading.output,
            "Reading data file...\n"
            "Number of records: 3\n"
            "Number of variables: 1\n"
            "Reading data...\n"
            "Hospital: A record: 0 / 3\n"
            "Hospital: B record: 1 / 3\n"
            "Hospital: A record: 2 / 3\n");
  ExpectEach({
      {"k,h,Y\n1,1,0\n2,01,0\n3,1,0\n", 0, "Exception: Data must be grouped by hospital ID"},
      {"k,h,Y\n1,,0\n2,B,0\n3,,0\n", 0, "Exception: Data must be grouped by hospital ID"},
      {"k,h,Y\n1,B,0\n2,\xC3\xA9,0\n3,A,0\n4,B,0\n", 0,
       "Exception: Data must be grouped by hospital ID"},
      // Bytes after the last record are noticed first.
      {"k,h,Y\n1,A,0\n2,B,0\n3,A,0\nx", 0, "Exception: Data wrong format"},
  });
}

TEST(DataFileReaderTest, RecordsAreCountedPerHospital) {
  const DataSet data = Read(
                           "k,h,Y,P,Z,X\n"
                           "1,A,1,1,0,1\n"
                           "2,A,1,,1,0\n"
                           "3,B,0,0,0,1\n"
                           "4,B,1,1,0,1\n"
                           "5,B,1,0,0,1\n"
                           "6,C,1,0,0,\n",
                           1)
                           .data;
  EXPECT_EQ(data.hospitalCount, 3);
  EXPECT_EQ(data.recordCount, 6);
  EXPECT_EQ(data.completeCount, 4);
  EXPECT_EQ(data.completeP0Count, 2);
  using Counts = std::vector<std::int32_t>;
  const auto counts = [](const Vell::IndexVector& v) { return Counts(v.begin(), v.end()); };
  EXPECT_EQ(counts(data.hospitalStart), (Counts{0, 2, 5, 6}));
  EXPECT_EQ(counts(data.hospitalSize), (Counts{2, 3, 1}));
  EXPECT_EQ(counts(data.recordHospital), (Counts{0, 0, 1, 1, 1, 2}));
  EXPECT_EQ(counts(data.hospitalComplete), (Counts{1, 3, 0}));
  EXPECT_EQ(counts(data.hospitalCompleteP0), (Counts{0, 2, 0}));
  EXPECT_TRUE(data.hospitalHasMissing.Get(0));
  EXPECT_FALSE(data.hospitalHasMissing.Get(1));
  EXPECT_TRUE(data.hospitalHasMissing.Get(2));
}

TEST(DataFileReaderTest, MoreThanTenThousandHospitals) {
  constexpr std::int32_t kHospitals = 10'003;
  std::string text = "k,h,Y\n";
  for (std::int32_t h = 0; h < kHospitals; ++h) {
    const std::string hospital = std::to_string(h);
    text += "a," + hospital + ",0\nb," + hospital + ",1\n";
  }
  const Reading reading = Read(text, 0);
  ASSERT_EQ(reading.Failure(), "");
  const DataSet& data = reading.data;
  ASSERT_EQ(data.hospitalCount, kHospitals);
  ASSERT_EQ(data.hospitalIds.Size(), kHospitals);
  ASSERT_EQ(data.hospitalStart.Size(), kHospitals + 1);
  for (std::int32_t h = 0; h < kHospitals; ++h) {
    ASSERT_EQ(data.hospitalIds[h].View(), std::to_string(h));
    ASSERT_EQ(data.hospitalStart[h], 2 * h);
    ASSERT_EQ(data.hospitalSize[h], 2);
  }
  EXPECT_EQ(data.hospitalStart[kHospitals], 2 * kHospitals);
  EXPECT_NE(reading.output.find("\nHospital: 10002 record: 20004 / 20006\n"), std::string::npos);
}

// Rows of every width up to beyond a machine word, so that cells fall on every place of a byte and
// of a word, and files longer than any block that a stream reads at once.
TEST(DataFileReaderTest, CellsOfAllWidthsComeBack) {
  for (std::int32_t columns = 1; columns <= 70; columns += columns < 20 ? 1 : 7) {
    SCOPED_TRACE(columns);
    std::string text = "k,h,Y,P";
    for (std::int32_t j = 0; j < 2 * columns; ++j) {
      text += ",c" + std::to_string(j);
    }
    text += "\n";
    std::string expected;
    std::uint32_t state = 12345;
    const auto next = [&state](std::uint32_t limit) {
      state = state * 1664525 + 1013904223;
      return (state >> 16) % limit;
    };
    for (std::int32_t i = 0; i < 9; ++i) {
      std::string z;
      std::string x;
      std::string cells;
      for (std::int32_t j = 0; j < columns; ++j) {
        z += "01"[next(2)];
        cells += std::string(",") + z.back();
      }
      for (std::int32_t j = 0; j < columns; ++j) {
        x += "01."[next(3)];
        cells += "," + (x.back() == '.' ? "" : std::string(1, x.back()));
      }
      const char p = "01."[next(3)];
      text += "key,A,1," + (p == '.' ? "" : std::string(1, p)) + cells + "\n";
      expected += std::string("A 1 ") + p + " " + z + " " + x + "\n";
    }
    EXPECT_EQ(CellsOrFailure(text, 1), expected);
  }
}

TEST(DataFileReaderTest, LinesAcrossTheBlocksOfAStreamAreRead) {
  std::string text = "k,h,Y,Z,X\n";
  std::string expected;
  for (std::int32_t i = 0; i < 20'000; ++i) {
    // Lengths vary, so that every kind of byte comes to stand on a block's end.
    const std::string y = std::to_string(i % 3 == 0 ? 1 : 0);
    const std::string x = i % 5 == 0 ? "" : std::to_string(i % 2);
    text += std::string(static_cast<std::size_t>(i % 7), 'k') + ",H," + y + ",1," + x + "\n";
    expected += "H " + y + " 0 1 " + (x.empty() ? "." : x) + "\n";
  }
  EXPECT_TRUE(CellsOrFailure(text, 0) == expected);
}

TEST(DataFileReaderTest, EachFailingAllocationEndsInOutOfMemory) {
  const InputStream stream("k,h,Y,P,\"Z,1\",X\n1,A,1,1,0,1\n2,A,0,1,1,0\n3,\"B,b\",0,0,0,\n");
  Testing::ExpectOutOfMemoryAtEachAllocation([&] {
    stream->Seek(0);
    DataSet data;
    ReadDataFile(data, *stream, 1);
  });
}

}  // namespace
