#include <windows.h>

#include "foundation/io/platform/device_files.h"

namespace Vell::IO::Platform {

FileHandle OwnStreamNamed(const char* /*path*/) noexcept { return kNoFile; }

FileHandle OpenDevice(const char* path) noexcept { return OpenFile(path, Access::kWrite); }

std::int64_t WriteSome(FileHandle file, const void* buffer, std::size_t size,
                       int /*milliseconds*/) noexcept {
  return WriteFile(file, buffer, size) ? static_cast<std::int64_t>(size) : -1;
}

WriteFailure LastWriteFailure() noexcept {
  switch (GetLastError()) {
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return WriteFailure::kDiskFull;
    case ERROR_FILE_TOO_LARGE:
      return WriteFailure::kSizeLimit;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_WRITE_PROTECT:
      return WriteFailure::kNotAllowed;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return WriteFailure::kNoFolder;
    case ERROR_NO_DATA:
    case ERROR_BROKEN_PIPE:
      return WriteFailure::kNobodyReads;
    default:
      return WriteFailure::kUnknown;
  }
}

}  // namespace Vell::IO::Platform
