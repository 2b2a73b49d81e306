#include "foundation/io/text_writer.h"

#include <utility>

namespace Vell::IO {

TextWriter::TextWriter(SharedHandle<Stream> stream, LineEnd lineEnd)
    : stream_(std::move(stream)), lineEnd_(lineEnd) {}

void TextWriter::Write(std::string_view text) { stream_->Write(text.data(), text.size()); }
void TextWriter::Write(char character) { stream_->WriteByte(character); }
void TextWriter::Write(std::int32_t value) { stream_->Print("%d", &value, sizeof value); }
void TextWriter::Write(double value) { stream_->Print("%lg", &value, sizeof value); }

void TextWriter::EndLine() {
  stream_->WriteByte('\n');
  if (lineEnd_ == LineEnd::kFlush) {
    stream_->Flush();
  }
}

}  // namespace Vell::IO
