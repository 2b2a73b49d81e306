#include "foundation/io/csv_rules.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using Vell::IO::NeedsQuotes;
using Vell::IO::NeedsRules;
using Vell::IO::TakePlainField;

TEST(CsvRulesTest, EveryByteHasItsMeaning) {
  constexpr std::string_view kEnds = ",\n";
  constexpr std::string_view kSpecial("\"\0", 2);
  for (int c = 0; c < 256; ++c) {
    const char byte = static_cast<char>(c);
    EXPECT_EQ(Vell::IO::EndsField(byte), kEnds.find(byte) != std::string_view::npos) << c;
    EXPECT_EQ(NeedsRules(byte), kSpecial.find(byte) != std::string_view::npos) << c;
  }
}

TEST(CsvRulesTest, ATextNeedsWhatOneOfItsBytesNeeds) {
  constexpr std::string_view kQuoted = ",\n\"";
  for (int c = 0; c < 256; ++c) {
    const char byte = static_cast<char>(c);
    const std::string text = std::string("a") + byte + "b";
    EXPECT_EQ(NeedsRules(std::string_view(text)), NeedsRules(byte)) << c;
    EXPECT_EQ(NeedsQuotes(text), kQuoted.find(byte) != std::string_view::npos) << c;
  }
  EXPECT_FALSE(NeedsRules(std::string_view()));
  EXPECT_FALSE(NeedsQuotes(""));
}

TEST(CsvRulesTest, APlainFieldIsTakenWithItsComma) {
  std::string_view text = "ab c,,\r,rest";
  std::string_view field;
  for (const std::string_view expected : {"ab c", "", "\r"}) {
    ASSERT_TRUE(TakePlainField(text, field));
    EXPECT_EQ(field, expected);
  }
  EXPECT_EQ(text, "rest");
}

TEST(CsvRulesTest, AnyOtherFieldStays) {
  using namespace std::string_view_literals;
  for (const std::string_view whole :
       {""sv, "ab"sv, "ab\n,"sv, "a\"b,"sv, "\"ab\","sv, "a\0b,"sv}) {
    std::string_view text = whole;
    std::string_view field = "untouched";
    EXPECT_FALSE(TakePlainField(text, field)) << whole;
    EXPECT_EQ(text, whole);
    EXPECT_EQ(field, "untouched");
  }
}

}  // namespace
