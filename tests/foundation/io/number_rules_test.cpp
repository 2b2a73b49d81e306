// Rules of numbers as text in which C libraries differ, worked out by hand: the limits of integers,
// the text of a NaN, the digits of exponents, and where a broken number ends.

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <string>

#include "foundation/io/number_scanner.h"
#include "foundation/io/number_text.h"
#include "support/memory_stream.h"

namespace {

using Testing::MemoryStream;
using Vell::IO::NumberText;
using Vell::IO::ScanResult;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// What is left in the stream.
std::string RestOf(MemoryStream& stream) {
  std::string rest;
  for (int byte = stream.ReadByte(); byte != Vell::IO::kEndOfStream; byte = stream.ReadByte()) {
    rest += static_cast<char>(byte);
  }
  return rest;
}

TEST(NumberRulesTest, IntegersAreClampedTo64BitsOfWhichTheLow32Count) {
  struct Row {
    const char* text;
    std::int32_t integer;
    std::uint32_t natural;
  };
  for (const Row& row : {
           Row{"2147483648", std::numeric_limits<std::int32_t>::min(), 2147483648U},  // 2^31
           Row{"4294967295", -1, 4294967295U},                                        // 2^32 - 1
           Row{"4294967297", 1, 1U},                                                  // 2^32 + 1
           Row{"-4294967297", -1, 4294967295U}, Row{"-1", -1, 4294967295U},
           Row{"9223372036854775807", -1, 4294967295U},   // 2^63 - 1
           Row{"9223372036854775808", -1, 0U},            // 2^63: signed is clamped to 2^63 - 1
           Row{"-9223372036854775809", 0, 4294967295U},   // signed is clamped to -2^63
           Row{"18446744073709551616", -1, 4294967295U},  // 2^64: both are clamped
           Row{"99999999999999999999", -1, 4294967295U},
           Row{"-99999999999999999999", 0, 4294967295U},  // unsigned to 2^64 - 1 all the same
       }) {
    SCOPED_TRACE(row.text);
    MemoryStream signedText(std::string(row.text) + ",");
    std::int32_t integer = 77;
    EXPECT_EQ(Vell::IO::ScanInteger(signedText, integer), ScanResult::kNumber);
    EXPECT_EQ(integer, row.integer);
    EXPECT_EQ(RestOf(signedText), ",");
    MemoryStream unsignedText(row.text);
    std::uint32_t natural = 77;
    EXPECT_EQ(Vell::IO::ScanUnsigned(unsignedText, natural), ScanResult::kNumber);
    EXPECT_EQ(natural, row.natural);
  }
}

TEST(NumberRulesTest, ANanIsWrittenWithoutASignAndReadInBothCases) {
  EXPECT_EQ(NumberText::OfReal(kNan).View(), "nan");
  EXPECT_EQ(NumberText::OfReal(-kNan).View(), "nan");
  EXPECT_EQ(NumberText::OfFixed(-kNan).View(), "nan");
  EXPECT_EQ(NumberText::OfReal(std::numeric_limits<double>::infinity()).View(), "inf");
  EXPECT_EQ(NumberText::OfReal(-std::numeric_limits<double>::infinity()).View(), "-inf");
  for (const char* const text : {"nan", "NAN", "-nan"}) {
    MemoryStream stream(text);
    double value = 0;
    EXPECT_EQ(Vell::IO::ScanReal(stream, value), ScanResult::kNumber);
    EXPECT_NE(value, value) << text;
  }
}

TEST(NumberRulesTest, ExponentsHaveTwoDigitsOrThreeWhereTheyNeedThem) {
  EXPECT_EQ(NumberText::OfReal(1e6).View(), "1e+06");
  EXPECT_EQ(NumberText::OfReal(1.5e-5).View(), "1.5e-05");
  EXPECT_EQ(NumberText::OfReal(-1e100).View(), "-1e+100");
  EXPECT_EQ(NumberText::OfReal(0.0001).View(), "0.0001");
  EXPECT_EQ(NumberText::OfReal(-0.0).View(), "-0");
}

TEST(NumberRulesTest, TiesAreRoundedToTheEvenDigitOfTheExactValue) {
  EXPECT_EQ(NumberText::OfReal(2.5e6).View(), "2.5e+06");
  EXPECT_EQ(NumberText::OfReal(1000000.5).View(), "1e+06");
  EXPECT_EQ(NumberText::OfReal(100000.5).View(), "100000");  // an exact tie
  EXPECT_EQ(NumberText::OfReal(100001.5).View(), "100002");  // an exact tie
  // 2^-1074, the smallest double: 4.94065645841246544...e-324
  EXPECT_EQ(NumberText::OfReal(std::bit_cast<double>(std::uint64_t{1})).View(), "4.94066e-324");
}

TEST(NumberRulesTest, ABrokenNumberEndsWhereTheRuleEnds) {
  struct Row {
    const char* text;
    ScanResult result;
    double value;  // 77 when nothing is stored
    const char* rest;
  };
  for (const Row& row :
       {Row{"0x<", ScanResult::kNoNumber, 77, "<"}, Row{"1e<", ScanResult::kNumber, 1, "<"},
        Row{"0x1p3<", ScanResult::kNumber, 8, "<"}, Row{"0X.8", ScanResult::kNumber, 0.5, ""},
        Row{"infinity", ScanResult::kNumber, std::numeric_limits<double>::infinity(), ""},
        Row{"1e400", ScanResult::kNumber, std::numeric_limits<double>::infinity(), ""},
        Row{"1e-400", ScanResult::kNumber, 0, ""}, Row{"", ScanResult::kEnd, 77, ""}}) {
    SCOPED_TRACE(row.text);
    MemoryStream stream(row.text);
    double value = 77;
    EXPECT_EQ(Vell::IO::ScanReal(stream, value), row.result);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(RestOf(stream), row.rest);
  }
}

}  // namespace
