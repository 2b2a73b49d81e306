#include "foundation/io/text_writer.h"

#include <utility>

#include "foundation/io/file_stream.h"

namespace Vell::IO {

TextWriter::TextWriter(SharedHandle<Stream> stream, LineEnd lineEnd)
    : stream_(std::move(stream)), lineEnd_(lineEnd) {}

void TextWriter::EndLine() {
  stream_->Put('\n');
  if (lineEnd_ == LineEnd::kFlush) {
    stream_->Flush();
  }
}

TextWriter CreateTextFile(const String& path) {
  return TextWriter(MakeShared<FileStream>(path, Mode::kWriteText));
}

}  // namespace Vell::IO
