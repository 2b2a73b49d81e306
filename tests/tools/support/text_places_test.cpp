#include "tools/support/text_places.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace {

using Hovar::PlaceOf;
using Testing::ScratchFolder;

std::string TextOf(const Hovar::Place& place) {
  return std::to_string(place.line) + ":" + std::to_string(place.column);
}

TEST(CheckPlacesTest, EveryByteOfAShortFile) {
  const ScratchFolder folder;
  const std::string path = folder.Write("f", "ab\n\nc");
  const char* const places[] = {"1:1", "1:2", "1:3", "2:1", "3:1", "3:2", "3:2"};
  for (std::int64_t offset = 0; offset < 7; ++offset) {
    EXPECT_EQ(TextOf(PlaceOf(path, offset)), places[offset]) << offset;
  }
}

TEST(CheckPlacesTest, ColumnsAreCharactersOfUtf8) {
  const ScratchFolder folder;
  // Two bytes, three bytes, four bytes, then a byte that is no UTF-8.
  const std::string path = folder.Write("f", "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x8F\xA5\xFFx");
  EXPECT_EQ(TextOf(PlaceOf(path, 2)), "1:2");
  EXPECT_EQ(TextOf(PlaceOf(path, 5)), "1:3");
  EXPECT_EQ(TextOf(PlaceOf(path, 9)), "1:4");
  EXPECT_EQ(TextOf(PlaceOf(path, 10)), "1:5");
}

TEST(CheckPlacesTest, LinesAcrossBlocks) {
  const ScratchFolder folder;
  for (const std::size_t length : {65534U, 65535U, 65536U, 65537U, 200000U}) {
    const std::string path = folder.Write("f", std::string(length, 'x') + "\nyz\n");
    const auto end = static_cast<std::int64_t>(length);
    EXPECT_EQ(TextOf(PlaceOf(path, end - 1)), "1:" + std::to_string(length));
    EXPECT_EQ(TextOf(PlaceOf(path, end + 2)), "2:2");
    const Hovar::LineAt line = Hovar::LineOf(path, end + 2);
    EXPECT_EQ(line.offset, end + 1);
    EXPECT_EQ(line.text, "yz");
    EXPECT_EQ(Hovar::LineOf(path, 5).text.size(), length);
  }
}

TEST(CheckPlacesTest, AFileThatIsGoneIsAnError) {
  EXPECT_THROW(PlaceOf("/nowhere/f", 5), Hovar::UnreadableFile);
  EXPECT_THROW(Hovar::BytesAt("/nowhere/f", 0, 5), Hovar::UnreadableFile);
  EXPECT_THROW(Hovar::TraitsOf("/nowhere/f"), Hovar::UnreadableFile);
}

TEST(CheckPlacesTest, Bytes) {
  const ScratchFolder folder;
  const std::string path = folder.Write("f", "abcdef");
  EXPECT_EQ(Hovar::BytesAt(path, 0, 0), "");
  EXPECT_EQ(Hovar::BytesAt(path, 2, 3), "cde");
  EXPECT_EQ(Hovar::BytesAt(path, 4, 9), "ef");
  EXPECT_EQ(Hovar::BytesAt(path, 9, 1), "");
}

TEST(CheckPlacesTest, Traits) {
  const ScratchFolder folder;
  const auto traits = [&](const std::string& text) {
    return Hovar::TraitsOf(folder.Write("f", text));
  };
  EXPECT_TRUE(traits("").endsWithLineFeed);
  EXPECT_FALSE(traits("").hasByteOrderMark);
  EXPECT_EQ(traits("").firstCarriageReturnLineFeed, -1);
  EXPECT_TRUE(traits("a\n").endsWithLineFeed);
  EXPECT_FALSE(traits("a").endsWithLineFeed);
  EXPECT_TRUE(traits("\xEF\xBB\xBFx").hasByteOrderMark);
  EXPECT_FALSE(traits("x\xEF\xBB\xBF").hasByteOrderMark);
  EXPECT_EQ(traits("a\rb\n\rc\r\n\r\n").firstCarriageReturnLineFeed, 6);
  EXPECT_EQ(traits("abc\n").length, 4);
  for (const std::size_t before : {65534U, 65535U, 65536U}) {
    const Hovar::FileTraits far = traits(std::string(before, 'x') + "\r\ny\r\n");
    EXPECT_EQ(far.firstCarriageReturnLineFeed, static_cast<std::int64_t>(before));
    EXPECT_EQ(far.length, static_cast<std::int64_t>(before) + 5);
    EXPECT_FALSE(traits(std::string(before, 'x') + "\n\ry").firstCarriageReturnLineFeed >= 0);
  }
}

}  // namespace
