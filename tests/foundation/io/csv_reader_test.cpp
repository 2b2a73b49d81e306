#include "foundation/io/csv_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "foundation/exceptions/exceptions.h"
#include "support/all_texts.h"
#include "support/allocation_fault.h"
#include "support/memory_stream.h"
#include "support/raised.h"
#include "support/streams.h"

namespace {

using Testing::ExpectRaises;
using Testing::ForAllTexts;
using Testing::InputStream;
using Testing::MemoryStream;
using Testing::Quoted;
using Vell::String;
using Vell::Exceptions::InvalidCsvFormatException;
using Vell::Exceptions::InvalidInputException;
using Vell::IO::CsvShape;
using Vell::IO::kEndOfStream;
using Vell::IO::MeasureCsv;
using Vell::IO::ReadField;
using Vell::IO::ReadRealField;
using Vell::IO::SkipField;
using Vell::IO::SkipLine;
using Vell::IO::SkipRecord;

const std::string kNastyAlphabet("a,\"\n\r\0 ", 7);

/// A text cut into records by the dialect's rules; what is wrong with it, if anything, and where
/// the reading got to then.
struct Parsed {
  enum class Fault { kNone, kFormat, kNul };

  std::vector<std::vector<std::string>> records;
  std::vector<std::size_t> recordEnds;  // offset after the line feed of each
  Fault fault = Fault::kNone;
};

/// The rules once more, with offsets in a text instead of a stream.
Parsed Parse(const std::string& text) {
  Parsed parsed;
  parsed.records.emplace_back();
  std::size_t at = 0;
  const auto fail = [&parsed](Parsed::Fault fault) {
    parsed.fault = fault;
    return parsed;
  };
  for (;;) {
    std::string field;
    if (at < text.size() && text[at] == '"') {
      ++at;
      for (;;) {
        const std::size_t special = text.find_first_of(std::string_view("\"\0", 2), at);
        if (special == std::string::npos) {
          return fail(Parsed::Fault::kFormat);  // the field does not end
        }
        if (text[special] == '\0') {
          return fail(Parsed::Fault::kNul);
        }
        field.append(text, at, special - at);
        at = special + 1;
        if (at == text.size() || text[at] == ',' || text[at] == '\n') {
          break;
        }
        if (text[at] != '"') {
          return fail(Parsed::Fault::kFormat);
        }
        field += '"';
        ++at;
      }
    } else {
      const std::size_t end = std::min(text.find_first_of(",\n", at), text.size());
      field = text.substr(at, end - at);
      const std::size_t special = field.find_first_of(std::string_view("\"\0", 2));
      if (special != std::string::npos) {
        return fail(field[special] == '"' ? Parsed::Fault::kFormat : Parsed::Fault::kNul);
      }
      at = end;
    }
    parsed.records.back().push_back(field);
    if (at == text.size()) {
      return parsed;
    }
    if (text[at++] == '\n') {
      parsed.recordEnds.push_back(at);
      parsed.records.emplace_back();
    }
  }
}

/// The same with ReadField and ReadByte.
Parsed ReadAll(Vell::IO::Stream& stream) {
  Parsed parsed;
  parsed.records.emplace_back();
  try {
    for (;;) {
      String field("left over");
      ReadField(field, stream);
      parsed.records.back().emplace_back(field.View());
      const int byte = stream.ReadByte();
      if (byte == kEndOfStream) {
        return parsed;
      }
      EXPECT_TRUE(byte == ',' || byte == '\n') << byte;
      if (byte == '\n') {
        parsed.records.emplace_back();
      }
    }
  } catch (const InvalidCsvFormatException&) {
    parsed.fault = Parsed::Fault::kFormat;
  } catch (const InvalidInputException&) {
    parsed.fault = Parsed::Fault::kNul;
  }
  return parsed;
}

std::string ErrorLine(Parsed::Fault fault) {
  return fault == Parsed::Fault::kFormat ? "Error: Invalid CSV format\n"
         : fault == Parsed::Fault::kNul  ? "Error: Invalid input string\n"
                                         : "";
}

/// Fields per ended line.
CsvShape ShapeOf(const Parsed& parsed) {
  CsvShape shape;
  for (std::size_t i = 0; i + 1 < parsed.records.size(); ++i) {
    const auto count = static_cast<std::int32_t>(parsed.records[i].size());
    shape.minimumFields = i == 0 ? count : std::min(shape.minimumFields, count);
    shape.maximumFields = std::max(shape.maximumFields, count);
    ++shape.lineCount;
  }
  return shape;
}

testing::AssertionResult Equal(const CsvShape& a, const CsvShape& b) {
  const bool isEqual = a.minimumFields == b.minimumFields && a.maximumFields == b.maximumFields &&
                       a.lineCount == b.lineCount;
  return (isEqual ? testing::AssertionSuccess() : testing::AssertionFailure())
         << a.minimumFields << " to " << a.maximumFields << " fields in " << a.lineCount
         << " lines against " << b.minimumFields << " to " << b.maximumFields << " in "
         << b.lineCount;
}

void ExpectReadByTheRules(const std::string& text, std::size_t windowSize,
                          std::string& expectedErrors) {
  const Parsed expected = Parse(text);
  MemoryStream stream(text, windowSize);
  const Parsed read = ReadAll(stream);
  ASSERT_EQ(read.records, expected.records) << Quoted(text);
  ASSERT_EQ(read.fault, expected.fault) << Quoted(text);
  expectedErrors += ErrorLine(expected.fault);
}

TEST(ReadFieldTest, ReadsEveryTextOfSixCharactersByTheRules) {
  Testing::OutputCapture capture;
  std::string expectedErrors;
  ForAllTexts(kNastyAlphabet, 6, [&](const std::string& text) {
    ExpectReadByTheRules(text, MemoryStream::kWhole, expectedErrors);
  });
  EXPECT_TRUE(capture.TakeError() == expectedErrors);
}

TEST(ReadFieldTest, RulesHoldWhereverABlockEnds) {
  Testing::OutputCapture capture;
  std::string expectedErrors;
  ForAllTexts(kNastyAlphabet, 4, [&](const std::string& text) {
    ExpectReadByTheRules(text, 1, expectedErrors);
    ExpectReadByTheRules(text, 2, expectedErrors);
    ExpectReadByTheRules(text, 3, expectedErrors);
  });
  EXPECT_TRUE(capture.TakeError() == expectedErrors);
}

void ExpectMeasuredByTheRules(const std::string& text, std::size_t windowSize,
                              std::string& expectedErrors) {
  const Parsed expected = Parse(text);
  MemoryStream stream(text, windowSize);
  Parsed::Fault fault = Parsed::Fault::kNone;
  CsvShape shape;
  try {
    shape = MeasureCsv(stream);
  } catch (const InvalidCsvFormatException&) {
    fault = Parsed::Fault::kFormat;
  } catch (const InvalidInputException&) {
    fault = Parsed::Fault::kNul;
  }
  ASSERT_EQ(fault, expected.fault) << Quoted(text);
  if (fault == Parsed::Fault::kNone) {
    ASSERT_TRUE(Equal(shape, ShapeOf(expected))) << Quoted(text);
    ASSERT_TRUE(stream.IsEof()) << Quoted(text);
  }
  expectedErrors += ErrorLine(expected.fault);
}

TEST(MeasureCsvTest, CountsEveryTextOfFiveCharactersByTheRules) {
  Testing::OutputCapture capture;
  std::string expectedErrors;
  ForAllTexts(kNastyAlphabet, 5, [&](const std::string& text) {
    ExpectMeasuredByTheRules(text, MemoryStream::kWhole, expectedErrors);
  });
  EXPECT_TRUE(capture.TakeError() == expectedErrors);
}

TEST(MeasureCsvTest, RulesHoldWhereverABlockEnds) {
  Testing::OutputCapture capture;
  std::string expectedErrors;
  ForAllTexts(kNastyAlphabet, 4, [&](const std::string& text) {
    ExpectMeasuredByTheRules(text, 1, expectedErrors);
    ExpectMeasuredByTheRules(text, 2, expectedErrors);
    ExpectMeasuredByTheRules(text, 3, expectedErrors);
  });
  EXPECT_TRUE(capture.TakeError() == expectedErrors);
}

TEST(MeasureCsvTest, WorkedShapes) {
  struct Case {
    std::string text;
    CsvShape shape;
  };
  const Case cases[] = {
      // Nothing, and a last line that does not end, count for nothing.
      {"", {0, 0, 0}},
      {"x", {0, 0, 0}},
      {"a,b,c", {0, 0, 0}},
      {"a,b\nc", {2, 2, 1}},
      {"a,b\nc,d,e,f", {2, 2, 1}},
      // An empty line has one empty field; two separators make three.
      {"\n", {1, 1, 1}},
      {",,\n", {3, 3, 1}},
      {"\n\n\n", {1, 1, 3}},
      {"a,b,c\nd\ne,f\n", {1, 3, 3}},
      {"a\nb,c,d\n", {1, 3, 2}},
      // Within quotes separators and line feeds belong to the field.
      {"\"a,b\",\"c\nd\"\n", {2, 2, 1}},
      {"\"\"\n", {1, 1, 1}},
      {"\"a\"\"b\",c\n", {2, 2, 1}},
      {"a,b\r\nc,d\r\n", {2, 2, 2}},
  };
  for (const Case& c : cases) {
    MemoryStream stream(c.text);
    EXPECT_TRUE(Equal(MeasureCsv(stream), c.shape)) << Quoted(c.text);
  }
}

TEST(MeasureCsvTest, StartsAtThePositionOfTheStream) {
  MemoryStream stream("a,b,c\nd\n");
  SkipLine(stream);
  EXPECT_TRUE(Equal(MeasureCsv(stream), CsvShape{1, 1, 1}));
}

TEST(MeasureCsvTest, LinesOfEveryLengthAroundAPowerOfTwoAreCounted) {
  // Counting may go in steps of many bytes.
  for (const std::size_t commas : {0u, 1u, 63u, 64u, 127u, 128u, 129u, 255u, 256u, 257u, 1000u}) {
    for (const std::size_t letters : {0u, 1u, 127u, 128u, 200u}) {
      const std::string plain = std::string(letters, 'x') + std::string(commas, ',');
      const auto fields = static_cast<std::int32_t>(commas) + 1;
      MemoryStream stream(plain + "\n" + std::string(commas, ',') + "\"q,q\"\n");
      EXPECT_TRUE(Equal(MeasureCsv(stream), CsvShape{fields, fields, 2})) << commas;
      ExpectRaises<InvalidCsvFormatException>("Invalid CSV format", [&plain] {
        MemoryStream faulty(plain + "a\"\n");
        MeasureCsv(faulty);
      });
      ExpectRaises<InvalidInputException>("Invalid input string", [&plain] {
        MemoryStream faulty(plain + std::string("\0\n", 2));
        MeasureCsv(faulty);
      });
    }
  }
}

TEST(ReadFieldTest, DoubledQuoteIsOneQuoteOnlyInAQuotedField) {
  const InputStream quoted("\"a\"\"b\"");
  String field;
  ReadField(field, *quoted);
  EXPECT_EQ(field.View(), "a\"b");
  const InputStream unquoted("a\"b");
  ExpectRaises<InvalidCsvFormatException>("Invalid CSV format",
                                          [&] { ReadField(field, *unquoted); });
}

TEST(ReadFieldTest, KeepsTheCarriageReturnInTheLastFieldOfALine) {
  MemoryStream stream("a,b\r\nc,d\r\n");
  const Parsed parsed = ReadAll(stream);
  const std::vector<std::vector<std::string>> expected{{"a", "b\r"}, {"c", "d\r"}, {""}};
  EXPECT_EQ(parsed.records, expected);
}

TEST(ReadFieldTest, LeavesTheSeparatorAndTheLineFeed) {
  MemoryStream stream("ab,\"c\"\n");
  String field;
  ReadField(field, stream);
  EXPECT_EQ(stream.ReadByte(), ',');
  ReadField(field, stream);
  EXPECT_EQ(stream.ReadByte(), '\n');
}

TEST(ReadFieldTest, LongFieldsAreReadWhole) {
  std::string content;
  std::vector<std::string> expected;
  for (const std::size_t length : {1u, 255u, 256u, 257u, 1023u, 1024u, 1025u, 4096u, 65537u}) {
    expected.push_back(std::string(length, 'u'));
    content += expected.back() + ',';
    expected.push_back(std::string(length, 'q') + "\",\n" + std::string(length, 'r'));
    content += '"' + std::string(length, 'q') + "\"\",\n" + std::string(length, 'r') + "\",";
  }
  expected.emplace_back("");
  const InputStream stream(content);
  const Parsed parsed = ReadAll(*stream);
  ASSERT_EQ(parsed.fault, Parsed::Fault::kNone);
  ASSERT_EQ(parsed.records.size(), 1u);
  EXPECT_TRUE(parsed.records[0] == expected);
}

TEST(ReadFieldTest, FieldsThatLieAcrossBlocksOfAFileAreReadWhole) {
  for (int shift = -6; shift <= 6; ++shift) {
    const std::string first(static_cast<std::size_t>(65536 + shift), 'x');
    const InputStream stream(first + ",\"q\"\"r\",s\nt,\n");
    const Parsed parsed = ReadAll(*stream);
    const std::vector<std::vector<std::string>> expected{{first, "q\"r", "s"}, {"t", ""}, {""}};
    ASSERT_TRUE(parsed.records == expected) << shift;
    stream->Seek(0);
    ASSERT_TRUE(Equal(MeasureCsv(*stream), CsvShape{2, 3, 2})) << shift;
  }
}

TEST(ReadRealFieldTest, ReadsANumberAndPastTheRestOfItsField) {
  MemoryStream stream("1.5,-2e3 x\"y\",0x10\n, 7");
  EXPECT_EQ(ReadRealField(stream), 1.5);
  EXPECT_EQ(ReadRealField(stream), -2000.0);
  EXPECT_EQ(ReadRealField(stream), 16.0);
  EXPECT_EQ(stream.ReadByte(), ',');
  EXPECT_EQ(ReadRealField(stream), 7.0);
  EXPECT_TRUE(stream.IsEof());
}

TEST(ReadRealFieldTest, FieldThatIsNoNumberIsTheEndOfTheStream) {
  for (const char* const text : {"", ",", "x,", "\"1\",", "-", " ,1", "0x,", "0x"}) {
    SCOPED_TRACE(text);
    ExpectRaises<Vell::Exceptions::EndOfStreamException>("Unexpected end of stream", [text] {
      MemoryStream stream(text);
      ReadRealField(stream);
    });
  }
}

TEST(SkipFieldTest, EndsAtTheNextSeparatorWithoutALookAtQuotes) {
  MemoryStream stream("12abc,\"x,y\"\n\nlast");
  EXPECT_EQ(SkipField(stream), ',');
  EXPECT_EQ(SkipField(stream), ',');  // within the quotes
  EXPECT_EQ(SkipField(stream), '\n');
  EXPECT_EQ(SkipField(stream), '\n');
  EXPECT_EQ(SkipField(stream), kEndOfStream);
  EXPECT_EQ(SkipField(stream), kEndOfStream);
}

TEST(SkipLineTest, EndsBehindTheLineFeedWithoutALookAtQuotes) {
  MemoryStream stream(std::string_view("a,\"b\nc\0d\n\nrest", 14));
  SkipLine(stream);
  EXPECT_EQ(stream.Tell(), 5);
  SkipLine(stream);
  EXPECT_EQ(stream.Tell(), 9);
  SkipLine(stream);
  EXPECT_EQ(stream.Tell(), 10);
  SkipLine(stream);
  EXPECT_TRUE(stream.IsEof());
}

TEST(SkipRecordTest, EndsBehindEachRecordOfEveryTextOfFiveCharacters) {
  Testing::OutputCapture capture;
  std::string expectedErrors;
  ForAllTexts(kNastyAlphabet, 5, [&](const std::string& text) {
    const Parsed expected = Parse(text);
    for (const std::size_t windowSize : {MemoryStream::kWhole, std::size_t{1}, std::size_t{2}}) {
      MemoryStream stream(text, windowSize);
      Parsed::Fault fault = Parsed::Fault::kNone;
      std::vector<std::size_t> ends;
      try {
        for (;;) {
          SkipRecord(stream);
          if (stream.IsEof()) {
            break;
          }
          ends.push_back(static_cast<std::size_t>(stream.Tell()));
        }
      } catch (const InvalidCsvFormatException&) {
        fault = Parsed::Fault::kFormat;
      } catch (const InvalidInputException&) {
        fault = Parsed::Fault::kNul;
      }
      ASSERT_EQ(fault, expected.fault) << Quoted(text);
      ASSERT_EQ(ends, expected.recordEnds) << Quoted(text);
      expectedErrors += ErrorLine(expected.fault);
    }
  });
  EXPECT_TRUE(capture.TakeError() == expectedErrors);
}

TEST(SkipRecordTest, GoesOnFromTheCommaBehindAField) {
  for (const std::size_t windowSize : {MemoryStream::kWhole, std::size_t{1}}) {
    MemoryStream stream("key,\"a\nb\",c\nnext\n", windowSize);
    String field;
    ReadField(field, stream);
    SkipRecord(stream);
    ReadField(field, stream);
    EXPECT_EQ(field.View(), "next");
  }
}

TEST(SkipRecordTest, TakesTheLineFeedBehindALastField) {
  for (const char* const line : {"key\nnext\n", "\"k,\"\nnext\n"}) {
    MemoryStream stream(line);
    String field;
    ReadField(field, stream);
    SkipRecord(stream);
    ReadField(field, stream);
    EXPECT_EQ(field.View(), "next") << line;
  }
}

TEST(CsvReaderTest, StreamThatFailsRaisesItsOwnError) {
  const std::string text = "ab,\"c\"\"d\"\ne";
  for (std::size_t offset = 0; offset <= text.size(); ++offset) {
    for (const std::size_t windowSize : {std::size_t{1}, std::size_t{4}}) {
      SCOPED_TRACE(offset);
      MemoryStream measured(text, windowSize);
      measured.FailReadAt(offset);
      ExpectRaises<Vell::Exceptions::IOException>("IO Exception", [&] { MeasureCsv(measured); });
      MemoryStream read(text, windowSize);
      read.FailReadAt(offset);
      ExpectRaises<Vell::Exceptions::IOException>("IO Exception", [&] { ReadAll(read); });
    }
  }
}

TEST(ReadFieldTest, FailingAllocationIsOutOfMemory) {
  Testing::ExpectOutOfMemoryAtEachAllocation([] {
    MemoryStream stream("\"" + std::string(3000, 'x') + "\"");
    String field;
    ReadField(field, stream);
    EXPECT_EQ(field.Length(), 3000);
  });
}

}  // namespace
