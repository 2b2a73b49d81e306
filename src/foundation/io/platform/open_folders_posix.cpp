#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>

#include "foundation/io/platform/interruption_posix.h"
#include "foundation/io/platform/native_path_posix.h"
#include "foundation/io/platform/open_folders.h"

namespace Vell::IO::Platform {
namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

int Descriptor(std::intptr_t handle) noexcept { return static_cast<int>(handle); }

/// Never gives one of the three standard handles, even when the process was started without them.
template <typename Open>
int OpenedAboveStandardHandles(Open open) noexcept {
  const int opened = WithoutInterruption(open);
  if (opened < 0 || opened > STDERR_FILENO) {
    return opened;
  }
  const int moved = fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(opened);
  return moved;
}

}  // namespace

FolderHandle OpenFolder(const char* path) noexcept {
  const NativePath native(path);
  if (native.Get() == nullptr) {
    return kNoFolder;
  }
  return OpenedAboveStandardHandles([&] { return open(native.Get(), kFolderFlags); });
}

FolderHandle OpenFolderIn(FolderHandle folder, const char* name) noexcept {
  return OpenedAboveStandardHandles(
      [&] { return openat(Descriptor(folder), name, kFolderFlags | O_NOFOLLOW); });
}

FileHandle OpenFileIn(FolderHandle folder, const char* name) noexcept {
  const int file = OpenedAboveStandardHandles([&] {
    return openat(Descriptor(folder), name,
                  O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  });
  struct stat status {};
  if (file >= 0 && (WithoutInterruption([&] { return fstat(file, &status); }) != 0 ||
                    !S_ISREG(status.st_mode))) {
    close(file);
    return kNoFile;
  }
  return file;
}

EntryKind KindIn(FolderHandle folder, const char* name) noexcept {
  struct stat status {};
  if (WithoutInterruption(
          [&] { return fstatat(Descriptor(folder), name, &status, AT_SYMLINK_NOFOLLOW); }) != 0) {
    return errno == ENOENT ? EntryKind::kMissing : EntryKind::kUnknown;
  }
  return S_ISREG(status.st_mode)   ? EntryKind::kFile
         : S_ISDIR(status.st_mode) ? EntryKind::kFolder
         : S_ISLNK(status.st_mode) ? EntryKind::kLink
                                   : EntryKind::kOther;
}

bool IsForbiddenFolder(FolderHandle folder, const char* name) noexcept {
  return WithoutInterruption(
             [&] { return faccessat(Descriptor(folder), name, R_OK | X_OK, AT_EACCESS); }) != 0 &&
         errno == EACCES;
}

bool VisitFolder(FolderHandle folder, FolderVisitor visitor, void* context) {
  // A reading of its own: it begins at the first entry, and closing it leaves the folder open.
  const int own =
      OpenedAboveStandardHandles([&] { return openat(Descriptor(folder), ".", kFolderFlags); });
  const auto close = [](DIR* reading) { closedir(reading); };
  DIR* opened = nullptr;
  while (own >= 0 && (opened = fdopendir(own)) == nullptr && errno == EINTR) {
  }
  const std::unique_ptr<DIR, decltype(close)> reading(opened, close);
  if (reading == nullptr) {
    if (own >= 0) {
      ::close(own);
    }
    return false;
  }
  do {
    errno = 0;
    while (const dirent* entry = readdir(reading.get())) {
      const std::string_view name(entry->d_name);
      if (name != "." && name != "..") {
        visitor(context, entry->d_name);
      }
      errno = 0;
    }
  } while (errno == EINTR);  // which leaves the place in the folder
  return errno == 0;
}

void CloseFolder(FolderHandle folder) noexcept { close(Descriptor(folder)); }

}  // namespace Vell::IO::Platform
