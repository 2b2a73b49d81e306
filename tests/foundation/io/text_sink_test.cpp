#include "foundation/io/text_sink.h"

#include <gtest/gtest.h>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/text_writer.h"
#include "support/raised.h"

namespace {

using Vell::MakeShared;
using Vell::IO::TextSink;
using Vell::IO::TextWriter;

TEST(TextSinkTest, KeepsWhatIsWritten) {
  const auto sink = MakeShared<TextSink>(TextSink::Use::kKeep);
  TextWriter writer(sink);
  EXPECT_EQ(sink->Text(), "");
  writer.WriteLine("text ", 12, ' ', 0.5);
  writer.Write('x');
  const std::int32_t number = -3;
  sink->Print("%d", &number, sizeof number);
  EXPECT_EQ(sink->Text(), "text 12 0.5\nx-3");
  EXPECT_EQ(sink->Length(), 15);
  EXPECT_EQ(sink->Tell(), 15);
}

TEST(TextSinkTest, DropsWhatIsWritten) {
  const auto sink = MakeShared<TextSink>(TextSink::Use::kDrop);
  TextWriter(sink).WriteLine("text ", 12);
  sink->Flush();
  sink->Close();
  EXPECT_EQ(sink->Text(), "");
}

TEST(TextSinkTest, HasNothingToRead) {
  TextSink sink(TextSink::Use::kKeep);
  sink.Put("text");
  std::int32_t number = 0;
  char byte = 0;
  EXPECT_EQ(sink.ReadByte(), Vell::IO::kEndOfStream);
  EXPECT_EQ(sink.Peek(), Vell::IO::kEndOfStream);
  EXPECT_EQ(sink.Read(&byte, 1), 0U);
  EXPECT_EQ(sink.Window(), "");
  EXPECT_NE(sink.Scan("%d", &number, sizeof number), 1);
  EXPECT_TRUE(sink.IsEof());
  using Vell::Exceptions::IOException;
  Testing::ExpectRaises<IOException>("IO Exception", [&] { sink.Unget('x'); });
  Testing::ExpectRaises<IOException>("IO Exception", [&] { sink.Seek(0); });
}

}  // namespace
