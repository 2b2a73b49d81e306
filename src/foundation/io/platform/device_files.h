#pragma once

// Outputs that are no regular files, such as the terminal or a pipe, which are written without waiting
// for whoever reads them; and why writing failed. As in platform.h, paths are zero-terminated bytes in
// which both '\' and '/' separate folders.

#include <cstddef>
#include <cstdint>

#include "foundation/io/platform/platform.h"

namespace Vell::IO::Platform {

/// Standard output or standard error where a path is a name of it, as /dev/stdout; else kNoFile.
FileHandle OwnStreamNamed(const char* path) noexcept;

/// Opens a character device, or a pipe that has no name in a folder, for writing, without waiting for
/// its other end. kNoFile for anything else, and on failure.
FileHandle OpenDevice(const char* path) noexcept;

/// Writes as much as can be written at once, at most `size` bytes. Returns how many, or -1 on failure.
/// Whoever reads may have to read first; that is waited for a while, in milliseconds, then 0 returned.
std::int64_t WriteSome(FileHandle file, const void* buffer, std::size_t size,
                       int milliseconds) noexcept;

enum class WriteFailure { kUnknown, kDiskFull, kSizeLimit, kNotAllowed, kNoFolder, kNobodyReads };

/// Why the call before this one failed, if it was one that creates, writes or renames a file.
WriteFailure LastWriteFailure() noexcept;

}  // namespace Vell::IO::Platform
