#include "foundation/exceptions/exceptions.h"

#include <cstdlib>
#include <string_view>

#include "foundation/io/standard_writers.h"
#include "foundation/io/stream.h"
#include "foundation/string.h"
#include "messages/error_texts.h"

namespace Vell::Exceptions {
namespace {

bool isWriting = false;  // an error line

/// Writes one line on standard error, of which `writeText` (TextWriter&) writes and ends what stands
/// behind the prefix. Writing it can raise an error itself, which would come back here; that second
/// entry ends the process, as there is no place left for a message.
template <typename WriteText>
void WriteErrorLine(WriteText writeText) {
  if (isWriting) {
    std::_Exit(EXIT_FAILURE);
  }
  isWriting = true;
  IO::TryFlushStandardOutput();
  IO::TextWriter& writer = IO::StandardError();
  writer.Write(Messages::kErrorPrefix);
  writeText(writer);
  isWriting = false;
}

}  // namespace

Exception::Exception(const Messages::Pattern& message) {
  WriteErrorLine([&](IO::TextWriter& writer) { writer.WriteLine(message.Text()); });
}

FileOpenException::FileOpenException(const char* path) {
  const std::string_view text = path != nullptr ? path : "";
  WriteErrorLine(
      [&](IO::TextWriter& writer) { writer.WriteMessage(Messages::kErrors.fileOpen, text); });
}

template <typename T>
MatchException<T>::MatchException(const T& expected, const T& current, const IO::Stream& stream) {
  WriteErrorLine([&](IO::TextWriter& writer) {
    writer.WriteMessage(Messages::kErrors.mismatch, stream.Name(), expected, current);
  });
}

template class MatchException<char>;
template class MatchException<String>;

}  // namespace Vell::Exceptions
