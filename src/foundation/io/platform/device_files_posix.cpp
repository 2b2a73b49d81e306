#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string_view>

#include "foundation/io/platform/device_files.h"
#include "foundation/io/platform/interruption_posix.h"
#include "foundation/io/platform/native_path_posix.h"

namespace Vell::IO::Platform {
namespace {

/// True for what is written without harm where it lies: a terminal or another character device, and a
/// pipe that was not made in a folder, where anybody may wait at it.
bool IsDirect(int file) noexcept {
  struct stat status {};
  struct statfs system {};
  return WithoutInterruption([&] { return fstat(file, &status); }) == 0 &&
         (S_ISCHR(status.st_mode) || (S_ISFIFO(status.st_mode) && fstatfs(file, &system) == 0 &&
                                      system.f_type == PIPEFS_MAGIC));
}

}  // namespace

FileHandle OwnStreamNamed(const char* path) noexcept {
  const NativePath native(path);
  const std::string_view name = native.Get() != nullptr ? native.Get() : "";
  if (name == "/dev/stdout" || name == "/dev/fd/1" || name == "/proc/self/fd/1") {
    return kStandardOutput;
  }
  return name == "/dev/stderr" || name == "/dev/fd/2" || name == "/proc/self/fd/2" ? kStandardError
                                                                                   : kNoFile;
}

FileHandle OpenDevice(const char* path) noexcept {
  const NativePath native(path);
  if (native.Get() == nullptr) {
    return kNoFile;
  }
  const int opened = WithoutInterruption(
      [&] { return open(native.Get(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); });
  const int moved =
      opened >= 0 && IsDirect(opened) ? fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1;
  if (opened >= 0) {
    const int error = errno;
    close(opened);
    errno = error;
  }
  return moved;
}

std::int64_t WriteSome(FileHandle file, const void* buffer, std::size_t size,
                       int milliseconds) noexcept {
  // A pipe that poll calls ready takes this many bytes at once, whether it waits or not.
  constexpr std::size_t kMostAtOnce = PIPE_BUF;
  pollfd ready{static_cast<int>(file), POLLOUT, 0};
  const int found = WithoutInterruption([&] { return poll(&ready, 1, milliseconds); });
  if (found == 0 || (found < 0 && errno == EINTR)) {  // a request to end: whoever calls looks at it
    return 0;
  }
  const ssize_t written = WithoutInterruption(
      [&] { return write(static_cast<int>(file), buffer, std::min(size, kMostAtOnce)); });
  return written < 0 && errno == EAGAIN ? 0 : written;
}

WriteFailure LastWriteFailure() noexcept {
  switch (errno) {
    case ENOSPC:
    case EDQUOT:
      return WriteFailure::kDiskFull;
    case EFBIG:
      return WriteFailure::kSizeLimit;
    case EACCES:
    case EPERM:
    case EROFS:
      return WriteFailure::kNotAllowed;
    case ENOENT:
    case ENOTDIR:
      return WriteFailure::kNoFolder;
    case EPIPE:
    case ENXIO:
      return WriteFailure::kNobodyReads;
    default:
      return WriteFailure::kUnknown;
  }
}

}  // namespace Vell::IO::Platform
