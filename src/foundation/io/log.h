#pragma once

// The log: a process-wide list of writers to which every log line goes, in the order of the list.
// The first writer is standard output; every single run appends one on its log file. Writers are
// never detached, so in a batch the log file of an earlier run also receives the lines of the later
// ones.

#include "foundation/growable_array.h"
#include "foundation/io/text_writer.h"
#include "messages/pattern.h"

namespace Vell::IO {

/// The writers of the log, which it shares with whoever else holds them.
class LogWriterList {
 public:
  /// Adds a writer to the end of the list, also one that is in it already.
  /// Errors: "Out of memory".
  void Attach(SharedHandle<TextWriter> writer) { writers_.Append(std::move(writer)); }

  /// Opens (creates or empties) a log file and attaches a writer on it, which flushes every line.
  /// Errors: FileOpenException; "Out of memory".
  void AttachFile(const String& path);

  /// Writes one line, made of all parts, to every writer; each has it when this returns.
  /// Errors: "IO Exception"; the writers after the failing one do not get the line.
  template <typename... Parts>
  void WriteLine(const Parts&... parts) {
    for (const SharedHandle<TextWriter>& writer : writers_) {
      writer->WriteLine(parts...);
    }
  }

  /// As WriteLine, of a message, with the parts in the place of its placeholders.
  template <typename... Parts>
  void WriteMessage(const Messages::PatternWithParts<sizeof...(Parts)>& message,
                    const Parts&... parts) {
    for (const SharedHandle<TextWriter>& writer : writers_) {
      writer->WriteMessage(message, parts...);
    }
  }

  /// Closes all log files, flushes standard output and detaches every writer.
  /// Errors: "IO Exception" if a file's last bytes may be lost; the writers after that one are then
  /// not closed, and all stay attached.
  void Close();

  /// Detaches every writer without asking how closing went: for the end after an error. Each line
  /// has been flushed when it ended.
  void Clear() noexcept { writers_.Clear(); }

 private:
  GrowableArray<SharedHandle<TextWriter>> writers_;
};

/// The process's log. It is empty at first: whoever runs a definition attaches standard output.
LogWriterList& Log() noexcept;

}  // namespace Vell::IO
