#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/native_path_posix.h"

namespace Vell::IO::Platform {
namespace {

bool Status(const char* path, struct stat& status) noexcept {
  const NativePath native(path);
  return native.Get() != nullptr && stat(native.Get(), &status) == 0;
}

}  // namespace

PathKind KindOf(const char* path) noexcept {
  struct stat status {};
  if (!Status(path, status)) {
    return PathKind::kMissing;
  }
  return S_ISREG(status.st_mode)   ? PathKind::kFile
         : S_ISDIR(status.st_mode) ? PathKind::kFolder
                                   : PathKind::kOther;
}

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
  return stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

bool LinkTarget(const char* path, char* target, std::size_t size) noexcept {
  const NativePath native(path);
  const ssize_t length = native.Get() == nullptr ? -1 : readlink(native.Get(), target, size);
  if (length < 0 || static_cast<std::size_t>(length) >= size) {
    return false;
  }
  target[length] = '\0';
  return true;
}

bool SameFile(const char* one, const char* other) noexcept {
  struct stat first {};
  struct stat second {};
  return Status(one, first) && Status(other, second) && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

bool FolderIsWritable(const char* path) noexcept {
  const NativePath native(path);
  return native.Get() != nullptr && access(native.Get(), W_OK | X_OK) == 0;
}

bool Rename(const char* from, const char* to) noexcept {
  const NativePath source(from);
  const NativePath target(to);
  return source.Get() != nullptr && target.Get() != nullptr && KindOf(to) == PathKind::kMissing &&
         std::rename(source.Get(), target.Get()) == 0;
}

bool ReplaceFile(const char* from, const char* to) noexcept {
  const NativePath source(from);
  const NativePath target(to);
  return source.Get() != nullptr && target.Get() != nullptr &&
         std::rename(source.Get(), target.Get()) == 0;
}

bool RemoveFile(const char* path) noexcept {
  const NativePath native(path);
  return native.Get() != nullptr && unlink(native.Get()) == 0;
}

bool CurrentFolder(char* path, std::size_t size) noexcept { return getcwd(path, size) != nullptr; }

}  // namespace Vell::IO::Platform
