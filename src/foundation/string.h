#pragma once

// The text type of the system. Sizes are signed 32-bit numbers, and every buffer comes from
// memory.h, so that a test can make its allocation fail; std::string would give neither.

#include <cstdint>
#include <string_view>

namespace Vell {

/// The bytes that count as white space when texts are trimmed and definition files are read.
inline constexpr std::string_view kWhitespace = " \t\r\n";

/// A counted byte string over an owned, zero-filled buffer; bytes only, no encoding, no locale.
/// Wherever text is stored it is followed by a zero byte, so CStr() can be handed to the operating
/// system. A string that never held anything has no buffer and reads as the empty text. A zero byte
/// within the text is a byte like any other, except that whoever reads CStr() stops at it.
///
/// Copying copies the buffer with its capacity. Moving takes the buffer over and leaves an empty
/// string; moving into a string leaves what it held in the other one. Views and CStr() are valid
/// until the string changes or is gone.
///
/// Errors: InvalidArgumentException "Invalid argument" for a negative size or a null text;
///         IntegerOverflowException "Integer overflow" for 2^31 bytes and more; "Out of memory".
class String {
 public:
  String() = default;
  explicit String(const char* text);
  explicit String(std::string_view text);
  String(const String& other);
  String(String&& other) noexcept;
  String& operator=(const String& other);
  String& operator=(String&& other) noexcept;
  ~String();

  /// Bytes of the text, without the zero byte.
  std::int32_t Length() const noexcept { return length_; }
  /// Bytes of the buffer, the zero byte's included; 0 without a buffer.
  std::int32_t Capacity() const noexcept { return capacity_; }
  const char* CStr() const noexcept { return data_ != nullptr ? data_ : ""; }
  std::string_view View() const noexcept { return {CStr(), static_cast<std::size_t>(length_)}; }
  operator std::string_view() const noexcept { return View(); }

  /// Replaces the buffer by one of `capacity` zero bytes (none for 0); the text is gone.
  void Reserve(std::int32_t capacity);
  /// Changes the buffer to `capacity` bytes, keeping the bytes that fit and zero-filling the rest.
  /// The text is cut to capacity - 1 bytes where it is longer. After an error the string is as it
  /// was.
  void ResizeBuffer(std::int32_t capacity);
  /// Adds to the end. The buffer doubles when it is full, or grows to what is needed if that is
  /// more. `text` must not be part of the string itself. After an error the string is as it was.
  void Append(char byte);
  void Append(std::string_view text);
  /// Makes the text empty and keeps the buffer.
  void Clear() noexcept;
  /// Cuts the text to its first `length` bytes (0 <= length <= Length()) and zeroes the rest.
  void Truncate(std::int32_t length) noexcept;
  /// Removes every leading and trailing byte of kWhitespace.
  void Trim() noexcept;

  /// Index of the first or the last `byte`, or -1.
  std::int32_t FindFirst(char byte) const noexcept;
  std::int32_t FindLast(char byte) const noexcept;

 private:
  void MakeRoomFor(std::uint64_t bytes);

  char* data_ = nullptr;
  std::int32_t capacity_ = 0;
  std::int32_t length_ = 0;
};

/// a followed by b, in a buffer of exactly length(a) + length(b) + 1 bytes.
/// Errors: those of String.
String Concatenate(std::string_view a, std::string_view b);

/// `folder`, a backslash, `name`: how every output path is made, on every platform. The parts are
/// kept as written; a folder that ends in a backslash gives two of them, and an empty folder a path
/// that begins with one. The platform layer translates the separators where a file is opened.
/// Errors: those of String.
String JoinPath(std::string_view folder, std::string_view name);

}  // namespace Vell
