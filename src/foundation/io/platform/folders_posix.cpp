#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/interruption_posix.h"
#include "foundation/io/platform/native_path_posix.h"

namespace Vell::IO::Platform {
namespace {

bool Status(const char* path, struct stat& status) noexcept {
  const NativePath native(path);
  if (native.Get() == nullptr) {
    errno = ENAMETOOLONG;
    return false;
  }
  return WithoutInterruption([&] { return stat(native.Get(), &status); }) == 0;
}

/// True after a call that failed because there is nothing at its path.
bool FailedForNothing() noexcept {
  return errno == ENOENT || errno == ENOTDIR || errno == ELOOP || errno == ENAMETOOLONG;
}

}  // namespace

std::optional<PathKind> LookAt(const char* path) noexcept {
  struct stat status {};
  if (!Status(path, status)) {
    return FailedForNothing() ? std::optional(PathKind::kMissing) : std::nullopt;
  }
  return S_ISREG(status.st_mode)   ? PathKind::kFile
         : S_ISDIR(status.st_mode) ? PathKind::kFolder
                                   : PathKind::kOther;
}

PathKind KindOf(const char* path) noexcept { return LookAt(path).value_or(PathKind::kMissing); }

SpecialKind SpecialKindOf(const char* path) noexcept {
  struct stat status {};
  if (!Status(path, status) || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) {
    return SpecialKind::kNone;
  }
  return S_ISFIFO(status.st_mode)   ? SpecialKind::kNamedPipe
         : S_ISSOCK(status.st_mode) ? SpecialKind::kSocket
                                    : SpecialKind::kDevice;
}

bool IsFileOfSystem(const char* path) noexcept {
  struct stat status {};
  return WithoutInterruption([&] { return stat(path, &status); }) == 0 && S_ISREG(status.st_mode);
}

bool LinkTarget(const char* path, char* target, std::size_t size) noexcept {
  const NativePath native(path);
  const ssize_t length = native.Get() == nullptr ? -1 : WithoutInterruption([&] {
    return readlink(native.Get(), target, size);
  });
  if (length < 0 || static_cast<std::size_t>(length) >= size) {
    return false;
  }
  target[length] = '\0';
  return true;
}

std::optional<FileStamp> StampOf(const char* path) noexcept {
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  struct stat status {};
  if (!Status(path, status)) {
    return std::nullopt;
  }
  return FileStamp{
      {status.st_dev, status.st_ino},
      status.st_size,
      std::int64_t{status.st_mtim.tv_sec} * kNanosecondsPerSecond + status.st_mtim.tv_nsec};
}

bool FoldName(const char* name, char* folded, std::size_t size) noexcept {
  const bool fits = std::strlen(name) < size;
  if (fits) {
    std::strcpy(folded, name);
  }
  return fits;
}

bool FolderIsWritable(const char* path) noexcept {
  const NativePath native(path);
  return native.Get() != nullptr &&
         WithoutInterruption([&] { return access(native.Get(), W_OK | X_OK); }) == 0;
}

std::optional<bool> IsTaken(const char* path) noexcept {
  const NativePath native(path);
  struct stat status {};
  if (native.Get() == nullptr) {
    return false;
  }
  if (WithoutInterruption([&] { return lstat(native.Get(), &status); }) == 0) {
    return true;
  }
  return FailedForNothing() ? std::optional(false) : std::nullopt;
}

bool Rename(const char* from, const char* to) noexcept {
  const NativePath source(from);
  const NativePath target(to);
  if (source.Get() == nullptr || target.Get() == nullptr) {
    return false;
  }
  const int renamed = WithoutInterruption(
      [&] { return renameat2(AT_FDCWD, source.Get(), AT_FDCWD, target.Get(), RENAME_NOREPLACE); });
  // Some file systems, and old kernels, cannot be asked to leave what is there alone.
  return renamed == 0 ||
         ((errno == EINVAL || errno == ENOSYS) && IsTaken(to) == false &&
          WithoutInterruption([&] { return std::rename(source.Get(), target.Get()); }) == 0);
}

bool ReplaceFile(const char* from, const char* to) noexcept {
  const NativePath source(from);
  const NativePath target(to);
  return source.Get() != nullptr && target.Get() != nullptr &&
         WithoutInterruption([&] { return std::rename(source.Get(), target.Get()); }) == 0;
}

bool RemoveFile(const char* path) noexcept {
  const NativePath native(path);
  return native.Get() != nullptr && WithoutInterruption([&] { return unlink(native.Get()); }) == 0;
}

bool CurrentFolder(char* path, std::size_t size) noexcept { return getcwd(path, size) != nullptr; }

}  // namespace Vell::IO::Platform
