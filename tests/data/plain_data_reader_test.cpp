// Reading in one pass, against the careful way, which tests of its own compare with hand-written
// data sets.

#include "data/plain_data_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "data/data_file_reader.h"
#include "support/data_sets.h"
#include "support/outcome.h"
#include "support/seeded_random.h"
#include "support/streams.h"

namespace {

using Hovar::DataSet;
using Testing::InputStream;

bool IsPlain(const std::string& text, std::int32_t poaCount) {
  const InputStream stream(text);
  DataSet data;
  return ReadPlainDataFile(data, *stream, poaCount, Hovar::KeyUse::kDrop);
}

struct Shape {
  int records;
  int covariates;
  int poaCount;
  std::string lineEnd = "\n";
};

std::string RandomFile(Testing::SeededRandom& random, const Shape& shape) {
  std::string text = "Key,Hospital,Y";
  for (int j = 0; j < shape.poaCount + 2 * shape.covariates; ++j) {
    text += ",c" + std::to_string(j);
  }
  text += shape.lineEnd;
  int hospital = 0;
  for (int i = 0; i < shape.records; ++i) {
    hospital += random.Chance(0.1) ? 1 : 0;
    // Long keys at the front, so that there are more records than the first lines let expect.
    const int longest = i < shape.records / 8 ? 120 : 6;
    text += std::string(static_cast<std::size_t>(random.Integer(0, longest)), 'k') + ",H" +
            std::to_string(hospital) + (random.Chance(0.3) ? ",1" : ",0");
    for (int j = 0; j < shape.poaCount; ++j) {
      text += random.Chance(0.2) ? "," : random.Chance(0.5) ? ",1" : ",0";
    }
    for (int j = 0; j < 2 * shape.covariates; ++j) {
      const bool isMissing = j >= shape.covariates && random.Chance(0.15);
      text += isMissing ? "," : random.Chance(0.3) ? ",1" : ",0";
    }
    text += shape.lineEnd;
  }
  return text;
}

struct Reading {
  Testing::Outcome outcome;
  std::string data;
};

Reading Read(const std::string& text, std::int32_t poaCount) {
  const InputStream stream(text);
  DataSet data;
  Reading reading;
  reading.outcome = Testing::Observe([&] { ReadDataFile(data, *stream, poaCount); });
  reading.data = Testing::Describe(data);
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    reading.data += data.recordHasMissing.Get(i) ? '.' : '+';
  }
  return reading;
}

// Quotes around the header's first name make a file that must be read carefully.
TEST(PlainDataReaderTest, BothWaysReadTheSameDataAndPrintTheSameLines) {
  Testing::SeededRandom random(19);
  SCOPED_TRACE(random.Text());
  for (const Shape& shape :
       {Shape{0, 1, 0}, Shape{1, 1, 0}, Shape{1, 1, 3}, Shape{700, 2, 1}, Shape{3000, 30, 2},
        Shape{900, 65, 1}, Shape{2500, 7, 0, "\r\n"}, Shape{40, 400, 2}}) {
    SCOPED_TRACE(std::to_string(shape.records) + " x " + std::to_string(shape.covariates));
    const std::string text = RandomFile(random, shape);
    ASSERT_EQ(IsPlain(text, shape.poaCount), shape.records > 0 || shape.covariates > 0);
    const std::string quoted = "\"Key\"" + text.substr(3);
    ASSERT_FALSE(IsPlain(quoted, shape.poaCount));
    const Reading plain = Read(text, shape.poaCount);
    const Reading careful = Read(quoted, shape.poaCount);
    EXPECT_EQ(plain.outcome.Failure(), "");
    EXPECT_EQ(plain.outcome.output, careful.outcome.output);
    EXPECT_EQ(plain.outcome.log, careful.outcome.log);
    EXPECT_TRUE(plain.data == careful.data);
  }
}

TEST(PlainDataReaderTest, AnythingUnusualIsLeftToTheCarefulWay) {
  const std::string header = "Key,Hospital,Y,P,Z,Z2,X,X2\n";
  const std::string line = "a,A,1,0,0,1,0,1\n";
  ASSERT_TRUE(IsPlain(header + line + line, 1));
  ASSERT_TRUE(IsPlain(header, 1));
  const std::string nul(1, '\0');
  for (const std::string& unusual : {std::string("\"a\",A,1,0,0,1,0,1\n"),
                                     std::string("a,\"A\",1,0,0,1,0,1\n"),
                                     std::string("a\"a,A,1,0,0,1,0,1\n"),
                                     nul + ",A,1,0,0,1,0,1\n",
                                     "a,A" + nul + ",1,0,0,1,0,1\n",
                                     std::string("a,A,,0,0,1,0,1\n"),
                                     std::string("a,A,2,0,0,1,0,1\n"),
                                     std::string("a,A, 1,0,0,1,0,1\n"),
                                     std::string("a,A,1,2,0,1,0,1\n"),
                                     std::string("a,A,1,00,0,1,0,1\n"),
                                     std::string("a,A,1,0,,1,0,1\n"),
                                     std::string("a,A,1,0,0,x,0,1\n"),
                                     std::string("a,A,1,0,0,1,2,1\n"),
                                     std::string("a,A,1,0,0,1, ,1\n"),
                                     std::string("a,A,1,0,0,1,0,1 \n"),
                                     std::string("a,A,1,0,0,1,0,1\r\r\n"),
                                     std::string("a,A,1,0,0,1,0,1\r"),
                                     std::string("a,A,1,0,0,1,0,2\n"),
                                     std::string("a,A,1,0,0,1,0,11\n"),
                                     std::string("a,A,1,0,0,1,0\n"),
                                     std::string("a,A,1,0,0,1,0,1,\n"),
                                     std::string("a,A,1,0,0,1,0,1,1\n"),
                                     std::string("\n"),
                                     std::string("a\n"),
                                     std::string("a,A\n"),
                                     std::string("a,A,1\n"),
                                     std::string("a,A,1,0\n"),
                                     std::string("a,A,1,0,0,1,0,1"),
                                     std::string("a")}) {
    EXPECT_FALSE(IsPlain(header + line + unusual, 1)) << unusual;
    if (unusual.ends_with('\n')) {
      EXPECT_FALSE(IsPlain(header + line + unusual + line, 1)) << unusual;
    }
  }
  for (const std::int32_t poaCount : {-1, 0, 2, 4, 5, 6, 1000, 2147483647, -2147483647}) {
    EXPECT_FALSE(IsPlain(header + line, poaCount)) << poaCount;
  }
  EXPECT_FALSE(IsPlain("", 0));
  EXPECT_FALSE(IsPlain("Key,Hospital,Y,Z,X", 0));
  EXPECT_FALSE(IsPlain("Key,Hospital,Y\na,A,1\n", 0)) << "no covariate";
  EXPECT_FALSE(IsPlain("Key,Hospital,Y,Z,X" + nul + "\na,A,1,0,0\n", 0));
}

// A stream's block has 65,536 bytes.
TEST(PlainDataReaderTest, LineThatNoBlockHoldsIsLeftToTheCarefulWay) {
  for (const std::size_t length : {65'500U, 65'536U, 70'000U}) {
    const std::string line = std::string(length, 'k') + ",A,1,0,1\n";
    const std::string text = "Key,Hospital,Y,Z,X\na,A,1,0,1\n" + line + "b,A,0,1,\n";
    EXPECT_EQ(IsPlain(text, 0), line.size() <= 65'536) << length;
    EXPECT_EQ(Read(text, 0).outcome.Failure(), "");
  }
}

}  // namespace
