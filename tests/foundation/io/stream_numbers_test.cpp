// Stream::Scan and Stream::Print as the file stream offers them: results, formats, sizes, errors.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/stream.h"
#include "support/raised.h"
#include "support/streams.h"

namespace {

using Testing::ExpectRaises;
using Testing::InputStream;
using Testing::OutputStream;
using Vell::Exceptions::InvalidFormatException;
using Vell::Exceptions::IOException;

TEST(ScanTest, ReadsOneNumberOfEachFormat) {
  const InputStream stream(" -12 4000000000\n\t2.5e1,");
  std::int32_t integer = 0;
  EXPECT_EQ(stream->Scan("%d", &integer, sizeof(integer)), 1);
  EXPECT_EQ(integer, -12);
  std::uint32_t natural = 0;
  EXPECT_EQ(stream->Scan("%u", &natural, sizeof(natural)), 1);
  EXPECT_EQ(natural, 4000000000u);
  double real = 0;
  EXPECT_EQ(stream->Scan("%lg", &real, sizeof(real)), 1);
  EXPECT_EQ(real, 25.0);
  EXPECT_EQ(stream->ReadByte(), ',');
}

TEST(ScanTest, NumberMayEndWithTheStream) {
  const InputStream stream("7");
  std::int32_t integer = 0;
  EXPECT_EQ(stream->Scan("%d", &integer, sizeof(integer)), 1);
  EXPECT_EQ(integer, 7);
}

TEST(ScanTest, SomethingElseThanANumberIsAnIOException) {
  for (const char* const text : {"abc", "-x", "  ,", "+ 1"}) {
    SCOPED_TRACE(text);
    std::int32_t integer = 77;
    ExpectRaises<IOException>("IO Exception", [&] {
      const InputStream stream(text);
      stream->Scan("%d", &integer, sizeof(integer));
    });
    EXPECT_EQ(integer, 77);
    double real = 77;
    ExpectRaises<IOException>("IO Exception", [&] {
      const InputStream stream(text);
      stream->Scan("%lg", &real, sizeof(real));
    });
    EXPECT_EQ(real, 77);
  }
}

TEST(ScanTest, EndOfTheStreamIsAResult) {
  for (const char* const text : {"", "  \n\t", "-", " +"}) {
    SCOPED_TRACE(text);
    for (const char* const format : {"%d", "%u", "%lg"}) {
      const InputStream stream(text);
      double destination = 77;
      const int result = stream->Scan(format, &destination, format[1] == 'l' ? sizeof(double) : 4);
      EXPECT_TRUE(result == 0 || result == -1) << format << ": " << result;
      EXPECT_TRUE(stream->IsEof());
      EXPECT_EQ(destination, 77);
    }
  }
}

TEST(ScanTest, OtherFormatsAndSizesAreInvalid) {
  struct Case {
    const char* format;
    std::size_t size;
  };
  constexpr Case kCases[] = {{"", 4},    {"%", 4},  {"d", 4},  {"%s", 4},  {"%x", 4},
                             {"%ld", 8}, {"%d", 8}, {"%u", 2}, {"%lg", 4}, {"%lg", 16}};
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.format);
    const InputStream stream("5");
    unsigned char destination[16] = {};
    ExpectRaises<InvalidFormatException>("Invalid format",
                                         [&] { stream->Scan(c.format, destination, c.size); });
  }
}

template <typename T>
std::string Printed(const char* format, T value, std::size_t size = sizeof(T)) {
  OutputStream stream;
  const int count = stream->Print(format, &value, size);
  const std::string text = stream.Content();
  EXPECT_EQ(count, static_cast<int>(text.size())) << format;
  return text;
}

TEST(PrintTest, IntegersAndReals) {
  EXPECT_EQ(Printed("%d", std::int32_t{-2147483647 - 1}), "-2147483648");
  EXPECT_EQ(Printed("%d", std::int32_t{0}), "0");
  EXPECT_EQ(Printed("%u", std::uint32_t{4294967295}), "4294967295");
  EXPECT_EQ(Printed("%lg", 0.1), "0.1");
  EXPECT_EQ(Printed("%lg", 1234567.0), "1.23457e+06");
  EXPECT_EQ(Printed("%g", 1e100), "1e+100");
  EXPECT_EQ(Printed("%f", 2.5), "2.500000");
  EXPECT_EQ(Printed("%lf", -0.0000004), "-0.000000");
}

TEST(PrintTest, SinglePrecisionNumbersAreWidened) {
  EXPECT_EQ(Printed("%g", 0.1F), "0.1");
  EXPECT_EQ(Printed("%f", 0.1F), "0.100000");
  EXPECT_EQ(Printed("%lg", 16777217.0F), "1.67772e+07");
  EXPECT_EQ(Printed("%lg", 1e-45F), "1.4013e-45");  // the least one, 2^-149
}

TEST(PrintTest, TextAroundTheConversionStandsAsItIs) {
  EXPECT_EQ(Printed("a = %d;\n", std::int32_t{5}), "a = 5;\n");
  EXPECT_EQ(Printed("<%lg>", 0.5), "<0.5>");
  EXPECT_EQ(Printed("gf %u", std::uint32_t{5}), "gf 5") << "letters before the % do not count";
}

TEST(PrintTest, FormatWithoutAFittingConversionIsInvalid) {
  struct Case {
    const char* format;
    std::size_t size;
  };
  constexpr Case kCases[] = {
      {"", 4},   {"abc", 4}, {"d", 4},   {"%", 4},  {"abc%", 4},
      {"%l", 8}, {"%s", 8},  {"%c", 4},  {"%x", 4}, {"%d", 8},  // integers have 4 bytes
      {"%u", 8}, {"%d", 2},  {"%ld", 8}, {"%d", 0},
  };
  const double value = 1;
  for (const Case& c : kCases) {
    SCOPED_TRACE(std::string(c.format) + ", size " + std::to_string(c.size));
    OutputStream stream;
    ExpectRaises<InvalidFormatException>("Invalid format",
                                         [&] { stream->Print(c.format, &value, c.size); });
    EXPECT_EQ(stream.Content(), "");
  }
}

TEST(PrintTest, RealOfAnUnknownSizePrintsNothingWhichIsAnIOException) {
  const double value = 1;
  for (const std::size_t size : {0u, 1u, 2u, 7u, 16u}) {
    SCOPED_TRACE(size);
    OutputStream stream;
    ExpectRaises<IOException>("IO Exception", [&] { stream->Print("%g", &value, size); });
    EXPECT_EQ(stream.Content(), "");
  }
}

}  // namespace
