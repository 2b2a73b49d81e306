#pragma once

// A stream without a file behind it, for whoever needs the text that the system's writers make, or
// wants them to write in vain.

#include "foundation/io/stream.h"
#include "foundation/string.h"

namespace Vell::IO {

/// A stream for writing that leads nowhere: it keeps in memory what is written, or drops it. It has
/// no name. Reading from it gives the end at once; putting a byte back and seeking are "IO
/// Exception". Length and position are those of the text that was kept, so 0 where it is dropped.
/// Flushing and closing do nothing, and more can be written afterwards. Errors of writing, where
/// the text is kept: those of String.
class TextSink : public Stream {
 public:
  /// What becomes of the text.
  enum class Use { kKeep, kDrop };

  explicit TextSink(Use use) : Stream(Mode::kWriteText, String()), use_(use) {}

  /// What was written and kept; valid until more is written.
  std::string_view Text() const noexcept { return text_; }

  void Flush() override {}
  void Close() override {}
  void Unget(int byte) override;
  void Write(const void* buffer, std::size_t count) override;
  bool IsEof() const noexcept override { return true; }
  std::int64_t Length() override { return text_.Length(); }
  std::int64_t Tell() override { return text_.Length(); }
  void Seek(std::int64_t offset, int origin) override;
  using Stream::Seek;

 protected:
  int ReadByteOfNextBlock() override { return kEndOfStream; }

 private:
  Use use_;
  String text_;
};

}  // namespace Vell::IO
