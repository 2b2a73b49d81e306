#include "foundation/io/text_sink.h"

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Vell::IO {

void TextSink::Unget(int /*byte*/) { throw Exceptions::IOException(Messages::kErrors.ioException); }

void TextSink::Write(const void* buffer, std::size_t count) {
  if (use_ == Use::kKeep) {
    text_.Append(std::string_view(static_cast<const char*>(buffer), count));
  }
}

void TextSink::Seek(std::int64_t /*offset*/, int /*origin*/) {
  throw Exceptions::IOException(Messages::kErrors.ioException);
}

}  // namespace Vell::IO
