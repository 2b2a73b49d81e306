#include "foundation/io/text_writer.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <string_view>

#include "foundation/io/file_stream.h"
#include "support/files.h"
#include "support/memory_stream.h"
#include "support/raised.h"

namespace {

using Testing::ExpectRaises;
using Testing::MemoryStream;
using Vell::MakeShared;
using Vell::SharedHandle;
using Vell::Exceptions::IOException;
using Vell::IO::FileStream;
using Vell::IO::LineEnd;
using Vell::IO::TextWriter;

class TextWriterTest : public testing::Test {
 protected:
  SharedHandle<MemoryStream> stream_ = MakeShared<MemoryStream>();
  TextWriter writer_{stream_};
};

TEST_F(TextWriterTest, WritesTextCharactersAndNumbersOneBehindTheOther) {
  writer_.Write("a");
  writer_.Write('b');
  writer_.Write(std::int32_t{-12});
  writer_.Write(0.25);
  writer_.EndLine();
  EXPECT_EQ(stream_->Content(), "ab-120.25\n");
}

TEST_F(TextWriterTest, WritesRealsWithSixSignificantDigits) {
  writer_.WriteLine(1234567.0, ' ', 0.1 + 0.2, ' ', 1e-5, ' ', -0.0, ' ',
                    std::numeric_limits<double>::infinity());
  EXPECT_EQ(stream_->Content(), "1.23457e+06 0.3 1e-05 -0 inf\n");
}

TEST_F(TextWriterTest, LineEndIsOneLineFeed) {
  writer_.EndLine();
  writer_.WriteLine();
  writer_.WriteLine("x");
  EXPECT_EQ(stream_->Content(), "\n\nx\n");
}

TEST_F(TextWriterTest, TextMayHoldZeroBytesAndPercentSigns) {
  writer_.Write(std::string_view("\0%d\0", 4));
  writer_.Write('\0');
  EXPECT_EQ(stream_->Content(), std::string("\0%d\0\0", 5));
}

TEST_F(TextWriterTest, WholeRangeOfIntegers) {
  writer_.WriteLine(std::numeric_limits<std::int32_t>::min(), ',',
                    std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(stream_->Content(), "-2147483648,2147483647\n");
}

TEST_F(TextWriterTest, EmptyTextWritesNothing) {
  writer_.Write("");
  writer_.Write(std::string_view());
  EXPECT_EQ(stream_->Content(), "");
}

TEST_F(TextWriterTest, CopiesShareTheStream) {
  TextWriter copy = writer_;  // NOLINT(performance-unnecessary-copy-initialization)
  writer_.Write("a");
  copy.Write("b");
  EXPECT_EQ(stream_->Content(), "ab");
  EXPECT_EQ(&copy.Target(), &*stream_);
}

TEST_F(TextWriterTest, KeepsTheStreamAlive) {
  MemoryStream& stream = *stream_;
  stream_ = {};
  writer_.Write("still there");
  EXPECT_EQ(stream.Content(), "still there");
}

TEST_F(TextWriterTest, FailingStreamIsAnIOExceptionInEveryOperation) {
  stream_->FailWrites();
  const std::function<void()> calls[] = {
      [this] { writer_.Write("text"); }, [this] { writer_.Write('c'); },
      [this] { writer_.Write(1); },      [this] { writer_.Write(1.5); },
      [this] { writer_.EndLine(); },     [this] { writer_.WriteLine("a", 1); },
  };
  for (const auto& call : calls) {
    ExpectRaises<IOException>("IO Exception", call);
  }
}

TEST(LineEndTest, FlushingWriterHandsEachWholeLineOn) {
  const auto stream = MakeShared<MemoryStream>();
  TextWriter writer(stream, LineEnd::kFlush);
  writer.Write("part");
  EXPECT_EQ(stream->FlushCount(), 0);
  writer.EndLine();
  EXPECT_EQ(stream->FlushCount(), 1);
  writer.WriteLine("a", 1, 2.5, 'c');
  EXPECT_EQ(stream->FlushCount(), 2);
}

TEST(LineEndTest, OrdinaryWriterKeepsLinesUntilItIsFlushed) {
  const Testing::ScratchFolder folder;
  const auto stream = MakeShared<FileStream>(Vell::String(std::string_view(folder.File("f"))),
                                             Vell::IO::Mode::kWriteText);
  TextWriter writer(stream);
  writer.WriteLine("line");
  EXPECT_EQ(folder.Read("f"), "");
  stream->Flush();
  EXPECT_EQ(folder.Read("f"), "line\n");
}

TEST(CreateTextFileTest, CreatesOrEmptiesTheFile) {
  const Testing::ScratchFolder folder;
  folder.Write("old", "an earlier run");
  for (const char* const name : {"new", "old"}) {
    TextWriter writer = Vell::IO::CreateTextFile(Vell::String(std::string_view(folder.File(name))));
    EXPECT_EQ(folder.Read(name), "");
    writer.WriteLine("a,", 1);
    writer.Target().Close();
    EXPECT_EQ(folder.Read(name), "a,1\n");
  }
}

TEST(CreateTextFileTest, MissingFolderIsAnOpenError) {
  const Testing::ScratchFolder folder;
  const std::string file = folder.File("missing\\Chain.csv");
  ExpectRaises<Vell::Exceptions::FileOpenException>(
      "File \"" + file + "\" can not be opened",
      [&file] { Vell::IO::CreateTextFile(Vell::String(std::string_view(file))); });
}

}  // namespace
