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

/// Bytes whose value shows their place, also modulo the size of a block.
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

/// A file stream beside a text in memory. Each operation does the same with both and compares them.
class StreamAndText {
 public:
  StreamAndText(const ScratchFolder& folder, std::uint32_t mode, SeededRandom& random)
      : _folder(folder),
        _random(random),
        _isAppending((mode & 255) == Mode::kReadAppend),
        _stream(String(std::string_view(
                    folder.Write("f", PlacedBytes(kBlock + random.Integer(-3, 3))))),
                mode),
        _text(folder.Read("f")) {}  // empty where opening empties the file

  /// One operation, chosen by chance.
  void Step() {
    const int previousByte = std::exchange(_lastByte, kEndOfStream);
    switch (_random.Integer(0, 10)) {
      case 0:
      case 1:
        return ReadByte();
      case 2:
        ASSERT_EQ(_stream.Peek(), ByteAt(_text, _place));
        ASSERT_EQ(_stream.IsEof(), _place >= Size());
        return;
      case 3:
        return Read(_random.Bit() ? _random.Integer(65530, 70000) : _random.Integer(0, 40));
      case 4:
        return Unget(previousByte);
      case 5:
        Change("#");
        _random.Bit() ? _stream.WriteByte('#') : _stream.Put('#');
        return;
      case 6:
        return Write(_random.Integer(0, 3) != 0 ? _random.Integer(0, 40)
                                                : _random.Integer(65530, 70000));
      case 7:
        return Seek();
      case 8:
        return Flush();
      case 9:
        return TakeFromWindow();
      default:
        return _stream.Seek(0, 1);
    }
  }

  void ExpectSamePlace() { ASSERT_EQ(_stream.Tell(), _place); }

  void CloseAndCompare() {
    _stream.Close();
    EXPECT_TRUE(_folder.Read("f") == _text);
  }

 private:
  [[nodiscard]] std::int64_t Size() const { return static_cast<std::int64_t>(_text.size()); }

  void Change(std::string_view bytes) {
    _place = _isAppending ? Size() : _place;
    _text.resize(static_cast<std::size_t>(std::max(Size(), _place)));
    _text.replace(static_cast<std::size_t>(_place), bytes.size(), bytes);
    _place += static_cast<std::int64_t>(bytes.size());
  }

  void ReadByte() {
    _lastByte = ByteAt(_text, _place);
    ASSERT_EQ(_stream.ReadByte(), _lastByte);
    _place += _lastByte != kEndOfStream ? 1 : 0;
    ASSERT_EQ(_stream.IsEof(), _lastByte == kEndOfStream);
  }

  void Read(std::int32_t size) {
    std::string buffer(static_cast<std::size_t>(size), '\0');
    const std::size_t count = _stream.Read(buffer.data(), buffer.size());
    const std::string expected =
        _place < Size() ? _text.substr(static_cast<std::size_t>(_place), buffer.size()) : "";
    ASSERT_TRUE(buffer.substr(0, count) == expected);
    _place += static_cast<std::int64_t>(count);
  }

  void Unget(int byte) {
    if (byte != kEndOfStream) {
      _stream.Unget(byte);
      --_place;
    }
  }

  void Write(std::int32_t size) {
    const std::string bytes(static_cast<std::size_t>(size),
                            static_cast<char>(_random.Integer('A', 'Z')));
    if (Size() < 4 * kBlock && !bytes.empty()) {
      Change(bytes);
      if (_random.Bit()) {
        _stream.Write(bytes.data(), bytes.size());
      } else {
        _stream.Put(bytes);
      }
    }
  }

  /// Often near the end of a block or of the file, sometimes a little beyond it.
  void Seek() {
    const std::int64_t anchors[] = {0, kBlock, 2 * kBlock, Size()};
    const std::int64_t anchor = anchors[_random.Integer(0, 3)];
    _place = std::clamp<std::int64_t>(anchor + _random.Integer(-40, 40), 0, Size() + 3);
    _stream.Seek(_place);
    ASSERT_FALSE(_stream.IsEof());
  }

  void Flush() {
    _stream.Flush();
    ASSERT_EQ(_stream.Length(), Size());
    if (_random.Integer(0, 4) == 0) {
      ASSERT_TRUE(_folder.Read("f") == _text);
    }
  }

  void TakeFromWindow() {
    const std::string_view window = _stream.Window();
    ASSERT_EQ(window.empty(), _place >= Size());
    ASSERT_TRUE(window.empty() ||
                _text.compare(static_cast<std::size_t>(_place), window.size(), window) == 0);
    const auto taken = _random.Integer(0, static_cast<std::int32_t>(window.size()));
    _stream.TakeFromWindow(static_cast<std::size_t>(taken));
    _place += taken;
  }

  const ScratchFolder& _folder;
  SeededRandom& _random;
  bool _isAppending;
  FileStream _stream;
  std::string _text;
  std::int64_t _place = 0;
  int _lastByte = kEndOfStream;
};

TEST_P(TurnTest, ReadingAndWritingInTurnEqualsATextInMemory) {
  const ScratchFolder folder;
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    SeededRandom random(seed);
    SCOPED_TRACE(random.Text());
    StreamAndText both(folder, GetParam(), random);
    for (int step = 0; step < 1500; ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      ASSERT_NO_FATAL_FAILURE(both.Step());
      ASSERT_NO_FATAL_FAILURE(both.ExpectSamePlace());
    }
    both.CloseAndCompare();
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
