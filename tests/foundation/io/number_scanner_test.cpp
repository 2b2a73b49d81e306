// The C library of the machine is the reference here: every text is also read by fscanf, and the
// result, the value, the bytes left behind and the end-of-file indicator must agree. Texts hold no
// NUL byte: a file in memory ends there.

#include "foundation/io/number_scanner.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdio>
#include <memory>
#include <string>

#include "foundation/exceptions/exceptions.h"
#include "support/all_texts.h"
#include "support/memory_stream.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::ForAllTexts;
using Testing::MemoryStream;
using Vell::IO::kEndOfStream;
using Vell::IO::ScanResult;

/// What a read of one number did.
struct Outcome {
  int result = 0;
  std::uint64_t bits = 0;  // of the value
  bool isEof = false;
  std::string rest;

  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << "result " << outcome.result << ", bits " << std::hex << outcome.bits << std::dec
             << (outcome.isEof ? ", at the end" : "") << ", rest " << Testing::Quoted(outcome.rest);
}

template <typename T>
std::uint64_t Bits(T value) {
  if constexpr (sizeof(T) == sizeof(std::uint64_t)) {
    return std::bit_cast<std::uint64_t>(value);
  } else {
    return std::bit_cast<std::uint32_t>(value);
  }
}

/// One format: what the value is before a read that may leave it alone, and the two readers.
template <typename T>
struct Kind;
template <>
struct Kind<std::int32_t> {
  static constexpr const char* kFormat = "%d";
  static ScanResult Scan(MemoryStream& s, std::int32_t& v) { return Vell::IO::ScanInteger(s, v); }
};
template <>
struct Kind<std::uint32_t> {
  static constexpr const char* kFormat = "%u";
  static ScanResult Scan(MemoryStream& s, std::uint32_t& v) { return Vell::IO::ScanUnsigned(s, v); }
};
template <>
struct Kind<double> {
  static constexpr const char* kFormat = "%lg";
  static ScanResult Scan(MemoryStream& s, double& v) { return Vell::IO::ScanReal(s, v); }
};

template <typename T>
Outcome ByLibrary(const std::string& text) {
  // An empty file in memory is not possible everywhere; a null device is as empty.
  std::FILE* const file = text.empty() ? std::fopen("/dev/null", "r")
                                       : fmemopen(const_cast<char*>(text.data()), text.size(), "r");
  T value = 77;
  Outcome outcome;
  outcome.result = std::fscanf(file, Kind<T>::kFormat, &value);
  outcome.bits = Bits(value);
  outcome.isEof = std::feof(file) != 0;
  for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file)) {
    outcome.rest += static_cast<char>(byte);
  }
  std::fclose(file);
  return outcome;
}

template <typename T>
Outcome ByScanner(const std::string& text, std::size_t windowSize = MemoryStream::kWhole) {
  MemoryStream stream(text, windowSize);
  T value = 77;
  Outcome outcome;
  outcome.result = static_cast<int>(Kind<T>::Scan(stream, value));
  outcome.bits = Bits(value);
  outcome.isEof = stream.IsEof();
  for (int byte = stream.ReadByte(); byte != kEndOfStream; byte = stream.ReadByte()) {
    outcome.rest += static_cast<char>(byte);
  }
  return outcome;
}

template <typename T>
void ExpectReadAsLibrary(const std::string& text) {
  const Outcome expected = ByLibrary<T>(text);
  ASSERT_EQ(ByScanner<T>(text), expected) << Kind<T>::kFormat << " on " << Testing::Quoted(text);
  ASSERT_EQ(ByScanner<T>(text, 1), expected)
      << Kind<T>::kFormat << " byte by byte on " << Testing::Quoted(text);
}

TEST(NumberScannerTest, ReadsEveryTextOfFiveCharactersAsFscanfReadsIntegers) {
  ForAllTexts("019+- \nx", 5, ExpectReadAsLibrary<std::int32_t>);
}

TEST(NumberScannerTest, ReadsEveryTextOfFiveCharactersAsFscanfReadsUnsignedIntegers) {
  ForAllTexts("019+- \tx", 5, ExpectReadAsLibrary<std::uint32_t>);
}

TEST(NumberScannerTest, ReadsEveryTextOfFiveCharactersAsFscanfReadsReals) {
  ForAllTexts("01.e+-xp ,", 5, ExpectReadAsLibrary<double>);
}

TEST(NumberScannerTest, ReadsEveryWordOfFiveLettersAsFscanfReadsReals) {
  ForAllTexts("infaty-", 5, ExpectReadAsLibrary<double>);
}

TEST(NumberScannerTest, ReadsEveryHexadecimalTextAsFscanfReadsReals) {
  ForAllTexts("0aFpP.-,", 4, [](const std::string& text) {
    ExpectReadAsLibrary<double>("0x" + text);
    ExpectReadAsLibrary<double>("-0X1" + text);
  });
}

TEST(NumberScannerTest, ReadsIntegersBeyond64BitsAsFscanf) {
  for (const std::string magnitude :
       {"2147483647", "2147483648", "4294967295", "4294967296", "4294967297", "9223372036854775807",
        "9223372036854775808", "9223372036854775813", "18446744073709551615",
        "18446744073709551616", "18446744073709551617", "99999999999999999999",
        "340282366920938463463374607431768211456"}) {
    for (const char* const sign : {"", "-", "+"}) {
      for (const char* const tail : {"", ",", " ", ".5"}) {
        ExpectReadAsLibrary<std::int32_t>(sign + magnitude + tail);
        ExpectReadAsLibrary<std::uint32_t>(sign + magnitude + tail);
      }
    }
  }
  for (const std::size_t length : {30u, 1000u, 5000u}) {
    ExpectReadAsLibrary<std::int32_t>(std::string(length, '9'));
    ExpectReadAsLibrary<std::int32_t>("-" + std::string(length, '0') + "12,");
    ExpectReadAsLibrary<std::uint32_t>(std::string(length, '0') + "4294967298x");
  }
}

TEST(NumberScannerTest, ReadsLongRealsAsFscanf) {
  const std::string zeros(3000, '0');
  for (const std::string& text :
       {zeros + "1.5,", "0." + zeros + "1e3001", "1" + zeros + "e-3000", zeros, "." + zeros,
        "0x" + zeros + "1p4", "1e" + zeros + "2", "1e+" + zeros + "2 ",
        std::string(3000, ' ') + "2", std::string(3000, '9') + "e-2999"}) {
    ExpectReadAsLibrary<double>(text);
  }
}

TEST(NumberScannerTest, ReadsWordsAndTheirBeginningsAsFscanf) {
  for (const std::string word : {"inf", "infinity", "INFINITY", "nan", "NaN"}) {
    for (std::size_t length = 1; length <= word.size(); ++length) {
      for (const char* const sign : {"", "-", "+", " "}) {
        for (const char* const tail : {"", ",", "x", "i", "1"}) {
          ExpectReadAsLibrary<double>(sign + word.substr(0, length) + tail);
        }
      }
    }
  }
}

TEST(NumberScannerTest, LeavesTheBracketsOfANanInTheStream) {
  // strtod would take them, fscanf does not.
  ExpectReadAsLibrary<double>("nan(1)");
  ExpectReadAsLibrary<double>("nan()");
  EXPECT_EQ(ByScanner<double>("nan(1)").rest, "(1)");
}

TEST(NumberScannerTest, ReadsTheEndsOfTheRangeAsFscanf) {
  for (const char* const text :
       {"1e308", "1e309", "-1e309", "1e-323", "1e-400", "1e99999999999999999999",
        "1e-99999999999999999999", "4.9406564584124654e-324", "2.4703282292062327e-324",
        "0x1p-1074", "0x1p-1075", "0x1.fffffffffffff8p1023", "0x1p1024", "-0", "-0x0p0"}) {
    ExpectReadAsLibrary<double>(text);
  }
}

TEST(NumberScannerTest, ReadsRandomTextsAsFscanf) {
  constexpr std::string_view kAlphabet = "0123456789012345678901234567..eEeExXpP++--  \n,infatyINF";
  Testing::SeededRandom random(20240309);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 20'000; ++i) {
    std::string text;
    for (std::int32_t length = random.Integer(6, 30); length > 0; --length) {
      text += kAlphabet[static_cast<std::size_t>(
          random.Integer(0, static_cast<std::int32_t>(kAlphabet.size()) - 1))];
    }
    ASSERT_NO_FATAL_FAILURE(ExpectReadAsLibrary<std::int32_t>(text));
    ASSERT_NO_FATAL_FAILURE(ExpectReadAsLibrary<std::uint32_t>(text));
    ASSERT_NO_FATAL_FAILURE(ExpectReadAsLibrary<double>(text));
  }
}

TEST(NumberScannerTest, SkipsAllSixKindsOfWhitespace) {
  for (const std::string space : {" ", "\t", "\n", "\v", "\f", "\r", " \t\n\v\f\r"}) {
    ExpectReadAsLibrary<std::int32_t>(space + "5" + space);
    ExpectReadAsLibrary<double>(space + "5" + space);
    ExpectReadAsLibrary<double>(space);
  }
}

TEST(NumberScannerTest, KnownWorkedReadings) {
  struct Case {
    const char* text;
    int result;
    double value;  // 77 when nothing is stored
    const char* rest;
  };
  constexpr Case kCases[] = {
      {"12,5", 1, 12, ",5"}, {"\n\n 1.5\n", 1, 1.5, "\n"}, {"0x1p3<", 1, 8, "<"},
      {"1e<", 1, 1, "<"},    {"0x<", 0, 77, "<"},          {"abc", 0, 77, "abc"},
      {"", -1, 77, ""},      {" \n", -1, 77, ""},
  };
  for (const Case& c : kCases) {
    const Outcome outcome = ByScanner<double>(c.text);
    EXPECT_EQ(outcome.result, c.result) << c.text;
    EXPECT_EQ(outcome.bits, Bits(c.value)) << c.text;
    EXPECT_EQ(outcome.rest, c.rest) << c.text;
  }
}

TEST(NumberScannerTest, ByteZeroEndsANumber) {
  const Outcome outcome = ByScanner<std::int32_t>(std::string("12\0003", 4));
  EXPECT_EQ(outcome.result, 1);
  EXPECT_EQ(outcome.bits, 12u);
  EXPECT_EQ(outcome.rest, std::string("\0003", 2));
}

TEST(NumberScannerTest, BytesAbove127AreNoDigits) {
  EXPECT_EQ(ByScanner<std::int32_t>("\xB2").result, 0);
  EXPECT_EQ(ByScanner<double>("1\xA0").rest, "\xA0");
}

TEST(NumberScannerTest, StreamThatFailsRaisesItsOwnError) {
  const std::string text = " 12.5e1 ";
  for (std::size_t offset = 0; offset < text.size(); ++offset) {
    SCOPED_TRACE(offset);
    MemoryStream stream(text, 1);
    stream.FailReadAt(offset);
    double value = 77;
    Testing::ExpectRaises<Vell::Exceptions::IOException>(
        "IO Exception", [&] { Vell::IO::ScanReal(stream, value); });
    EXPECT_EQ(value, 77);
  }
}

}  // namespace
