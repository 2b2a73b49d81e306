#pragma once

// The one way in which bytes enter and leave the system. A stream answers every failure of the
// medium with "IO Exception"; reaching the end is a result, never an error, and readers above
// decide what it means to them.
//
// Reading and writing one byte, and looking at those that were read ahead, are not virtual: they
// work on two windows of the block that the derived class sets, and call it only where a window
// ends. What a derived class does not override is made of these windows and of the operations that
// it must have.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "foundation/string.h"

namespace Vell::IO {

/// How a stream is opened: an access in the low byte and a kind in the second one.
namespace Mode {
inline constexpr std::uint32_t kRead = 1;
inline constexpr std::uint32_t kWrite = 2;              // create or truncate
inline constexpr std::uint32_t kReadWriteExisting = 3;  // the file must exist
inline constexpr std::uint32_t kReadAppend = 7;         // writes go to the end
inline constexpr std::uint32_t kReadWriteCreate = 19;   // create or truncate
inline constexpr std::uint32_t kText = 256;
inline constexpr std::uint32_t kBinary = 512;
inline constexpr std::uint32_t kRegular = 1024;  // with kRead: a regular file only, without waiting
inline constexpr std::uint32_t kReadText = kRead | kText;
inline constexpr std::uint32_t kWriteText = kWrite | kText;
}  // namespace Mode

/// What stands for the end where a byte (0 .. 255) is asked for.
inline constexpr int kEndOfStream = -1;

/// Bytes that can be read, written, or both, as the mode says; what the mode excludes is "IO
/// Exception". Streams are shared through handles (shared_handle.h) and never copied.
class Stream {
 public:
  /// `name` is the file's path as the user wrote it; empty for the standard streams.
  Stream(std::uint32_t mode, String name);
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  virtual ~Stream() = default;

  /// The mode and the name that the stream was made with.
  std::uint32_t OpenMode() const noexcept { return mode_; }
  std::string_view Name() const noexcept { return name_; }

  /// Hands everything written so far to the operating system.
  /// Errors: "IO Exception".
  virtual void Flush() = 0;

  /// Flushes and closes. A stream that is dropped without it closes too, but cannot report a
  /// failure.
  /// Errors: "IO Exception" if something that was written may be lost.
  virtual void Close() = 0;

  /// The next byte without taking it, or kEndOfStream.
  /// Errors: "IO Exception".
  virtual int Peek();

  /// Puts one byte back, to be read next. At least the byte read last can be put back; a second one
  /// only where the stream has room.
  /// Errors: "IO Exception" without room or for kEndOfStream.
  virtual void Unget(int byte) = 0;

  /// The next byte (0 .. 255) or kEndOfStream.
  /// Errors: "IO Exception".
  int ReadByte() { return next_ != end_ ? *next_++ : ReadByteOfNextBlock(); }

  /// The bytes that were read ahead: those that ReadByte would give next without asking the medium.
  /// Never empty while the stream goes on: an empty window is filled first. Readers that find what
  /// they need in it take it at once with TakeFromWindow; it is valid until the next operation.
  /// Errors: "IO Exception".
  std::string_view Window();

  /// Adds bytes after those of the window, as many as there is room for, so that a reader can see a
  /// whole line at once. False when there are none or there is no room for any.
  /// Errors: "IO Exception".
  virtual bool WidenWindow() { return false; }

  /// Takes the first `count` bytes of the window, which must have so many.
  void TakeFromWindow(std::size_t count) noexcept { next_ += count; }

  /// Writes one byte.
  /// Errors: "IO Exception".
  virtual void WriteByte(char byte) { Write(&byte, 1); }

  /// Reads up to `count` bytes into `buffer` and returns how many; fewer only at the end.
  /// Errors: "IO Exception".
  virtual std::size_t Read(void* buffer, std::size_t count);

  /// Writes all `count` bytes.
  /// Errors: "IO Exception".
  virtual void Write(const void* buffer, std::size_t count) = 0;

  /// As Write and WriteByte, at no more cost than a copy where the block has room.
  void Put(std::string_view text) {
    if (text.size() > static_cast<std::size_t>(roomEnd_ - room_)) {
      Write(text.data(), text.size());
      return;
    }
    room_ = std::copy(text.begin(), text.end(), room_);
  }
  void Put(char byte) {
    if (room_ == roomEnd_) {
      WriteByte(byte);
      return;
    }
    *room_++ = static_cast<unsigned char>(byte);
  }

  /// As Put, for text that `print` writes to the place (char*) that it is given; it returns the
  /// text's end and writes to no more than kRoom bytes.
  template <std::size_t kRoom, typename Print>
  void PutPrinted(Print print) {
    if (static_cast<std::size_t>(roomEnd_ - room_) >= kRoom) {
      char* const place = reinterpret_cast<char*>(room_);
      room_ += print(place) - place;
      return;
    }
    std::array<char, kRoom> text;
    Write(text.data(), static_cast<std::size_t>(print(text.data()) - text.data()));
  }

  /// Reads one number as the C library's fscanf does in the C locale (white space before it is
  /// skipped, line feeds included). `format` is "%d" or "%u" for a 32-bit integer or "%lg" for a
  /// double; `size` is the size of the destination in bytes.
  /// Result: 1 when a number was read. At the end of the stream 0 or -1 and nothing is stored.
  /// Errors: "IO Exception" when something else than a number stands there; InvalidFormatException
  /// "Invalid format" for other formats.
  virtual int Scan(const char* format, void* destination, std::size_t size);

  /// Prints one number with a format that holds one conversion: %d or %u for a value of 4 bytes,
  /// %g or %f for a float (4 bytes) or a double (8 bytes); letters such as the l of %lg may stand
  /// before the conversion, and text before and after it is printed as it stands.
  /// Result: the number of bytes printed.
  /// Errors: InvalidFormatException "Invalid format" for any other format; "IO Exception".
  virtual int Print(const char* format, const void* value, std::size_t size);

  /// True when a read has met the end since the last push-back or seek.
  virtual bool IsEof() const noexcept = 0;

  /// Length in bytes.
  /// Errors: "IO Exception".
  virtual std::int64_t Length() = 0;

  /// Position in bytes from the start.
  /// Errors: "IO Exception", always where there is none, as in a pipe.
  virtual std::int64_t Tell() = 0;

  /// Moves to an absolute position.
  /// Errors: "IO Exception", as of Tell.
  void Seek(std::int64_t position) { Seek(position, 0); }
  /// Moves by `offset` from the start (origin 0), the current position (1) or the end (2); any
  /// other origin counts as 0.
  /// Errors: "IO Exception".
  virtual void Seek(std::int64_t offset, int origin) = 0;

 protected:
  /// Called by ReadByte and Peek when the window is empty: fills it if the stream goes on and takes
  /// the byte before next_, or returns kEndOfStream.
  virtual int ReadByteOfNextBlock() = 0;

  /// Errors: "IO Exception" unless the operation has succeeded.
  static void RequireSuccess(bool succeeded);

  // The bytes that were read ahead and not yet taken, so that reading one costs no call.
  unsigned char* next_ = nullptr;
  unsigned char* end_ = nullptr;
  // Where the next bytes that are written belong, as long as writing goes on and there is room.
  unsigned char* room_ = nullptr;
  unsigned char* roomEnd_ = nullptr;

 private:
  std::uint32_t mode_;
  String name_;
};

}  // namespace Vell::IO
