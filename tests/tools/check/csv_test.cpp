#include "tools/check/csv.h"

#include <gtest/gtest.h>

#include "support/files.h"
#include "tools/support/text_places.h"

namespace {

using Hovar::FieldOf;
using Hovar::FieldStarts;
using Hovar::QuoteUse;
using Starts = std::vector<std::size_t>;

TEST(CheckCsvTest, FieldsStartBehindCommas) {
  EXPECT_EQ(FieldStarts("", QuoteUse::kHonour), Starts{0});
  EXPECT_EQ(FieldStarts("a", QuoteUse::kHonour), Starts{0});
  EXPECT_EQ(FieldStarts("a,,bc", QuoteUse::kHonour), (Starts{0, 2, 3}));
  EXPECT_EQ(FieldStarts(",", QuoteUse::kHonour), (Starts{0, 1}));
}

TEST(CheckCsvTest, QuotedCommasSeparateNothingWhereQuotesCount) {
  EXPECT_EQ(FieldStarts("\"a,b\",c", QuoteUse::kHonour), (Starts{0, 6}));
  EXPECT_EQ(FieldStarts("\"a,b\",c", QuoteUse::kIgnore), (Starts{0, 3, 6}));
  EXPECT_EQ(FieldStarts("\"a\"\",\",c", QuoteUse::kHonour), (Starts{0, 7}));
}

TEST(CheckCsvTest, AFieldStandsBetweenItsCommas) {
  EXPECT_EQ(FieldOf("a,bc,", 0, QuoteUse::kHonour), "a");
  EXPECT_EQ(FieldOf("a,bc,", 1, QuoteUse::kHonour), "bc");
  EXPECT_EQ(FieldOf("a,bc,", 2, QuoteUse::kHonour), "");
  EXPECT_EQ(FieldOf("a,bc,", 3, QuoteUse::kHonour), "");
  EXPECT_EQ(FieldOf("\"a,b\",c", 0, QuoteUse::kHonour), "\"a,b\"");
}

TEST(CheckCsvTest, RecordsMayHoldQuotedLineFeeds) {
  const Testing::ScratchFolder folder;
  Hovar::RecordWalker walker(folder.Write("f", "a,b\n\n\"c\n\"\"d\",e\nf"));
  struct Record {
    std::string text;
    std::int64_t offset;
    bool hasLineFeed;
  };
  for (const Record& record : {Record{"a,b", 0, true}, Record{"", 4, true},
                               Record{"\"c\n\"\"d\",e", 5, true}, Record{"f", 15, false}}) {
    ASSERT_TRUE(walker.Next());
    EXPECT_EQ(walker.Record(), record.text);
    EXPECT_EQ(walker.Offset(), record.offset);
    EXPECT_EQ(walker.HasLineFeed(), record.hasLineFeed);
  }
  EXPECT_FALSE(walker.Next());
}

TEST(CheckCsvTest, RecordsAcrossBlocks) {
  const Testing::ScratchFolder folder;
  for (const std::size_t length : {65535U, 65536U, 65537U, 140000U}) {
    const std::string first(length, 'x');
    Hovar::RecordWalker walker(folder.Write("f", first + "\ny\n"));
    ASSERT_TRUE(walker.Next());
    EXPECT_EQ(walker.Record(), first);
    ASSERT_TRUE(walker.Next());
    EXPECT_EQ(walker.Record(), "y");
    EXPECT_EQ(walker.Offset(), static_cast<std::int64_t>(length) + 1);
    EXPECT_FALSE(walker.Next());
  }
}

TEST(CheckCsvTest, FieldsAreDecoded) {
  EXPECT_EQ(Hovar::DecodedField(""), "");
  EXPECT_EQ(Hovar::DecodedField("a b"), "a b");
  EXPECT_EQ(Hovar::DecodedField("\"a,b\""), "a,b");
  EXPECT_EQ(Hovar::DecodedField("\"a \"\"b\"\"\""), "a \"b\"");
  EXPECT_EQ(Hovar::DecodedField("\"\""), "");
}

TEST(CheckCsvTest, TheHeaderIsTheFirstRecord) {
  const Testing::ScratchFolder folder;
  EXPECT_EQ(Hovar::HeaderOf(folder.Write("f", "a,\"b\nc\"\nd\n")), "a,\"b\nc\"");
  EXPECT_EQ(Hovar::HeaderOf(folder.Write("f", "")), "");
  EXPECT_THROW(Hovar::HeaderOf("/nowhere/f"), Hovar::UnreadableFile);
}

TEST(CheckCsvTest, TheFirstQuoteThatBreaksTheRules) {
  using Kind = Hovar::WrongQuote::Kind;
  const Testing::ScratchFolder folder;
  const auto inFile = [&folder](const std::string& content) {
    return Hovar::WrongQuoteIn(folder.Write("f", content));
  };
  const auto expect = [&inFile](const std::string& content, Kind kind, std::int64_t offset,
                                std::int64_t stop) {
    SCOPED_TRACE(content);
    const std::optional<Hovar::WrongQuote> wrong = inFile(content);
    ASSERT_TRUE(wrong.has_value());
    EXPECT_EQ(wrong->kind, kind);
    EXPECT_EQ(wrong->offset, offset);
    EXPECT_EQ(wrong->stop, stop);
  };
  for (const char* good : {"", "a,\"b\"\nc,\"d\"\n", "\"a\"\"\",\"\"\n", "\"a\nb,\"", "\"\"\"\""}) {
    EXPECT_FALSE(inFile(good).has_value()) << good;
  }
  expect("\"", Kind::kOpen, 0, 1);
  expect("a,b\n\"c\",\"d\n", Kind::kOpen, 8, 11);
  expect("a,b\"c\n\"d\",e\n", Kind::kWithin, 3, 4);  // not the one of d, where the count is odd
  expect("a\"\"b\n", Kind::kWithin, 1, 2);
  expect("\"a\"b,c\n", Kind::kOther, 3, 4);
  expect("a,\"b,c\nd,\"e\",f\n", Kind::kOther, 2, 11);  // closed by the quote before e
  EXPECT_THROW(Hovar::WrongQuoteIn("/nowhere/f"), Hovar::UnreadableFile);
}

}  // namespace
