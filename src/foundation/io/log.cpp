#include "foundation/io/log.h"

#include "foundation/io/file_stream.h"

namespace Vell::IO {

void LogWriterList::AttachFile(const String& path) {
  Attach(MakeShared<TextWriter>(MakeShared<FileStream>(path, Mode::kWriteText), LineEnd::kFlush));
}

void LogWriterList::Close() {
  for (const SharedHandle<TextWriter>& writer : writers_) {
    writer->Target().Close();
  }
  Clear();
}

LogWriterList& Log() noexcept {
  static LogWriterList log;
  return log;
}

}  // namespace Vell::IO
