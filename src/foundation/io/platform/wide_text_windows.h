#pragma once

// Windows takes and gives texts in UTF-16, the system has bytes. Every call goes to the wide form
// of a function, with UTF-8 translated here: so names of any language work whatever the version and
// the settings of Windows are, and paths may be longer than the 260 characters of the other forms.
// The manifest of our programs makes main's arguments UTF-8 too.

#include <windows.h>

#include <array>
#include <cstddef>

namespace Vell::IO::Platform {

/// The longest text that Windows takes as a path or a command line, its zero included.
inline constexpr int kMostWideCharacters = 32767;

using WideBuffer = std::array<wchar_t, kMostWideCharacters>;

/// Translates a zero-terminated text to UTF-16, its zero included. The text is UTF-8; where it is
/// not, it is read in the code page of the system's language, in which older programs write.
/// Returns the number of characters written, its zero included, or 0 when there is not enough room.
int ToWide(const char* text, wchar_t* wide, int size) noexcept;

/// Translates to UTF-8, its zero included; false when there is not enough room.
bool ToBytes(const wchar_t* wide, char* text, std::size_t size) noexcept;

/// As ToBytes, with '/' for every '\'.
bool ToPathBytes(const wchar_t* wide, char* path, std::size_t size) noexcept;

/// A path as the system takes it. A long one is made absolute and marked as such, which lifts the
/// limit of 260 characters without a setting of the system. Get() is null for a path that the
/// system would reject for its length.
class NativePath {
 public:
  explicit NativePath(const char* path) noexcept;
  const wchar_t* Get() const noexcept { return isUsable_ ? text_.data() : nullptr; }

 private:
  bool MarkAsLong() noexcept;

  WideBuffer text_;
  bool isUsable_;
};

/// Closes a handle of the system at the end of the scope.
class HandleCloser {
 public:
  explicit HandleCloser(HANDLE handle) noexcept : handle_(handle) {}
  ~HandleCloser() {
    if (IsOpen()) {
      CloseHandle(handle_);
    }
  }
  HandleCloser(const HandleCloser&) = delete;
  HandleCloser& operator=(const HandleCloser&) = delete;

  HANDLE Get() const noexcept { return handle_; }
  bool IsOpen() const noexcept { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_;
};

}  // namespace Vell::IO::Platform
