// A carriage return before a line feed, where it belongs to the line's end: what is read, and that
// positions stay those of the file.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "foundation/io/file_stream.h"
#include "support/all_texts.h"
#include "support/files.h"
#include "support/seeded_random.h"

namespace {

namespace Mode = Vell::IO::Mode;
using Testing::ScratchFolder;
using Vell::String;
using Vell::IO::FileStream;
using Vell::IO::kEndOfStream;
using Vell::IO::Platform::LineEnds;

constexpr std::size_t kBlock = 65536;

/// What a text reads as, and where in the file each byte of that begins; the last place is the end.
struct Reading {
  std::string bytes;
  std::vector<std::int64_t> places;
};

Reading Expected(std::string_view text) {
  Reading reading;
  std::size_t i = 0;
  while (i < text.size()) {
    reading.places.push_back(static_cast<std::int64_t>(i));
    i += text.substr(i).starts_with("\r\n") ? 1 : 0;
    reading.bytes += text[i];
    ++i;
  }
  reading.places.push_back(static_cast<std::int64_t>(text.size()));
  return reading;
}

FileStream OpenAsWindowsText(const ScratchFolder& folder, std::string_view text) {
  return {String(folder.Write("f", text)), Mode::kReadText, LineEnds::kWithCarriageReturns};
}

/// Byte by byte, with the position before each, and each put back once.
void ExpectReads(FileStream& stream, const Reading& expected, std::size_t from = 0) {
  for (std::size_t i = from; i < expected.bytes.size(); ++i) {
    const int byte = static_cast<unsigned char>(expected.bytes[i]);
    ASSERT_EQ(stream.Tell(), expected.places[i]) << i;
    ASSERT_EQ(stream.Peek(), byte) << i;
    ASSERT_EQ(stream.ReadByte(), byte) << i;
    stream.Peek();  // may fetch the next block; the byte can be put back all the same
    stream.Unget(byte);
    ASSERT_EQ(stream.Tell(), expected.places[i]) << i;
    ASSERT_EQ(stream.ReadByte(), byte) << i;
  }
  ASSERT_EQ(stream.Tell(), expected.places.back());
  ASSERT_FALSE(stream.IsEof());
  ASSERT_EQ(stream.ReadByte(), kEndOfStream);
  ASSERT_TRUE(stream.IsEof());
  ASSERT_EQ(stream.Tell(), expected.places.back());
}

TEST(LineEndsTest, OnlyACarriageReturnBeforeALineFeedIsDropped) {
  struct Row {
    std::string_view file;
    std::string_view read;
  };
  const ScratchFolder folder;
  for (const Row& row : {Row{"", ""},
                         {"a\r\nb\r\n", "a\nb\n"},
                         {"\r\n\r\n", "\n\n"},
                         {"a\nb\n", "a\nb\n"},        // plain line feeds
                         {"a\r\nb\n", "a\nb\n"},      // both kinds
                         {"\r\r\n", "\r\n"},          // only the last one
                         {"a\rb", "a\rb"},            // in a line
                         {"a\r", "a\r"},              // at the end of the file
                         {"\n\r", "\n\r"},            // the other way round
                         {"a\x1a\r\nb", "a\x1a\nb"},  // byte 26 does not end a file
                         {std::string_view("\0\r\n\xFF", 4), std::string_view("\0\n\xFF", 3)}}) {
    SCOPED_TRACE(Testing::Quoted(row.file));
    const Reading expected = Expected(row.file);
    ASSERT_EQ(expected.bytes, row.read);
    FileStream stream = OpenAsWindowsText(folder, row.file);
    ExpectReads(stream, expected);
    EXPECT_EQ(stream.Length(), static_cast<std::int64_t>(row.file.size())) << "of the file";
  }
}

TEST(LineEndsTest, EveryShortTextReadsTheSameFromEveryPlace) {
  const ScratchFolder folder;
  Testing::ForAllTexts("a\r\n", 5, [&folder](const std::string& text) {
    SCOPED_TRACE(Testing::Quoted(text));
    const Reading expected = Expected(text);
    FileStream stream = OpenAsWindowsText(folder, text);
    for (std::size_t i = 0; i < expected.places.size(); ++i) {
      stream.Seek(expected.places[i]);
      ASSERT_NO_FATAL_FAILURE(ExpectReads(stream, expected, i));
    }
  });
}

/// Texts in which every sort of line end falls on every side of the end of a block.
std::vector<std::string> TextsAroundABlock() {
  std::vector<std::string> texts;
  for (const std::string_view end : {"\r\n", "\r", "\n", "\r\r\n", "\r\n\r\n", "\r\r"}) {
    for (std::size_t before = kBlock - 4; before <= kBlock; ++before) {
      for (const std::string_view after : {"", "x", "x\r\n"}) {
        texts.push_back("a\r\nb" + std::string(before - 4, 'x') + std::string(end) +
                        std::string(after));
      }
    }
  }
  return texts;
}

TEST(LineEndsTest, EndsOfBlocksDoNotMatter) {
  const ScratchFolder folder;
  for (const std::string& text : TextsAroundABlock()) {
    const Reading expected = Expected(text);
    SCOPED_TRACE(Testing::Quoted(text.substr(kBlock - 6)));
    FileStream stream = OpenAsWindowsText(folder, text);
    for (const std::size_t back : {30U, 3U, 2U, 1U}) {
      const std::size_t start = expected.bytes.size() - back;
      stream.Seek(expected.places[start]);
      ASSERT_NO_FATAL_FAILURE(ExpectReads(stream, expected, start));
    }
    stream.Seek(0);
    std::string read(text.size(), '\0');
    read.resize(stream.Read(read.data(), read.size()));
    ASSERT_TRUE(read == expected.bytes);
    stream.Seek(0);
    ASSERT_NO_FATAL_FAILURE(ExpectReads(stream, expected));
  }
}

TEST(LineEndsTest, WidenedWindowGoesOnBehindWhatWasThere) {
  Testing::SeededRandom random(2026);
  std::string text;
  while (text.size() < 3 * kBlock) {
    text += std::string(static_cast<std::size_t>(random.Integer(0, 300)), 'x');
    text += random.Integer(0, 3) == 0 ? "\n" : random.Integer(0, 9) == 0 ? "\r" : "\r\n";
  }
  const Reading expected = Expected(text);
  const ScratchFolder folder;
  FileStream stream = OpenAsWindowsText(folder, text);
  std::string read;
  for (std::string_view window = stream.Window(); !window.empty(); window = stream.Window()) {
    const std::size_t taken = window.size() > 1 ? window.size() / 2 : 1;
    read += window.substr(0, taken);
    stream.TakeFromWindow(taken);
    ASSERT_EQ(stream.Tell(), expected.places[read.size()]);
    stream.WidenWindow();
    ASSERT_EQ(stream.Tell(), expected.places[read.size()]);
  }
  EXPECT_TRUE(read == expected.bytes);
}

TEST(LineEndsTest, NothingIsDroppedElsewhere) {
  const ScratchFolder folder;
  const String path(folder.Write("f", "a\r\nb"));
  const auto readAll = [](FileStream stream) {
    std::string read(10, '\0');
    read.resize(stream.Read(read.data(), read.size()));
    return read;
  };
  EXPECT_EQ(readAll({path, Mode::kReadText, LineEnds::kLineFeeds}), "a\r\nb");
  EXPECT_EQ(readAll({path, Mode::kRead | Mode::kBinary, LineEnds::kWithCarriageReturns}), "a\r\nb");
}

TEST(LineEndsTest, ThePlatformDecidesWhereNothingIsSaid) {
  const ScratchFolder folder;
  FileStream stream(String(folder.Write("f", "\r\n")), Mode::kReadText);
  const bool drops = Vell::IO::Platform::TextLineEnds() == LineEnds::kWithCarriageReturns;
  EXPECT_EQ(stream.ReadByte(), drops ? '\n' : '\r');
}

TEST(LineEndsTest, LineFeedsAreWrittenAsTheyStand) {
  const ScratchFolder folder;
  FileStream stream(String(folder.File("f")), Mode::kWriteText, LineEnds::kWithCarriageReturns);
  stream.Put("a\nb\r\n");
  stream.Close();
  EXPECT_EQ(folder.Read("f"), "a\nb\r\n");
}

TEST(LineEndsTest, WritingGoesOnWhereReadingStopped) {
  const ScratchFolder folder;
  FileStream stream(String(folder.Write("f", "a\r\nb\r\nc\r\n")),
                    Mode::kReadWriteExisting | Mode::kText, LineEnds::kWithCarriageReturns);
  ASSERT_EQ(stream.ReadByte(), 'a');
  ASSERT_EQ(stream.ReadByte(), '\n');
  stream.Put("X");
  stream.Seek(0, 1);
  EXPECT_EQ(stream.ReadByte(), '\n');
  EXPECT_EQ(stream.ReadByte(), 'c');
  stream.Close();
  EXPECT_EQ(folder.Read("f"), "a\r\nX\r\nc\r\n");
}

}  // namespace
