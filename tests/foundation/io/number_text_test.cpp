// The C library of the machine is the reference here, in its C locale: snprintf for writing, strtod
// for reading. The one difference meant is a NaN, which is written without a sign.

#include "foundation/io/number_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "support/all_texts.h"
#include "support/seeded_random.h"

namespace {

using Testing::SeededRandom;
using Vell::IO::NumberText;
using Vell::IO::ParseReal;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::string Printf(const char* format, double value) {
  char buffer[400];
  std::snprintf(buffer, sizeof(buffer), format, value);
  return std::isnan(value) ? "nan" : buffer;
}

/// A number and its negative.
testing::AssertionResult IsWrittenAsPrintf(double value) {
  for (const double number : {value, -value}) {
    const NumberText text = NumberText::OfReal(number);
    const std::string expected = Printf("%g", number);
    if (text.View() != expected) {
      return testing::AssertionFailure()
             << Printf("%a", number) << " is written " << text.View() << ", not " << expected;
    }
  }
  return testing::AssertionSuccess();
}

TEST(NumberTextTest, WritesIntegersInFull) {
  EXPECT_EQ(NumberText::OfInteger(0).View(), "0");
  EXPECT_EQ(NumberText::OfInteger(-1).View(), "-1");
  EXPECT_EQ(NumberText::OfInteger(2147483647).View(), "2147483647");
  EXPECT_EQ(NumberText::OfInteger(-2147483647 - 1).View(), "-2147483648");
  EXPECT_EQ(NumberText::OfUnsigned(0).View(), "0");
  EXPECT_EQ(NumberText::OfUnsigned(2147483648).View(), "2147483648");
  EXPECT_EQ(NumberText::OfUnsigned(4294967295).View(), "4294967295");
}

TEST(NumberTextTest, WritesRealsInTheShorterNotation) {
  struct Case {
    double value;
    const char* text;
  };
  const Case cases[] = {
      {0.0, "0"},
      {-0.0, "-0"},
      {1.0, "1"},
      {-1.0, "-1"},
      {0.5641063638031483, "0.564106"},
      // Up to six digits before the point stand in full, and so do four zeros after it.
      {100000, "100000"},
      {999999, "999999"},
      {1000000, "1e+06"},
      {999999.4, "999999"},
      {999999.5, "1e+06"},
      {0.0001, "0.0001"},
      {0.00001, "1e-05"},
      {9.999994e-5, "9.99999e-05"},
      {9.9999995e-5, "0.0001"},
      {123456789.0, "1.23457e+08"},
      // Exponents have at least two digits and three where they need them.
      {1e99, "1e+99"},
      {1e100, "1e+100"},
      {1e-99, "1e-99"},
      {1e-100, "1e-100"},
      // Half of the last place goes to the even digit.
      {100000.5, "100000"},
      {100001.5, "100002"},
      {0.5, "0.5"},
      {DBL_MAX, "1.79769e+308"},
      {DBL_MIN, "2.22507e-308"},
      {5e-324, "4.94066e-324"},
      {kInfinity, "inf"},
      {-kInfinity, "-inf"},
      {kNan, "nan"},
      {-kNan, "nan"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(NumberText::OfReal(c.value).View(), c.text) << Printf("%a", c.value);
  }
}

TEST(NumberTextTest, WritesPowersAndTheirNeighboursAsPrintf) {
  for (int exponent = -324; exponent <= 308; ++exponent) {
    const double power = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
    for (const double factor : {1.0, 9.999995, 9.9999949999, 5.0, 1.234565}) {
      const double value = power * factor;
      ASSERT_TRUE(IsWrittenAsPrintf(value));
      ASSERT_TRUE(IsWrittenAsPrintf(std::nextafter(value, 0.0)));
      ASSERT_TRUE(IsWrittenAsPrintf(std::nextafter(value, kInfinity)));
    }
  }
  for (int exponent = -1074; exponent <= 1023; ++exponent) {
    const double power = std::ldexp(1.0, exponent);
    ASSERT_TRUE(IsWrittenAsPrintf(power));
    ASSERT_TRUE(IsWrittenAsPrintf(std::nextafter(power, 0.0)));
    ASSERT_TRUE(IsWrittenAsPrintf(std::nextafter(power, kInfinity)));
  }
}

TEST(NumberTextTest, WritesTiesAsPrintf) {
  // Halves of the sixth digit that a double holds exactly.
  for (int digits = 100000; digits < 101000; ++digits) {
    ASSERT_TRUE(IsWrittenAsPrintf(digits + 0.5));
    ASSERT_TRUE(IsWrittenAsPrintf((digits + 0.5) * 8));
    ASSERT_TRUE(IsWrittenAsPrintf(digits * 10.0 + 5));
    ASSERT_TRUE(IsWrittenAsPrintf(digits * 1000.0 + 500));
    ASSERT_TRUE(IsWrittenAsPrintf(digits * 1e15 + 5e14));
    ASSERT_TRUE(IsWrittenAsPrintf((digits + 0.5) / 1024));
  }
}

TEST(NumberTextTest, Writes200000RandomBitPatternsAsPrintf) {
  SeededRandom random(20240304);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 100'000; ++i) {  // and their negatives
    ASSERT_TRUE(IsWrittenAsPrintf(std::bit_cast<double>(random.Word())));
  }
}

TEST(NumberTextTest, WritesNumbersWithoutAnExponentAsPrintf) {
  // Those between about 0.0001 and a million, where most of what is written lies.
  SeededRandom random(20240311);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 50'000; ++i) {
    ASSERT_TRUE(IsWrittenAsPrintf(std::exp2(random.Real(-15, 21))));
  }
}

TEST(NumberTextTest, RoundsTheSixthDigitAsPrintfNextToEveryKindOfHalf) {
  SeededRandom random(20240312);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 5'000; ++i) {
    const std::int32_t digits = random.Integer(100'000, 999'999);
    for (int exponent = -12; exponent <= 3; ++exponent) {
      const std::string half = std::to_string(digits) + "5e" + std::to_string(exponent);
      const double nearest = std::strtod(half.c_str(), nullptr);
      ASSERT_TRUE(IsWrittenAsPrintf(nearest));
      ASSERT_TRUE(IsWrittenAsPrintf(std::nextafter(nearest, 0.0)));
      ASSERT_TRUE(IsWrittenAsPrintf(std::nextafter(nearest, kInfinity)));
    }
  }
}

TEST(NumberTextTest, WritesRandomShortDecimalsAsPrintf) {
  SeededRandom random(20240305);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 20'000; ++i) {
    const double digits = random.Integer(0, 99'999'999);
    ASSERT_TRUE(IsWrittenAsPrintf(digits / std::pow(10.0, random.Integer(0, 14))));
  }
}

TEST(NumberTextTest, WritesFixedPointAsPrintf) {
  SeededRandom random(20240306);
  SCOPED_TRACE(random.Text());
  std::vector<double> values{0.0,           -0.0,           0.5,     0.0000005, 0.0000015,
                             0.00000049999, 1.5e-7,         DBL_MAX, -DBL_MAX,  DBL_MIN,
                             5e-324,        999999.9999995, 123.456, 1e15 / 3,  1e22 + 1,
                             kInfinity,     -kInfinity,     kNan,    -kNan};
  for (int i = 0; i < 5'000; ++i) {
    values.push_back(std::bit_cast<double>(random.Word()));
    values.push_back(random.Real(-1e6, 1e6));
  }
  for (const double value : values) {
    ASSERT_EQ(NumberText::OfFixed(value).View(), Printf("%f", value)) << Printf("%a", value);
  }
}

TEST(NumberTextTest, CountsCharactersWithoutTheZeroByte) {
  EXPECT_EQ(NumberText::OfReal(0).View().size(), 1u);
  EXPECT_EQ(NumberText::OfFixed(-DBL_MAX).View().size(), 1u + 309 + 1 + 6);
}

/// The same number of bytes used and the same double bit for bit, except that which NaN it is does
/// not matter: strtod lets the digits in its brackets choose, and every one is written "nan". Where
/// there is no number the value is 0, of which libraries differ in the sign.
testing::AssertionResult IsReadAsStrtod(const std::string& text) {
  char* end = nullptr;
  const double expected = std::strtod(text.c_str(), &end);
  const auto expectedUsed = static_cast<std::size_t>(end - text.c_str());
  std::size_t used = 12345;
  const double value = ParseReal(text, &used);
  const bool isEqual = expectedUsed == 0      ? value == 0
                       : std::isnan(expected) ? std::isnan(value)
                                              : std::bit_cast<std::uint64_t>(value) ==
                                                    std::bit_cast<std::uint64_t>(expected);
  if (used == expectedUsed && isEqual) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << Testing::Quoted(text) << " is read as " << Printf("%a", value) << " with " << used
         << " bytes, not " << Printf("%a", expected) << " with " << expectedUsed;
}

TEST(ParseRealTest, ReadsEveryTextOfFiveCharactersAsStrtod) {
  Testing::ForAllTexts("019.eExXp+-inf a", 5,
                       [](const std::string& text) { ASSERT_TRUE(IsReadAsStrtod(text)); });
}

TEST(ParseRealTest, ReadsWordsAsStrtod) {
  for (const char* const text : {"inf",
                                 "INF",
                                 "Infinity",
                                 "-infinity",
                                 "+iNfInItY",
                                 "infinit",
                                 "infinityx",
                                 "in",
                                 "i",
                                 "infi",
                                 "nan",
                                 "NaN",
                                 "-nan",
                                 "+NAN",
                                 "na",
                                 "nanx",
                                 "nan(",
                                 "nan()",
                                 "nan(1)",
                                 "nan(12ab)",
                                 "nan(0x7ff)",
                                 "nan(077)",
                                 "nan(_)",
                                 "nan(1",
                                 "nan(1)x",
                                 "-nan(5)",
                                 "nan(99999999999999999999)",
                                 "nan(abc_DEF_019)",
                                 "nan ()",
                                 "\v\finf",
                                 "\t\r\n 1"}) {
    EXPECT_TRUE(IsReadAsStrtod(text));
  }
}

TEST(ParseRealTest, BracketsOfANanHoldLettersDigitsAndUnderscoresOnly) {
  for (const char* const text : {"nan(1 )", "nan(-1)", "nan(.)"}) {
    std::size_t used = 0;
    EXPECT_TRUE(std::isnan(ParseReal(text, &used))) << text;
    EXPECT_EQ(used, 3U) << text;
  }
}

TEST(ParseRealTest, ReadsHexadecimalNumbersAsStrtod) {
  for (const char* const text :
       {"0x", "0x.", "0x.p1", "0xp1", "0xg", "0x1", "0X1P3", "0x1p3", "0x1p+3", "0x1p-3", "0x1p",
        "0x1p+", "0x1.8", "0x1.8p1", "0x.8", "0x.8p0", "0x8.", "0xabcdef", "0xABC.DEFp4", "-0x1p1",
        // 53 bits and the rounding of the 54th and later ones.
        "0x1fffffffffffff", "0x3fffffffffffff", "0x20000000000001", "0x20000000000003",
        "0x200000000000010000000000000000000001", "0x1.fffffffffffff8p0", "0x1.00000000000008p0",
        "0x1.000000000000080000000001p0", "0x1.00000000000018p0",
        // The least doubles, their halves, and beyond.
        "0x1p-1074", "0x1p-1075", "0x1.00000001p-1075", "0x1.8p-1074", "0x1p-1076", "0x3p-1076",
        "0x0.0000000000001p-1022", "0x0.00000000000008p-1022", "0x1.fffffffffffffp-1023",
        "0x1p-1022", "0x1p1023", "0x1p1024", "0x1.fffffffffffff7p1023", "0x1.fffffffffffff8p1023",
        "-0x1p1024", "0x1p99999", "0x1p-99999", "0x0p99999", "0x0p-99999",
        "0x1p99999999999999999999", "0x1p-99999999999999999999", "0x0p99999999999999999999"}) {
    EXPECT_TRUE(IsReadAsStrtod(text));
  }
  EXPECT_TRUE(IsReadAsStrtod("0x" + std::string(2000, 'f') + "p-8000"));
  EXPECT_TRUE(IsReadAsStrtod("0x0." + std::string(2000, '0') + "1p8010"));
}

TEST(ParseRealTest, ReadsTheEndsOfTheRangeAsStrtod) {
  for (const char* const text :
       {"1e308", "1.7976931348623157e308", "1.7976931348623158e308", "1.7976931348623159e308",
        "1.79769313486231580793e308", "1e309", "-1e309", "1e400", "1e99999", "1e-99999", "0e99999",
        "0e-99999", "0.0e400", "-0", "-0e5", "1e99999999999999999999", "1e-99999999999999999999",
        "0e99999999999999999999", "2.2250738585072014e-308", "2.2250738585072011e-308",
        "2.2250738585072009e-308", "4.9406564584124654e-324", "5e-324", "4e-324", "3e-324",
        "2.4703282292062328e-324", "2.4703282292062327e-324", "2e-324", "1e-324", "1e-400",
        "9007199254740992", "9007199254740993", "9007199254740994", "9007199254740995",
        "9007199254740993.0000000000000000000000000000000000000001", "0.1",
        "0.10000000000000000555", "0.500000000000000166533453693773481063544750213623046875",
        "1e22", "1e23", "8.5e22",
        // e without digits is not part of the number.
        "1e", "1e+", "1e-", "1ex", "1.e5", ".5e1", ".e5", "1.5.5", "1,5", "00012", "1_000"}) {
    EXPECT_TRUE(IsReadAsStrtod(text));
  }
}

TEST(ParseRealTest, ReadsLongTextsAsStrtod) {
  const std::string zeros(1000, '0');
  const std::string nines(1000, '9');
  for (const std::string& text :
       {zeros + "1", "0." + zeros + "1", "1" + zeros, "1" + zeros + "e-1000", nines, "0." + nines,
        nines + "e-1000", "0." + zeros + "1e1001", "1." + zeros + "1", "1." + nines,
        "4.9406564584124654417656879286822137236505980e-324" + zeros,
        "9007199254740993" + zeros + "e-1000", "9007199254740993." + zeros + "1",
        "9007199254740993." + zeros, std::string(100'000, ' ') + "5", "1e" + zeros + "5",
        "0x" + zeros + "1", "0x1p" + zeros + "4"}) {
    EXPECT_TRUE(IsReadAsStrtod(text));
  }
}

TEST(ParseRealTest, ReadsHalfwayPointsBetweenDoublesAsStrtod) {
  // With all their digits, and a little more or less.
  SeededRandom random(20240307);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 2'000; ++i) {
    const double value = std::bit_cast<double>(random.Word() >> 1);
    if (!std::isfinite(value)) {
      continue;
    }
    const long double half =
        (static_cast<long double>(value) + std::nextafter(value, kInfinity)) / 2;
    char buffer[1200];
    std::snprintf(buffer, sizeof(buffer), "%.780Le", half);
    std::string text = buffer;
    ASSERT_TRUE(IsReadAsStrtod(text));
    text[770] = '1';
    ASSERT_TRUE(IsReadAsStrtod(text));
    std::snprintf(buffer, sizeof(buffer), "%.20Le", half);
    ASSERT_TRUE(IsReadAsStrtod(buffer));
  }
}

TEST(ParseRealTest, GivesBackRandomDoublesWrittenWith17Digits) {
  SeededRandom random(20240308);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 50'000; ++i) {
    const double value = std::bit_cast<double>(random.Word());
    if (std::isfinite(value)) {
      char buffer[64];
      std::snprintf(buffer, sizeof(buffer), "%.17g", value);
      ASSERT_EQ(std::bit_cast<std::uint64_t>(ParseReal(buffer)),
                std::bit_cast<std::uint64_t>(value))
          << buffer;
    }
  }
}

TEST(ParseRealTest, LooksAtNothingBehindTheText) {
  const std::string_view text = "12e5nan(1)0x1p9";
  std::size_t used = 0;
  EXPECT_EQ(ParseReal(text.substr(0, 1), &used), 1.0);
  EXPECT_EQ(used, 1u);
  EXPECT_EQ(ParseReal(text.substr(0, 3), &used), 12.0);
  EXPECT_EQ(used, 2u);
  EXPECT_TRUE(std::isnan(ParseReal(text.substr(4, 5), &used)));  // nan(1 without its end
  EXPECT_EQ(used, 3u);
  EXPECT_EQ(ParseReal(text.substr(10, 2), &used), 0.0);
  EXPECT_EQ(used, 1u);
  EXPECT_EQ(ParseReal(std::string_view("1\0002", 3), &used), 1.0);
  EXPECT_EQ(used, 1u);
}

TEST(ParseRealTest, TextThatIsNoNumberGivesZeroAndUsesNothing) {
  for (const std::string_view text : {"", " ", "x", " -", "+.", ".e1", "- 1", ",", "\"1\""}) {
    std::size_t used = 12345;
    EXPECT_EQ(ParseReal(text, &used), 0.0) << text;
    EXPECT_EQ(used, 0u) << text;
    EXPECT_EQ(ParseReal(text), 0.0) << text;
  }
}

TEST(ParseIntegerTest, ClampsTo64BitsAndKeepsTheLow32) {
  struct Case {
    const char* text;
    std::int32_t integer;
    std::uint32_t natural;
  };
  constexpr std::int32_t kLeast = -2147483647 - 1;
  constexpr Case kCases[] = {
      {"0", 0, 0},
      {"-0", 0, 0},
      {"+5", 5, 5},
      {"-1", -1, 4294967295},
      {"0000000000000000000000000012", 12, 12},
      {"2147483647", 2147483647, 2147483647},
      {"2147483648", kLeast, 2147483648},
      {"-2147483648", kLeast, 2147483648},
      {"-2147483649", 2147483647, 2147483647},
      {"4294967295", -1, 4294967295},
      {"4294967296", 0, 0},
      {"4294967297", 1, 1},
      {"-4294967297", -1, 4294967295},
      // 2^63 - 1 is the largest %d knows (low bits all set), -2^63 the least (low bits zero);
      // %u goes to 2^64 - 1 and negates modulo 2^64.
      {"9223372036854775807", -1, 4294967295},
      {"9223372036854775808", -1, 0},
      {"9223372036854775813", -1, 5},
      {"-9223372036854775808", 0, 0},
      {"-9223372036854775809", 0, 4294967295},
      {"18446744073709551615", -1, 4294967295},
      {"18446744073709551616", -1, 4294967295},
      {"-18446744073709551615", 0, 1},
      {"-18446744073709551616", 0, 4294967295},
      {"99999999999999999999", -1, 4294967295},
      {"-99999999999999999999", 0, 4294967295},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(Vell::IO::ParseInteger(c.text), c.integer) << c.text;
    EXPECT_EQ(Vell::IO::ParseUnsigned(c.text), c.natural) << c.text;
  }
}

/// Sets a locale that writes a decimal comma for one scope, if the machine has one.
class CommaLocale {
 public:
  CommaLocale() {
    for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8",
                                   "fr_FR.utf8", "fr_FR", "nl_NL.UTF-8", "German_Germany"}) {
      if (std::setlocale(LC_ALL, name) != nullptr && Printf("%.1f", 0.5) == "0,5") {
        isSet_ = true;
        return;
      }
    }
  }
  ~CommaLocale() { std::setlocale(LC_ALL, "C"); }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  bool IsSet() const { return isSet_; }

 private:
  bool isSet_ = false;
};

TEST(NumberTextLocaleTest, PointStaysAPoint) {
  const CommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma is installed";
  }
  EXPECT_EQ(NumberText::OfReal(1234.5).View(), "1234.5");
  EXPECT_EQ(NumberText::OfReal(1.5e-10).View(), "1.5e-10");
  EXPECT_EQ(NumberText::OfFixed(1234567.5).View(), "1234567.500000");
  EXPECT_EQ(NumberText::OfInteger(1234567).View(), "1234567");
  std::size_t used = 0;
  EXPECT_EQ(ParseReal("1.5", &used), 1.5);
  EXPECT_EQ(used, 3u);
  EXPECT_EQ(ParseReal("1,5", &used), 1.0);
  EXPECT_EQ(used, 1u);
}

}  // namespace
