#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/io/carriage_returns.h"
#include "foundation/io/platform/platform.h"
#include "foundation/io/stream.h"

namespace Vell::IO {

/// A stream over a file of the operating system, with one block buffer that serves reading and
/// writing in turn.
///
/// What was written is good only after Flush or Close has returned: only then has its last byte
/// reached the operating system; whether a disk has it is the system's affair. What could not be
/// written once is dropped and not tried again. The destructor closes too, but cannot report a
/// failure.
///
/// After Close every operation that needs the file is "IO Exception", and closing again does
/// nothing. Bytes can be put back up to eight before the first one of the block.
///
/// Line ends: a stream of the text kind that is opened where lines end in a carriage return and a
/// line feed gives such a pair as one line feed when it reads. Nothing else is changed: other
/// carriage returns and any other byte are given as they stand, positions are those of the file,
/// and a line feed that is written is the byte that was given, on every platform.
class FileStream final : public Stream {
 public:
  /// Opens a file, which belongs to the stream from then on; `mode` is one access and one kind of
  /// Mode. `textLineEnds` says how lines end in files of the text kind; tests give another
  /// platform's.
  /// Errors: IOException "Invalid open mode"; FileOpenException; "Out of memory".
  FileStream(const String& path, std::uint32_t mode,
             Platform::LineEnds textLineEnds = Platform::TextLineEnds());

  /// Wraps a file that is open already and stays open. `buffer`, of more than eight bytes, is used
  /// as the block buffer and must outlive the stream, so that the standard streams need no memory.
  /// The stream has no name and reads every byte as it stands.
  FileStream(Platform::FileHandle file, std::uint32_t mode, std::span<unsigned char> buffer);

  ~FileStream() override;

  /// As Flush, but answers false instead of raising, and prints no error line.
  bool TryFlush() noexcept;

  /// As Tell, but answers `other` where the file has no position instead of raising.
  std::int64_t TellOr(std::int64_t other) noexcept;

  void Flush() override;
  /// Closes an owned file; a wrapped one is only flushed. Closing a file that was opened for
  /// reading only loses nothing and cannot fail.
  void Close() override;
  bool WidenWindow() override;
  void Unget(int byte) override;
  void Write(const void* buffer, std::size_t count) override;
  bool IsEof() const noexcept override { return isEof_; }
  std::int64_t Length() override;
  std::int64_t Tell() override;
  void Seek(std::int64_t offset, int origin) override;
  using Stream::Seek;

 protected:
  int ReadByteOfNextBlock() override;

 private:
  bool CanRead() const noexcept;  // what the mode allows
  bool CanWrite() const noexcept;
  bool FillWindow();
  bool ReadAfterWindow();
  /// The index in the block of one of its bytes, or of the byte before it; 0 without a window.
  std::ptrdiff_t PlaceOf(const unsigned char* byte) const noexcept {
    return byte != nullptr ? byte - Block() : 0;
  }
  void StartWriting();
  void DropWindow() noexcept;
  /// Moves the operating system's position and notes what it answers.
  void AskPosition(std::int64_t offset, Platform::Origin origin) noexcept;
  bool HasPosition() noexcept;
  unsigned char* Block() const noexcept;
  std::size_t BlockSize() const noexcept;
  /// Bytes of the block that wait to be written; 0 while reading.
  std::size_t Pending() const noexcept;

  Platform::FileHandle file_ = Platform::kNoFile;
  bool owns_ = false;
  bool isEof_ = false;
  // A byte was put back that differs from the file's: the block no longer shows the file.
  bool isBlockAltered_ = false;
  // Room for bytes that are put back, then the block.
  std::span<unsigned char> buffer_;
  // The operating system's position in the file; -1 when it has none that we know. Counted from 0
  // until the system is asked for it, when it is needed first.
  std::int64_t position_ = 0;
  bool isPositionAsked_ = false;
  CarriageReturns returns_;
};

}  // namespace Vell::IO
