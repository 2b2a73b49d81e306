#pragma once

// Files as the launcher's tools read them: a small one as a whole, a large one in blocks. How they
// write them is the matter of output_file.h.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "foundation/io/platform/platform.h"

namespace Hovar {

/// A regular file opened for reading, which the object closes; IsOpen says whether that succeeded.
class InputFile {
 public:
  explicit InputFile(const std::string& path);
  /// Takes over a file that is open, or kNoFile.
  explicit InputFile(Vell::IO::Platform::FileHandle file) noexcept : file_(file) {}
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  bool IsOpen() const noexcept { return file_ != Vell::IO::Platform::kNoFile; }

  /// Reads until the buffer is full or the file ends. Returns the bytes read, or -1 on failure. A
  /// later call finds what has been written after the former end in the meantime.
  std::int64_t Read(std::span<char> buffer) const noexcept;

  /// The length in bytes, or -1 on failure.
  std::int64_t Length() const noexcept { return Vell::IO::Platform::FileLength(file_); }

 private:
  Vell::IO::Platform::FileHandle file_;
};

/// Writes all bytes to a stream or a device. Whoever reads may stop reading, which is waited for, but
/// after a request to end for a second only. False when it fails or was not waited for.
bool WriteUntilRequest(Vell::IO::Platform::FileHandle file, std::string_view bytes) noexcept;

/// The length of a regular file in bytes; nothing when it cannot be opened.
std::optional<std::int64_t> FileSize(const std::string& path);

inline constexpr std::size_t kLargestSmallFile = std::size_t{16} << 20;

/// The bytes of a regular file of up to kLargestSmallFile bytes; nothing when there is no such file,
/// it is larger or cannot be read.
std::optional<std::string> ReadSmallFile(const std::string& path);

/// True when a regular file that could not be read would have to be readable: it is not too large
/// for ReadSmallFile.
bool IsSmallFile(const std::string& path);

/// As Vell::JoinPath, by which the program makes its output paths.
std::string JoinPath(std::string_view folder, std::string_view name);

}  // namespace Hovar
