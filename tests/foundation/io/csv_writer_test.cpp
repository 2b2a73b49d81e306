#include "foundation/io/csv_writer.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/io/csv_reader.h"
#include "support/all_texts.h"
#include "support/memory_stream.h"
#include "support/raised.h"

namespace {

using Testing::MemoryStream;
using Testing::Quoted;
using Vell::String;
using Vell::IO::kEndOfStream;
using Vell::IO::TextWriter;
using Vell::IO::WriteField;

std::string Written(std::string_view text) {
  const auto stream = Vell::MakeShared<MemoryStream>();
  TextWriter writer(stream);
  WriteField(writer, text);
  return stream->Content();
}

TEST(WriteFieldTest, QuotesOnlyWhereNeeded) {
  struct Case {
    std::string text;
    std::string field;
  };
  const Case cases[] = {
      {"", ""},
      {"age", "age"},
      {" blanks stay ", " blanks stay "},
      {"a;b\tc\r", "a;b\tc\r"},
      {"[Y|X,P=0]", "\"[Y|X,P=0]\""},
      {"two\nlines", "\"two\nlines\""},
      {"say \"x\"", "\"say \"\"x\"\"\""},
      {"\"", "\"\"\"\""},
      {",", "\",\""},
      {"\n", "\"\n\""},
      {"\",\n", "\"\"\",\n\""},
      {std::string("a\0b", 3), std::string("a\0b", 3)},
      {"\xC3\xA4", "\xC3\xA4"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Written(c.text), c.field) << Quoted(c.text);
  }
}

TEST(WriteFieldTest, EveryTextOfSixCharactersIsReadBack) {
  // Without NUL bytes, which no field may hold when it is read.
  const auto stream = Vell::MakeShared<MemoryStream>();
  TextWriter writer(stream);
  Testing::ForAllTexts("a,\"\n\r ", 6, [&](const std::string& text) {
    for (const char separator : {',', '\n'}) {
      const std::int64_t start = stream->Tell();
      WriteField(writer, text);
      writer.Write(separator);
      stream->Seek(start);
      String field;
      Vell::IO::ReadField(field, *stream);
      ASSERT_EQ(field.View(), text) << Quoted(text);
      ASSERT_EQ(stream->ReadByte(), separator) << Quoted(text);
      stream->Seek(0);
    }
  });
}

TEST(WriteFieldTest, LastFieldOfAFileIsReadBack) {
  for (const char* const text : {"", "a", "a,b", "\"", "a\"", "\n", "\r"}) {
    MemoryStream stream(Written(text));
    String field;
    Vell::IO::ReadField(field, stream);
    EXPECT_EQ(field.View(), text);
    EXPECT_EQ(stream.ReadByte(), kEndOfStream);
  }
}

TEST(WriteFieldTest, FailingStreamIsAnIOException) {
  for (const char* const text : {"a", "a,b", "\""}) {
    const auto stream = Vell::MakeShared<MemoryStream>();
    stream->FailWrites();
    TextWriter writer(stream);
    Testing::ExpectRaises<Vell::Exceptions::IOException>("IO Exception",
                                                         [&] { WriteField(writer, text); });
  }
}

}  // namespace
