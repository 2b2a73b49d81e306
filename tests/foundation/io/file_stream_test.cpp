#include "foundation/io/file_stream.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <tuple>

#include "support/allocation_fault.h"
#include "support/files.h"
#include "support/raised.h"
#include "support/streams.h"

namespace {

namespace Mode = Vell::IO::Mode;
using Testing::ExpectRaises;
using Testing::InputStream;
using Testing::ScratchFolder;
using Vell::String;
using Vell::Exceptions::FileOpenException;
using Vell::Exceptions::IOException;
using Vell::IO::FileStream;
using Vell::IO::kEndOfStream;

String Path(const std::string& path) { return String(std::string_view(path)); }

std::string ReadAll(Vell::IO::Stream& stream) {
  std::string bytes;
  for (int byte = stream.ReadByte(); byte != kEndOfStream; byte = stream.ReadByte()) {
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

void WriteText(Vell::IO::Stream& stream, std::string_view text) {
  stream.Write(text.data(), text.size());
}

void ExpectIOException(const std::function<void()>& call) {
  ExpectRaises<IOException>("IO Exception", call);
}

struct ModeCase {
  std::uint32_t access;
  bool needsFile;
  bool canRead;
  bool canWrite;
  bool truncates;
  const char* afterWriting;  // "abc" after opening and writing "X"
};

void PrintTo(const ModeCase& c, std::ostream* out) { *out << "access " << c.access; }

constexpr ModeCase kModes[] = {
    {1, true, true, false, false, "abc"},   // read
    {2, false, false, true, true, "X"},     // write
    {3, true, true, true, false, "Xbc"},    // read and write what exists
    {7, false, true, true, false, "abcX"},  // read and append
    {19, false, true, true, true, "X"},     // read and write, emptied
};

class OpenModeTest : public testing::TestWithParam<std::tuple<ModeCase, std::uint32_t>> {
 protected:
  ModeCase Case() const { return std::get<0>(GetParam()); }
  std::uint32_t OpenMode() const { return Case().access | std::get<1>(GetParam()); }

  ScratchFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(All, OpenModeTest,
                         testing::Combine(testing::ValuesIn(kModes), testing::Values(256u, 512u)),
                         [](const auto& info) {
                           return std::to_string(std::get<0>(info.param).access) +
                                  (std::get<1>(info.param) == 256 ? "Text" : "Binary");
                         });

TEST_P(OpenModeTest, OpensAnExistingFileAndKeepsOrDropsItsContent) {
  const std::string file = folder_.Write("f", "abc");
  FileStream stream(Path(file), OpenMode());
  EXPECT_EQ(stream.OpenMode(), OpenMode());
  EXPECT_EQ(stream.Name(), file);
  EXPECT_EQ(stream.Tell(), 0);
  EXPECT_EQ(stream.Length(), Case().truncates ? 0 : 3);
  stream.Close();
  EXPECT_EQ(folder_.Read("f"), Case().truncates ? "" : "abc");
}

TEST_P(OpenModeTest, CreatesAMissingFileOrNamesIt) {
  const std::string file = folder_.File("new");
  if (Case().needsFile) {
    ExpectRaises<FileOpenException>("File \"" + file + "\" can not be opened",
                                    [&] { FileStream(Path(file), OpenMode()); });
    EXPECT_FALSE(folder_.Has("new"));
  } else {
    FileStream(Path(file), OpenMode()).Close();
    EXPECT_TRUE(folder_.Has("new"));
    EXPECT_EQ(folder_.Read("new"), "");
  }
}

TEST_P(OpenModeTest, ReadsOrRefuses) {
  const std::string file = folder_.Write("f", "abc");
  FileStream stream(Path(file), OpenMode());
  if (Case().canRead) {
    EXPECT_EQ(ReadAll(stream), Case().truncates ? "" : "abc");
  } else {
    ExpectIOException([&] { stream.ReadByte(); });
    ExpectIOException([&] { stream.Peek(); });
    char byte;
    ExpectIOException([&] { stream.Read(&byte, 1); });
    ExpectIOException([&] { stream.Window(); });
  }
}

TEST_P(OpenModeTest, WritesOrRefuses) {
  const std::string file = folder_.Write("f", "abc");
  FileStream stream(Path(file), OpenMode());
  if (Case().canWrite) {
    stream.WriteByte('X');
    stream.Close();
  } else {
    const std::int32_t number = 1;
    ExpectIOException([&] { stream.WriteByte('X'); });
    ExpectIOException([&] { stream.Write("X", 1); });
    ExpectIOException([&] { stream.Put('X'); });
    ExpectIOException([&] { stream.Put("XYZ"); });
    ExpectIOException([&] { stream.Print("%d", &number, sizeof(number)); });
  }
  EXPECT_EQ(folder_.Read("f"), Case().afterWriting);
}

TEST_P(OpenModeTest, TakesAndGivesBytesAsTheyStand) {
  const std::string bytes("a\r\nb\n\r\x1A\0\xFF\r", 10);  // byte 26 ends a text nowhere
  const std::string file = folder_.Write("f", Case().truncates ? "" : bytes);
  {
    FileStream stream(Path(file), OpenMode(), Vell::IO::Platform::LineEnds::kLineFeeds);
    if (Case().truncates) {
      WriteText(stream, bytes);
      stream.Close();
    } else {
      EXPECT_EQ(ReadAll(stream), bytes);
    }
  }
  EXPECT_EQ(folder_.Read("f"), bytes);
}

TEST(InvalidOpenModeTest, EveryOtherAccessOrKindIsRefusedAndNoFileIsMade) {
  const ScratchFolder folder;
  const std::string file = folder.File("none");
  for (std::uint32_t mode = 0; mode < 1024; ++mode) {
    const std::uint32_t access = mode & 255;
    const std::uint32_t kind = mode >> 8;
    const bool isKnown =
        (access == 1 || access == 2 || access == 3 || access == 7 || access == 19) &&
        (kind == 1 || kind == 2);
    if (!isKnown) {
      SCOPED_TRACE(mode);
      ExpectRaises<IOException>("Invalid open mode", [&] { FileStream(Path(file), mode); });
    }
  }
  EXPECT_FALSE(folder.Has("none"));
}

TEST(FileStreamTest, BothKindsAtOnceAreNoKind) {
  const ScratchFolder folder;
  const std::string file = folder.Write("f", "abc");
  ExpectRaises<IOException>("Invalid open mode",
                            [&] { FileStream(Path(file), Mode::kRead | 256 | 512); });
}

TEST(FileStreamTest, FolderThatDoesNotExistCannotBeWrittenTo) {
  const ScratchFolder folder;
  const std::string file = folder.File("missing\\log.txt");
  ExpectRaises<FileOpenException>("File \"" + file + "\" can not be opened",
                                  [&] { FileStream(Path(file), Mode::kWriteText); });
}

TEST(FileStreamTest, FolderAsAnInputFileCannotBeOpenedOrRead) {
  const ScratchFolder folder;
  const std::string path = folder.Path().string();
  Testing::OutputCapture capture;
  std::string expected;
  try {
    FileStream stream(Path(path), Mode::kReadText);
    stream.ReadByte();
  } catch (const FileOpenException&) {
    expected = "Error: File \"" + path + "\" can not be opened\n";
  } catch (const IOException&) {
    expected = "Error: IO Exception\n";
  }
  EXPECT_EQ(capture.TakeError(), expected);
  EXPECT_NE(expected, "") << "the folder was read like a file";
}

TEST(FileStreamTest, EmptyPathCannotBeOpened) {
  ExpectRaises<FileOpenException>("File \"\" can not be opened",
                                  [] { FileStream(String(), Mode::kReadText); });
}

TEST(FileStreamTest, ReadByteGivesUnsignedBytesAndThenTheEnd) {
  const InputStream stream(std::string_view("\x7F\x80\xFF\0", 4));
  EXPECT_EQ(stream->ReadByte(), 127);
  EXPECT_EQ(stream->ReadByte(), 128);
  EXPECT_EQ(stream->ReadByte(), 255);
  EXPECT_EQ(stream->ReadByte(), 0);
  EXPECT_FALSE(stream->IsEof()) << "the end has not been met yet";
  EXPECT_EQ(stream->ReadByte(), kEndOfStream);
  EXPECT_TRUE(stream->IsEof());
  EXPECT_EQ(stream->ReadByte(), kEndOfStream);
}

TEST(FileStreamTest, PeekGivesTheByteThatIsReadNext) {
  const InputStream stream("ab");
  EXPECT_EQ(stream->Peek(), 'a');
  EXPECT_EQ(stream->Peek(), 'a');
  EXPECT_EQ(stream->Tell(), 0);
  EXPECT_EQ(stream->ReadByte(), 'a');
  EXPECT_EQ(stream->Peek(), 'b');
  EXPECT_EQ(stream->ReadByte(), 'b');
  EXPECT_EQ(stream->Peek(), kEndOfStream);
  EXPECT_TRUE(stream->IsEof());
  EXPECT_EQ(stream->Tell(), 2);
}

TEST(FileStreamTest, UngetPutsTheLastByteBack) {
  const InputStream stream("ab");
  stream->ReadByte();
  EXPECT_EQ(stream->ReadByte(), 'b');
  EXPECT_EQ(stream->ReadByte(), kEndOfStream);
  stream->Unget('b');
  EXPECT_FALSE(stream->IsEof()) << "there is a byte to read again";
  EXPECT_EQ(stream->Tell(), 1);
  EXPECT_EQ(stream->ReadByte(), 'b');
  EXPECT_EQ(stream->ReadByte(), kEndOfStream);
}

TEST(FileStreamTest, AByteCanBePutBackBeforeTheFirstReading) {
  const InputStream stream("abc");
  stream->Unget('x');
  for (const int byte : {'x', 'a', 'b', 'c'}) {
    EXPECT_EQ(stream->ReadByte(), byte);
  }
  EXPECT_EQ(stream->ReadByte(), kEndOfStream);
}

TEST(FileStreamTest, AnotherByteCanBePutBackWithoutChangingTheFile) {
  const InputStream stream("abc");
  stream->ReadByte();
  stream->ReadByte();
  stream->Unget('Z');
  EXPECT_EQ(stream->Peek(), 'Z');
  EXPECT_EQ(stream->ReadByte(), 'Z');
  EXPECT_EQ(stream->ReadByte(), 'c');
  stream->Seek(0);
  EXPECT_EQ(ReadAll(*stream), "abc") << "after a seek the file shows again";
}

TEST(FileStreamTest, ByteThatWasPutBackIsForgottenBySeeking) {
  const InputStream stream("abc");
  stream->ReadByte();
  stream->Unget('Z');
  stream->Seek(0);
  EXPECT_EQ(stream->ReadByte(), 'a');
}

TEST(FileStreamTest, EndCannotBePutBack) {
  const InputStream stream("ab");
  stream->ReadByte();
  ExpectIOException([&] { stream->Unget(kEndOfStream); });
}

TEST(FileStreamTest, ReadGivesFewerBytesOnlyAtTheEnd) {
  const InputStream stream("abcde");
  char buffer[8] = {};
  EXPECT_EQ(stream->Read(buffer, 2), 2u);
  EXPECT_EQ(std::string_view(buffer, 2), "ab");
  EXPECT_EQ(stream->Read(buffer, 0), 0u);
  EXPECT_EQ(stream->Read(buffer, 3), 3u);
  EXPECT_EQ(std::string_view(buffer, 3), "cde");
  EXPECT_FALSE(stream->IsEof());
  EXPECT_EQ(stream->Read(buffer, 1), 0u);
  EXPECT_TRUE(stream->IsEof());
  stream->Seek(3);
  EXPECT_FALSE(stream->IsEof());
  EXPECT_EQ(stream->Read(buffer, 8), 2u);
  EXPECT_TRUE(stream->IsEof());
}

TEST(FileStreamTest, WindowShowsWhatIsReadNext) {
  const InputStream stream("abcdef");
  EXPECT_EQ(stream->Window(), "abcdef");
  stream->TakeFromWindow(2);
  EXPECT_EQ(stream->Tell(), 2);
  EXPECT_EQ(stream->ReadByte(), 'c');
  EXPECT_EQ(stream->Window(), "def");
  stream->Unget('c');
  EXPECT_EQ(stream->Window(), "cdef");
  stream->TakeFromWindow(4);
  EXPECT_FALSE(stream->IsEof());
  EXPECT_EQ(stream->Window(), "");
  EXPECT_TRUE(stream->IsEof());
}

TEST(FileStreamTest, PuttingEqualsWriting) {
  // Pieces that fit in a block, fill it, or do not fit.
  const ScratchFolder folder;
  FileStream stream(Path(folder.File("f")), Mode::kWriteText);
  std::string expected;
  for (const std::size_t size : {0u, 1u, 65534u, 1u, 1u, 65536u, 65535u, 65537u, 200'000u, 3u}) {
    const std::string piece(size, static_cast<char>('a' + size % 26));
    stream.Put(piece);
    stream.Put('.');
    expected += piece + '.';
    EXPECT_EQ(stream.Tell(), static_cast<std::int64_t>(expected.size()));
  }
  stream.Close();
  EXPECT_TRUE(folder.Read("f") == expected);
}

TEST(FileStreamTest, WhatWasWrittenIsInTheFileAfterFlush) {
  const ScratchFolder folder;
  FileStream stream(Path(folder.File("f")), Mode::kWriteText);
  WriteText(stream, "first");
  stream.Flush();
  EXPECT_EQ(folder.Read("f"), "first");
  stream.WriteByte('!');
  EXPECT_TRUE(stream.TryFlush());
  EXPECT_EQ(folder.Read("f"), "first!");
}

TEST(FileStreamTest, DroppingAStreamWritesWhatIsLeft) {
  const ScratchFolder folder;
  { WriteText(*std::make_unique<FileStream>(Path(folder.File("f")), Mode::kWriteText), "left"); }
  EXPECT_EQ(folder.Read("f"), "left");
}

TEST(FileStreamTest, LastHandleClosesTheFile) {
  const ScratchFolder folder;
  auto first = Vell::MakeShared<FileStream>(Path(folder.File("f")), Mode::kWriteText);
  {
    const Vell::SharedHandle<Vell::IO::Stream> second = first;
    WriteText(*second, "a");
  }
  WriteText(*first, "b");
  first = {};
  EXPECT_EQ(folder.Read("f"), "ab");
}

TEST(FileStreamTest, FailingAllocationIsOutOfMemory) {
  const ScratchFolder folder;
  const std::string file = folder.Write("f", "abc");
  Testing::ExpectOutOfMemoryAtEachAllocation([&file] {
    const String path = Path(file);
    FileStream stream(path, Mode::kReadText);
    EXPECT_EQ(stream.ReadByte(), 'a');
  });
}

TEST(FileStreamTest, WidenedWindowGoesOnBehindWhatWasThere) {
  std::string text;
  for (int i = 0; i < 40'000; ++i) {
    text += std::to_string(i) + ",";
  }
  const InputStream stream(text);
  // What is taken between the widenings leaves room for as much.
  std::string taken;
  while (!stream->Window().empty()) {
    const std::string_view before = stream->Window();
    const std::string front(before.substr(0, std::min<std::size_t>(before.size(), 7)));
    taken += before.substr(0, before.size() / 2 + 1);
    const std::string rest(before.substr(before.size() / 2 + 1));
    stream->TakeFromWindow(before.size() / 2 + 1);
    const bool isWider = stream->WidenWindow();
    const std::string_view after = stream->Window();
    EXPECT_TRUE(after.starts_with(rest));
    EXPECT_EQ(isWider, after.size() > rest.size());
    EXPECT_EQ(stream->Tell(), static_cast<std::int64_t>(taken.size()));
    if (!isWider) {
      EXPECT_EQ(taken.size() + rest.size(), text.size()) << "the end of the file";
    }
  }
  EXPECT_TRUE(taken == text);
  stream->Seek(5);
  EXPECT_EQ(stream->ReadByte(), text[5]);
}

TEST(FileStreamTest, WideningAnEmptyWindowFillsIt) {
  const InputStream stream("abc");
  EXPECT_TRUE(stream->WidenWindow());
  EXPECT_EQ(stream->Window(), "abc");
  stream->TakeFromWindow(3);
  EXPECT_FALSE(stream->WidenWindow());
  EXPECT_TRUE(stream->IsEof());
}

TEST(FileStreamTest, WindowOfAClosedStreamIsNotWidened) {
  const InputStream stream("abc");
  stream->Peek();
  stream->Close();
  EXPECT_FALSE(stream->WidenWindow());
}

TEST(FileStreamTest, FullWindowIsNotWidenedAndNothingIsLost) {
  const std::string text(100'000, 'x');
  const InputStream stream(text);
  const std::size_t size = stream->Window().size();
  EXPECT_LT(size, text.size());
  EXPECT_FALSE(stream->WidenWindow());
  EXPECT_EQ(stream->Window().size(), size);
  stream->ReadByte();
  stream->Unget('y');  // now the byte belongs to the stream, not to the file
  EXPECT_EQ(ReadAll(*stream), "y" + text.substr(1));
}

}  // namespace
