#include "foundation/io/text_sink.h"

namespace Vell::IO {

void TextSink::Unget(int /*byte*/) { RequireSuccess(false); }

void TextSink::Write(const void* buffer, std::size_t count) {
  if (use_ == Use::kKeep) {
    text_.Append(std::string_view(static_cast<const char*>(buffer), count));
  }
}

void TextSink::Seek(std::int64_t /*offset*/, int /*origin*/) { RequireSuccess(false); }

}  // namespace Vell::IO
