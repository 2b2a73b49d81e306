// A stream over bytes in memory beside the one over a file that holds them: readers see no
// difference, where lines end in line feeds as well as where a return belongs to the line's end.

#include "tools/support/memory_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/io/file_stream.h"
#include "foundation/xml/xml_reader.h"
#include "support/all_texts.h"
#include "support/files.h"
#include "support/outcome.h"
#include "support/seeded_random.h"

namespace {

using Hovar::MemoryStream;
using Testing::ScratchFolder;
using Vell::IO::FileStream;
using Vell::IO::kEndOfStream;
using Vell::IO::Stream;
using Vell::IO::Platform::LineEnds;

constexpr LineEnds kBothEnds[] = {LineEnds::kLineFeeds, LineEnds::kWithCarriageReturns};

FileStream OpenFile(const std::string& path, LineEnds lineEnds) {
  return {Vell::String(std::string_view(path)), Vell::IO::Mode::kReadText, lineEnds};
}

/// What a stream gives byte by byte, with its position before and after each, and again when the
/// byte has been put back; then from each of the positions on.
std::vector<std::int64_t> WalkThrough(Stream& stream) {
  std::vector<std::int64_t> seen;
  std::vector<std::int64_t> places;
  for (bool isEnd = false; !isEnd;) {
    places.push_back(stream.Tell());
    seen.push_back(stream.Peek());
    seen.push_back(stream.Tell());
    const int byte = stream.ReadByte();
    isEnd = byte == kEndOfStream;
    seen.push_back(byte);
    seen.push_back(stream.Tell());
    seen.push_back(stream.IsEof() ? 1 : 0);
    if (!isEnd) {
      seen.push_back(stream.Peek());
      stream.Unget(byte);
      seen.push_back(stream.Tell());
      seen.push_back(stream.ReadByte());
    }
  }
  for (const std::int64_t place : places) {
    stream.Seek(place);
    seen.push_back(stream.IsEof() ? 1 : 0);
    for (int byte = stream.ReadByte(); byte != kEndOfStream; byte = stream.ReadByte()) {
      seen.push_back(byte);
      seen.push_back(stream.Tell());
    }
  }
  seen.push_back(stream.Length());
  seen.insert(seen.end(), places.begin(), places.end());
  return seen;
}

TEST(MemoryStreamTest, GivesEveryByteAndPositionAsTheFileDoes) {
  const ScratchFolder folder;
  Testing::ForAllTexts("a\r\n", 5, [&](const std::string& text) {
    const std::string path = folder.Write("f", text);
    for (const LineEnds lineEnds : kBothEnds) {
      FileStream file = OpenFile(path, lineEnds);
      MemoryStream memory(text, path, lineEnds);
      ASSERT_EQ(WalkThrough(memory), WalkThrough(file))
          << Testing::Quoted(text) << static_cast<int>(lineEnds);
    }
  });
}

/// What one operation, chosen by a number, gives. The last byte that was read is in `last`.
std::string Operate(Stream& stream, int operation, std::int64_t argument, int& last) {
  std::string result;
  switch (operation) {
    case 0:
      result = std::to_string(stream.Peek());
      break;
    case 1:
      if (last != kEndOfStream) {
        stream.Unget(last);
      }
      last = kEndOfStream;
      break;
    case 2: {
      std::string bytes(static_cast<std::size_t>(argument), '\0');
      bytes.resize(stream.Read(bytes.data(), bytes.size()));
      last = bytes.empty() ? kEndOfStream : static_cast<unsigned char>(bytes.back());
      result = bytes;
      break;
    }
    case 3: {
      const std::string_view window = stream.Window();
      const std::size_t size = std::min<std::size_t>(window.size(), 1);
      result = window.substr(0, size);
      last = size == 0 ? kEndOfStream : static_cast<unsigned char>(window[0]);
      stream.TakeFromWindow(size);
      break;
    }
    case 4: {
      std::int32_t value = 0;
      result = Testing::Observe([&] {
                 result = std::to_string(stream.Scan("%d", &value, sizeof value));
               }).Failure();
      result += std::to_string(value);
      last = kEndOfStream;
      break;
    }
    default:
      last = stream.ReadByte();
      result = std::to_string(last);
  }
  return result + " at " + std::to_string(stream.Tell()) + (stream.IsEof() ? " end" : "");
}

TEST(MemoryStreamTest, AnyOperationsGiveWhatTheyGiveOnTheFile) {
  Testing::SeededRandom random(7);
  SCOPED_TRACE(random.Text());
  const ScratchFolder folder;
  constexpr std::string_view kAlphabet = "a1 2-\r\n\n";
  for (int round = 0; round < 60; ++round) {
    std::string text;
    for (int i = random.Integer(0, 30); i > 0; --i) {
      text += kAlphabet[static_cast<std::size_t>(random.Integer(0, 7))];
    }
    const std::string path = folder.Write("f", text);
    const LineEnds lineEnds = kBothEnds[round % 2];
    FileStream file = OpenFile(path, lineEnds);
    MemoryStream memory(text, path, lineEnds);
    int lastOfFile = kEndOfStream;
    int lastOfMemory = kEndOfStream;
    for (int i = 0; i < 40; ++i) {
      const int operation = random.Integer(0, 6);
      const std::int64_t argument = random.Integer(1, 5);
      ASSERT_EQ(Operate(memory, operation, argument, lastOfMemory),
                Operate(file, operation, argument, lastOfFile))
          << Testing::Quoted(text) << " step " << i << " operation " << operation;
    }
  }
}

TEST(MemoryStreamTest, ErrorsNameTheFile) {
  const std::string failure =
      Testing::Observe([] {
        Vell::XmlReader reader(Vell::MakeShared<MemoryStream>("<Data>", "my definition.xml"));
        reader.ReadStartTag("Folder");
      }).error;
  EXPECT_EQ(failure,
            "Error: Invalid input in file \"my definition.xml\": expected \"Folder\", current "
            "\"Data>\"\n");
}

TEST(MemoryStreamTest, NothingCanBeWritten) {
  MemoryStream stream("abc", "f");
  const auto failure = [](const auto& call) { return Testing::Observe(call).Failure(); };
  const int value = 1;
  EXPECT_EQ(failure([&] { stream.WriteByte('x'); }), "IOException: IO Exception");
  EXPECT_EQ(failure([&] { stream.Put("xyz"); }), "IOException: IO Exception");
  EXPECT_EQ(failure([&] { stream.Print("%d", &value, sizeof value); }),
            "IOException: IO Exception");
  EXPECT_EQ(stream.ReadByte(), 'a');
}

TEST(MemoryStreamTest, NothingCanBePutBackBeforeTheStart) {
  MemoryStream stream("abc", "f");
  const auto failure = [&](int byte) {
    return Testing::Observe([&] { stream.Unget(byte); }).Failure();
  };
  EXPECT_EQ(failure('a'), "IOException: IO Exception");
  stream.ReadByte();
  EXPECT_EQ(failure(kEndOfStream), "IOException: IO Exception");
  EXPECT_EQ(failure('a'), "");
  EXPECT_EQ(Testing::Observe([&] { stream.Seek(-1); }).Failure(), "IOException: IO Exception");
}

}  // namespace
