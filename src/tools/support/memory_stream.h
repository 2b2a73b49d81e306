#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/io/platform/platform.h"
#include "foundation/io/stream.h"

namespace Hovar {

/// A text file that was read into memory, as a stream for the program's readers. It gives what a
/// FileStream of the mode kReadText gives for the same bytes, positions and line ends included.
/// Nothing can be written: "IO Exception".
class MemoryStream final : public Vell::IO::Stream {
 public:
  /// `name` is the file's path as the user wrote it. Errors: "Out of memory".
  MemoryStream(std::string bytes, std::string_view name,
               Vell::IO::Platform::LineEnds textLineEnds = Vell::IO::Platform::TextLineEnds());

  void Flush() override {}
  void Close() override {}
  int Peek() override;
  void Unget(int byte) override;
  void WriteByte(char byte) override { Write(&byte, 1); }
  std::size_t Read(void* buffer, std::size_t count) override;
  void Write(const void* buffer, std::size_t count) override;
  int Scan(const char* format, void* destination, std::size_t size) override;
  int Print(const char* format, const void* value, std::size_t size) override;
  bool IsEof() const noexcept override { return isEof_; }
  std::int64_t Length() override { return static_cast<std::int64_t>(bytes_.size()); }
  std::int64_t Tell() override;
  void Seek(std::int64_t offset, int origin) override;
  using Stream::Seek;

 protected:
  int ReadByteOfNextBlock() override;

 private:
  const unsigned char* Begin() const noexcept {
    return reinterpret_cast<const unsigned char*>(bytes_.data());
  }
  bool IsWithinPair() const noexcept;

  std::string bytes_;
  bool dropsReturns_;
  bool isEof_ = false;
};

}  // namespace Hovar
