// Streams and writers over things that fail, interrupt, or have no position: full disks, pipes,
// signals.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>

#include "foundation/io/file_stream.h"
#include "foundation/io/log.h"
#include "foundation/io/standard_writers.h"
#include "foundation/io/text_writer.h"
#include "support/allocation_fault.h"
#include "support/child_process.h"
#include "support/files.h"
#include "support/raised.h"

namespace {

namespace Mode = Vell::IO::Mode;
using Testing::ExpectRaises;
using Testing::Pipe;
using Testing::ScratchFolder;
using Vell::String;
using Vell::Exceptions::IOException;
using Vell::IO::FileStream;
using Vell::IO::kEndOfStream;

void ExpectIOException(const std::function<void()>& call) {
  ExpectRaises<IOException>("IO Exception", call);
}

std::string ManyBytes(std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) {
    bytes += static_cast<char>(i * 31 + i / 1000);
  }
  return bytes;
}

TEST(FullDiskTest, FailsAtFlush) {
  FileStream stream(String("/dev/full"), Mode::kWriteText);
  stream.Write("lost", 4);
  ExpectIOException([&] { stream.Flush(); });
}

TEST(FullDiskTest, FailsAtClose) {
  FileStream stream(String("/dev/full"), Mode::kWriteText);
  stream.WriteByte('x');
  ExpectIOException([&] { stream.Close(); });
}

TEST(FullDiskTest, FailsWhenABlockIsFull) {
  ExpectIOException([] {
    FileStream stream(String("/dev/full"), Mode::kWriteText);
    for (int i = 0; i < 1'000'000; ++i) {
      stream.WriteByte('x');
    }
    FAIL() << "nobody noticed";
  });
  ExpectIOException([] {
    FileStream stream(String("/dev/full"), Mode::kWriteText);
    const std::string bytes(1'000'000, 'x');
    stream.Write(bytes.data(), bytes.size());
    FAIL() << "nobody noticed";
  });
}

TEST(FullDiskTest, FailsBeforeSeekingOrReadingCouldLoseBytes) {
  ExpectIOException([] {
    FileStream stream(String("/dev/full"), Mode::kReadWriteExisting | Mode::kBinary);
    stream.WriteByte('x');
    stream.Seek(0);
  });
  ExpectIOException([] {
    FileStream stream(String("/dev/full"), Mode::kReadWriteExisting | Mode::kBinary);
    stream.WriteByte('x');
    stream.ReadByte();
  });
}

TEST(FullDiskTest, TryFlushAnswersWithoutAnError) {
  Testing::OutputCapture capture;
  FileStream stream(String("/dev/full"), Mode::kWriteText);
  EXPECT_TRUE(stream.TryFlush()) << "nothing to write yet";
  stream.WriteByte('x');
  EXPECT_FALSE(stream.TryFlush());
  EXPECT_EQ(capture.TakeError(), "");
}

TEST(FullDiskTest, DroppedStreamSaysNothing) {
  Testing::OutputCapture capture;
  { FileStream(String("/dev/full"), Mode::kWriteText).WriteByte('x'); }
  EXPECT_EQ(capture.TakeError(), "");
}

TEST(FullDiskTest, WrappedFileFailsAtClose) {
  const ScratchFolder folder;
  const Pipe pipe;
  Testing::ReplaceHandle(pipe.WriteEnd(), "/dev/full");
  std::array<unsigned char, 1024> buffer{};
  FileStream stream(pipe.WriteEnd(), Mode::kWriteText, buffer);
  stream.WriteByte('x');
  ExpectIOException([&] { stream.Close(); });
}

TEST(ClosedHandleTest, ReadingAndWritingFail) {
  constexpr int kNoHandle = 1'000'000;  // none of these is open
  std::array<unsigned char, 1024> buffer{};
  FileStream in(kNoHandle, Mode::kReadText, buffer);
  ExpectIOException([&] { in.ReadByte(); });
  ExpectIOException([&] { in.Peek(); });
  ExpectIOException([&] { in.Length(); });
  FileStream out(kNoHandle, Mode::kWriteText, buffer);
  out.WriteByte('x');
  ExpectIOException([&] { out.Flush(); });
}

TEST(FullDiskTest, LogLineFails) {
  Vell::IO::LogWriterList log;
  log.AttachFile(String("/dev/full"));
  ExpectRaises<IOException>("IO Exception", [&log] { log.WriteLine("lost"); });
}

TEST(FullDiskTest, LineOfAWriterThatFlushesFailsWhenItEnds) {
  Vell::IO::TextWriter writer(Vell::MakeShared<FileStream>(String("/dev/full"), Mode::kWriteText),
                              Vell::IO::LineEnd::kFlush);
  writer.Write("lost");
  ExpectRaises<IOException>("IO Exception", [&writer] { writer.EndLine(); });
}

TEST(FullDiskTest, TryFlushTellsWhetherStandardOutputTookEverything) {
  EXPECT_TRUE(Vell::IO::TryFlushStandardOutput());
  const Testing::ProcessEnd end = Testing::RunInChild([] {
    Testing::ReplaceHandle(1, "/dev/full");
    Vell::IO::StandardOutput().Write("text");
    return Vell::IO::TryFlushStandardOutput() ? 1 : 0;
  });
  EXPECT_EQ(end, Testing::ProcessEnd{0});
}

TEST(PipeTest, WrappedFileStaysOpenAndHasNoName) {
  const Testing::Pipe pipe;
  std::array<unsigned char, 1024> buffer{};
  {
    FileStream stream(pipe.WriteEnd(), Mode::kWriteText, buffer);
    EXPECT_EQ(stream.Name(), "");
    EXPECT_EQ(stream.OpenMode(), 258u);
    stream.Put("one ");
    stream.Close();
  }
  ASSERT_TRUE(Testing::IsOpenHandle(pipe.WriteEnd()));
  pipe.Write("two");
  std::string received;
  while (received.size() < 7) {
    received += static_cast<char>(pipe.ReadByte());
  }
  EXPECT_EQ(received, "one two");
}

TEST(PipeTest, WrappedFileNeedsNoMemory) {
  const Testing::Pipe pipe;
  std::array<unsigned char, 1024> buffer{};
  const Testing::AllocationFault fault(1, Testing::AllocationFault::Extent::kFromThenOn);
  FileStream stream(pipe.WriteEnd(), Mode::kWriteText, buffer);
  stream.Put("text");
  stream.Flush();
  EXPECT_EQ(pipe.ReadByte(), 't');
  EXPECT_FALSE(fault.HasFired());
}

TEST(PipeTest, GivesWhatIsThereWithoutWaitingForAFullBlock) {
  const Pipe pipe;
  pipe.Write("ab");
  std::array<unsigned char, 1024> buffer{};
  FileStream stream(pipe.ReadEnd(), Mode::kReadText, buffer);
  EXPECT_EQ(stream.Peek(), 'a');
  EXPECT_EQ(stream.ReadByte(), 'a');
  EXPECT_EQ(stream.ReadByte(), 'b');
  pipe.Write("c");
  EXPECT_EQ(stream.ReadByte(), 'c');
}

TEST(PipeTest, ReadWaitsForAllBytesOrTheEnd) {
  Pipe pipe;
  Testing::ChildProcess writer([&pipe] {
    for (const char* const part : {"ab", "cde", "f"}) {
      pipe.Write(part);
      Testing::SleepMilliseconds(2);
    }
    return 0;
  });
  pipe.CloseWriteEnd();
  std::array<unsigned char, 1024> block{};
  FileStream stream(pipe.ReadEnd(), Mode::kReadText, block);
  char buffer[10];
  EXPECT_EQ(stream.Read(buffer, 4), 4u);
  EXPECT_EQ(std::string_view(buffer, 4), "abcd");
  EXPECT_FALSE(stream.IsEof());
  EXPECT_EQ(stream.Read(buffer, 10), 2u);
  EXPECT_EQ(std::string_view(buffer, 2), "ef");
  EXPECT_TRUE(stream.IsEof());
  EXPECT_EQ(writer.Wait(), Testing::ProcessEnd{0});
}

TEST(PipeTest, HasNoPosition) {
  const Pipe pipe;
  pipe.Write("ab");
  std::array<unsigned char, 1024> buffer{};
  FileStream stream(pipe.ReadEnd(), Mode::kReadText, buffer);
  EXPECT_EQ(stream.ReadByte(), 'a');
  ExpectIOException([&] { stream.Tell(); });
  ExpectIOException([&] { stream.Seek(0); });
  ExpectIOException([&] { stream.Seek(0, 2); });
}

// However little or much of it was read: what is in the block is no file to move in.
TEST(NamedPipeTest, HasNoPosition) {
  const ScratchFolder folder;
  const std::string path = folder.File("pipe");
  Testing::MakeNamedPipe(path);
  FileStream writer(String(std::string_view(path)), Mode::kReadWriteExisting | Mode::kText);
  FileStream fresh(String(std::string_view(path)), Mode::kReadText);
  EXPECT_EQ(fresh.TellOr(-7), -7);
  ExpectIOException([&] { fresh.Tell(); });
  writer.Put("abc");
  writer.Flush();
  FileStream stream(String(std::string_view(path)), Mode::kReadText);
  EXPECT_EQ(stream.ReadByte(), 'a');
  ExpectIOException([&] { stream.Seek(0); });
  ExpectIOException([&] { stream.Seek(0, 1); });
  ExpectIOException([&] { stream.Tell(); });
}

TEST(NamedPipeTest, IsReadLikeAFile) {
  const ScratchFolder folder;
  const std::string path = folder.File("pipe");
  Testing::MakeNamedPipe(path);
  const std::string bytes = ManyBytes(150'000);
  Testing::ChildProcess writer([&] {
    FileStream stream(String(std::string_view(path)), Mode::kWriteText);
    stream.Write(bytes.data(), bytes.size());
    stream.Close();
    return 0;
  });
  FileStream stream(String(std::string_view(path)), Mode::kReadText);
  std::string read;
  for (int byte = stream.ReadByte(); byte != kEndOfStream; byte = stream.ReadByte()) {
    stream.Unget(byte);
    read += static_cast<char>(stream.ReadByte());
  }
  EXPECT_TRUE(read == bytes);
  EXPECT_EQ(writer.Wait(), Testing::ProcessEnd{0});
}

TEST(InterruptedCallTest, OpeningAndReadingGoOnWithoutLoss) {
  const ScratchFolder folder;
  const std::string path = folder.File("pipe");
  Testing::MakeNamedPipe(path);
  const std::string bytes = ManyBytes(200'000);
  Testing::ChildProcess writer([&] {
    Testing::SleepMilliseconds(20);  // the reader waits for the pipe to be opened
    FileStream stream(String(std::string_view(path)), Mode::kWriteText);
    for (std::size_t i = 0; i < bytes.size(); i += 10'000) {
      stream.Write(bytes.data() + i, 10'000);
      stream.Flush();
      Testing::SleepMilliseconds(4);  // the reader waits for bytes
    }
    return 0;
  });
  const Testing::Interruptions interruptions;
  FileStream stream(String(std::string_view(path)), Mode::kReadText);
  std::string read(bytes.size() + 1, '\0');
  read.resize(stream.Read(read.data(), read.size()));
  EXPECT_TRUE(read == bytes);
  EXPECT_GT(interruptions.Count(), 0);
}

TEST(InterruptedCallTest, WritingGoesOnWithoutLoss) {
  Pipe pipe;
  const std::string bytes = ManyBytes(400'000);
  Testing::ChildProcess reader([&] {
    pipe.CloseWriteEnd();
    std::array<unsigned char, 4096> block{};
    FileStream stream(pipe.ReadEnd(), Mode::kReadText, block);
    std::string read(bytes.size() + 1, '\0');
    std::size_t count = 0;
    while (!stream.IsEof()) {
      count += stream.Read(read.data() + count, std::min<std::size_t>(read.size() - count, 20'000));
      Testing::SleepMilliseconds(2);  // the writer waits for room
    }
    return count == bytes.size() && read.compare(0, count, bytes) == 0 ? 0 : 1;
  });
  pipe.CloseReadEnd();
  {
    const Testing::Interruptions interruptions;
    std::array<unsigned char, 4096> block{};
    FileStream stream(pipe.WriteEnd(), Mode::kWriteText, block);
    stream.Write(bytes.data(), bytes.size());
    stream.Close();
    EXPECT_GT(interruptions.Count(), 0);
  }
  pipe.CloseWriteEnd();
  EXPECT_EQ(reader.Wait(), Testing::ProcessEnd{0});
}

TEST(InputFileTest, ClosingLosesNothingAndCannotFail) {
  const ScratchFolder folder;
  Testing::OutputCapture capture;
  FileStream stream(String(std::string_view(folder.Write("f", "abc"))), Mode::kReadText);
  stream.ReadByte();
  stream.Close();
  EXPECT_EQ(capture.TakeError(), "");
}

}  // namespace
