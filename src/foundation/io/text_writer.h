#pragma once

// Text and numbers on their way to a stream. Every file, log line and progress line of the system
// is written through a TextWriter, so that numbers look alike everywhere.

#include <cstdint>
#include <string_view>

#include "foundation/io/number_text.h"
#include "foundation/io/stream.h"
#include "foundation/shared_handle.h"
#include "messages/pattern.h"

namespace Vell::IO {

/// When a writer hands its lines to the operating system: at the end of each line (terminals and
/// logs, whose readers want every whole line at once) or when the stream's block is full (files).
enum class LineEnd { kFlush, kKeep };

/// Writes text and numbers to a stream: integers as "%d", reals as "%lg"; a line ends with a single
/// line feed on every platform. Texts are written as they stand; csv_writer.h quotes fields. Errors
/// of all operations: "IO Exception". Where the stream has a block, a failure of the medium shows
/// when the block is written, so only a Flush or Close that returns says that a text is stored.
class TextWriter {
 public:
  /// Shares the stream, which must be open for writing. Dropping the writer does not close it while
  /// others hold it. Copies of a writer write to the same stream.
  explicit TextWriter(SharedHandle<Stream> stream, LineEnd lineEnd = LineEnd::kKeep);

  void Write(std::string_view text) { stream_->Put(text); }
  void Write(char character) { stream_->Put(character); }
  void Write(std::int32_t value) {
    WritePrinted<kIntegerRoom>([value](char* place) { return WriteInteger(place, value); });
  }
  void Write(double value) {
    WritePrinted<kRealRoom>([value](char* place) { return WriteReal(place, value); });
  }
  /// Writes what `print` prints to the place (char*) it is given, kRoom bytes at most; it returns
  /// the end.
  template <std::size_t kRoom, typename Print>
  void WritePrinted(Print print) {
    stream_->PutPrinted<kRoom>(print);
  }
  /// Writes a line feed and, for LineEnd::kFlush, flushes the stream.
  void EndLine();

  /// Writes all parts, one after the other, and ends the line.
  template <typename... Parts>
  void WriteLine(const Parts&... parts) {
    (Write(parts), ...);
    EndLine();
  }

  /// Writes a message, with the parts in the place of its placeholders, and ends the line.
  template <typename... Parts>
  void WriteMessage(const Messages::PatternWithParts<sizeof...(Parts)>& message,
                    const Parts&... parts) {
    message.Fill([this](const auto& part) { this->Write(part); }, parts...);
    EndLine();
  }

  /// The stream, for flushing and closing it; it lives as long as some writer has it.
  Stream& Target() const noexcept { return *stream_; }

 private:
  SharedHandle<Stream> stream_;
  LineEnd lineEnd_;
};

/// Creates or empties a text file and returns a writer on it. The file is complete only when its
/// stream has been closed. The writer flushes nothing by itself before its block is full.
/// Errors: FileOpenException; "Out of memory".
TextWriter CreateTextFile(const String& path);

}  // namespace Vell::IO
