// Positions of a file stream: seeking and telling around the ends of blocks, and reading and
// writing in turn, compared with a text in memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/io/file_stream.h"
#include "support/files.h"
#include "support/raised.h"
#include "support/seeded_random.h"
#include "support/streams.h"

namespace {

namespace Mode = Vell::IO::Mode;
using Testing::ExpectRaises;
using Testing::InputStream;
using Testing::ScratchFolder;
using Testing::SeededRandom;
using Vell::String;
using Vell::Exceptions::IOException;
using Vell::IO::FileStream;
using Vell::IO::kEndOfStream;

constexpr std::int64_t kBlock = 65536;

/// Bytes whose value tells their place, also modulo the size of a block.
std::string PlacedBytes(std::int64_t size) {
  std::string bytes;
  for (std::int64_t i = 0; i < size; ++i) {
    bytes += static_cast<char>((i * 7 + i / 251 + i / kBlock) % 256);
  }
  return bytes;
}

int ByteAt(const std::string& bytes, std::int64_t place) {
  return place < static_cast<std::int64_t>(bytes.size())
             ? static_cast<unsigned char>(bytes[static_cast<std::size_t>(place)])
             : kEndOfStream;
}

class FileSizeTest : public testing::TestWithParam<std::int64_t> {};

INSTANTIATE_TEST_SUITE_P(AroundBlocks, FileSizeTest,
                         testing::Values(0, 1, kBlock - 1, kBlock, kBlock + 1, 2 * kBlock - 1,
                                         2 * kBlock, 2 * kBlock + 1));

TEST_P(FileSizeTest, ReadsByteByByteToTheEnd) {
  const std::string bytes = PlacedBytes(GetParam());
  const InputStream stream(bytes);
  EXPECT_EQ(stream->Length(), GetParam());
  for (std::int64_t i = 0; i <= GetParam(); ++i) {
    ASSERT_EQ(stream->Tell(), i);
    ASSERT_FALSE(stream->IsEof());
    ASSERT_EQ(stream->ReadByte(), ByteAt(bytes, i)) << i;
  }
  EXPECT_TRUE(stream->IsEof());
  EXPECT_EQ(stream->Tell(), GetParam());
}

TEST_P(FileSizeTest, PeeksAndPutsBackEveryByte) {
  const std::string bytes = PlacedBytes(GetParam());
  const InputStream stream(bytes);
  for (std::int64_t i = 0; i < GetParam(); ++i) {
    const int expected = ByteAt(bytes, i);
    ASSERT_EQ(stream->Peek(), expected) << i;
    ASSERT_EQ(stream->ReadByte(), expected) << i;
    stream->Unget(expected);
    ASSERT_EQ(stream->ReadByte(), expected) << i;
    // Looking ahead may fetch the next block; the byte read last can be put back all the same.
    ASSERT_EQ(stream->Peek(), ByteAt(bytes, i + 1)) << i;
    stream->Unget(expected);
    ASSERT_EQ(stream->Tell(), i);
    ASSERT_EQ(stream->ReadByte(), expected) << i;
  }
}

TEST_P(FileSizeTest, ReadsInPiecesOfEverySort) {
  const std::string bytes = PlacedBytes(GetParam());
  for (const std::size_t piece : {std::size_t{1000}, std::size_t{kBlock - 1}, std::size_t{kBlock},
                                  std::size_t{kBlock + 1}, std::size_t{1} << 20}) {
    SCOPED_TRACE(piece);
    const InputStream stream(bytes);
    std::string read;
    std::string buffer(piece, '\0');
    while (!stream->IsEof()) {
      const std::size_t count = stream->Read(buffer.data(), piece);
      ASSERT_TRUE(count == piece || stream->IsEof());
      read.append(buffer, 0, count);
    }
    ASSERT_TRUE(read == bytes);
  }
}

TEST_P(FileSizeTest, SeeksFromAllThreeOrigins) {
  const std::string bytes = PlacedBytes(GetParam());
  const InputStream stream(bytes);
  const std::int64_t places[] = {0,
                                 1,
                                 2,
                                 kBlock - 2,
                                 kBlock - 1,
                                 kBlock,
                                 kBlock + 1,
                                 2 * kBlock,
                                 GetParam() - 1,
                                 GetParam(),
                                 GetParam() / 2};
  for (const std::int64_t from : places) {
    for (const std::int64_t to : places) {
      if (from < 0 || to < 0 || from > GetParam() || to > GetParam()) {
        continue;
      }
      SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
      const auto expectThere = [&] {
        ASSERT_EQ(stream->Tell(), to);
        ASSERT_EQ(stream->ReadByte(), ByteAt(bytes, to));
      };
      stream->Seek(from);
      stream->Seek(to);
      expectThere();
      stream->Seek(from);
      stream->Peek();
      stream->Seek(to - from, 1);
      expectThere();
      stream->Seek(to - GetParam(), 2);
      expectThere();
      stream->Seek(to, 0);
      expectThere();
      stream->Seek(to, 3);  // an unknown origin counts as the start
      expectThere();
      stream->Seek(to, -1);
      expectThere();
    }
  }
}

TEST(SeekTest, BeforeTheStartIsAnIOException) {
  const InputStream stream("abc");
  ExpectRaises<IOException>("IO Exception", [&] { stream->Seek(-1); });
  ExpectRaises<IOException>("IO Exception", [&] { stream->Seek(-4, 2); });
  stream->Seek(2);
  ExpectRaises<IOException>("IO Exception", [&] { stream->Seek(-3, 1); });
}

TEST(SeekTest, BehindTheEndReadsAsTheEnd) {
  const InputStream stream("abc");
  stream->Seek(100'000);
  EXPECT_EQ(stream->Tell(), 100'000);
  EXPECT_FALSE(stream->IsEof());
  EXPECT_EQ(stream->ReadByte(), kEndOfStream);
  stream->Seek(-99'998, 1);
  EXPECT_EQ(stream->ReadByte(), 'c');
}

TEST(SeekTest, FromTheCurrentPlaceCountsBytesPutBack) {
  const InputStream stream("abcdef");
  for (int i = 0; i < 4; ++i) {
    stream->ReadByte();
  }
  stream->Unget('d');
  stream->Seek(1, 1);
  EXPECT_EQ(stream->ReadByte(), 'e');
}

/// The same operations on a file stream and on a text.
class TurnTest : public testing::TestWithParam<std::uint32_t> {};

INSTANTIATE_TEST_SUITE_P(ReadWriteModes, TurnTest,
                         testing::Values(Mode::kReadWriteExisting | Mode::kBinary,
                                         Mode::kReadWriteCreate | Mode::kText,
                                         Mode::kReadAppend | Mode::kBinary));

TEST_P(TurnTest, ReadingAndWritingInTurnEqualsATextInMemory) {
  const bool isAppending = (GetParam() & 255) == Mode::kReadAppend;
  const ScratchFolder folder;
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    SeededRandom random(seed);
    SCOPED_TRACE(random.Text());
    const std::string file = folder.Write("f", PlacedBytes(kBlock + random.Integer(-3, 3)));
    FileStream stream(String(std::string_view(file)), GetParam());
    std::string text = folder.Read("f");  // empty where opening empties the file
    std::int64_t place = 0;
    int lastByte = kEndOfStream;
    const auto size = [&text] { return static_cast<std::int64_t>(text.size()); };
    const auto write = [&](std::string_view bytes) {
      place = isAppending ? size() : place;
      text.resize(static_cast<std::size_t>(std::max(size(), place)));
      text.replace(static_cast<std::size_t>(place), bytes.size(), bytes);
      place += static_cast<std::int64_t>(bytes.size());
    };
    for (int step = 0; step < 1500; ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      const int previousByte = std::exchange(lastByte, kEndOfStream);
      switch (random.Integer(0, 10)) {
        case 0:
        case 1: {
          lastByte = ByteAt(text, place);
          ASSERT_EQ(stream.ReadByte(), lastByte);
          place += lastByte != kEndOfStream ? 1 : 0;
          ASSERT_EQ(stream.IsEof(), lastByte == kEndOfStream);
          break;
        }
        case 2:
          ASSERT_EQ(stream.Peek(), ByteAt(text, place));
          ASSERT_EQ(stream.IsEof(), place >= size());
          break;
        case 3: {
          std::string buffer(
              static_cast<std::size_t>(random.Integer(0, 1) == 0 ? random.Integer(0, 40)
                                                                 : random.Integer(65530, 70000)),
              '\0');
          const std::size_t count = stream.Read(buffer.data(), buffer.size());
          const std::string expected =
              place < size() ? text.substr(static_cast<std::size_t>(place), buffer.size()) : "";
          ASSERT_TRUE(buffer.substr(0, count) == expected);
          place += static_cast<std::int64_t>(count);
          break;
        }
        case 4:
          if (previousByte != kEndOfStream) {
            stream.Unget(previousByte);
            --place;
          }
          break;
        case 5:
          write("#");
          random.Bit() ? stream.WriteByte('#') : stream.Put('#');
          break;
        case 6: {
          const std::string bytes(
              static_cast<std::size_t>(random.Integer(0, 3) != 0 ? random.Integer(0, 40)
                                                                 : random.Integer(65530, 70000)),
              static_cast<char>(random.Integer('A', 'Z')));
          if (size() < 4 * kBlock && !bytes.empty()) {
            write(bytes);
            if (random.Bit()) {
              stream.Write(bytes.data(), bytes.size());
            } else {
              stream.Put(bytes);
            }
          }
          break;
        }
        case 7: {
          // Often near the end of a block or of the file, sometimes a little behind it.
          const std::int64_t anchors[] = {0, kBlock, 2 * kBlock, size()};
          place = std::max<std::int64_t>(
              0, std::min(anchors[random.Integer(0, 3)] + random.Integer(-40, 40), size() + 3));
          stream.Seek(place);
          ASSERT_FALSE(stream.IsEof());
          break;
        }
        case 8:
          stream.Flush();
          ASSERT_EQ(stream.Length(), size());
          if (step % 50 == 0) {
            ASSERT_TRUE(folder.Read("f") == text);
          }
          break;
        case 9: {
          const std::string_view window = stream.Window();
          ASSERT_EQ(window.empty(), place >= size());
          ASSERT_TRUE(window.empty() ||
                      text.compare(static_cast<std::size_t>(place), window.size(), window) == 0);
          const auto taken =
              static_cast<std::size_t>(random.Integer(0, static_cast<std::int32_t>(window.size())));
          stream.TakeFromWindow(taken);
          place += static_cast<std::int64_t>(taken);
          break;
        }
        default:
          stream.Seek(0, 1);
          break;
      }
      ASSERT_EQ(stream.Tell(), place);
    }
    stream.Close();
    EXPECT_TRUE(folder.Read("f") == text);
  }
}

TEST_P(TurnTest, LengthCountsWhatIsNotFlushedYet) {
  const ScratchFolder folder;
  FileStream stream(String(std::string_view(folder.Write("f", ""))), GetParam());
  stream.Write("abc", 3);
  EXPECT_EQ(stream.Length(), 3);
  EXPECT_EQ(stream.Tell(), 3);
  stream.Seek(0);
  EXPECT_EQ(stream.ReadByte(), 'a');
}

}  // namespace
