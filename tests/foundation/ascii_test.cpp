#include "foundation/ascii.h"

#include <gtest/gtest.h>

#include <cctype>

namespace {

// The C library's answers in the C locale, in which a test begins.

TEST(AsciiTest, KindsOfBytesAreThoseOfTheCLocale) {
  for (int c = 0; c < 256; ++c) {
    EXPECT_EQ(Vell::IsDigit(c), std::isdigit(c) != 0) << c;
    EXPECT_EQ(Vell::IsBlank(c), std::isspace(c) != 0) << c;
    EXPECT_EQ(Vell::IsHexDigit(c), std::isxdigit(c) != 0) << c;
    EXPECT_EQ(Vell::ToLower(c), std::tolower(c)) << c;
  }
}

TEST(AsciiTest, NegativeNumbersAreOfNoKind) {
  for (int c = -256; c < 0; ++c) {  // the end of a stream, and bytes from 128 up in a signed char
    EXPECT_FALSE(Vell::IsDigit(c) || Vell::IsBlank(c) || Vell::IsHexDigit(c)) << c;
    EXPECT_EQ(Vell::ToLower(c), c);
  }
}

}  // namespace
