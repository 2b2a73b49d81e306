#include <windows.h>

// A macro there, the name of a function here.
#undef ReplaceFile

#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/wide_text_windows.h"

namespace Vell::IO::Platform {
namespace {

/// Opens a file or a folder with some rights (0 to look at it only).
HANDLE Open(const char* path, DWORD rights) noexcept {
  const NativePath native(path);
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  return native.Get() == nullptr ? INVALID_HANDLE_VALUE
                                 : CreateFileW(native.Get(), rights, kShareAll, nullptr,
                                               OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

bool Move(const char* from, const char* to, DWORD flags) noexcept {
  const NativePath source(from);
  const NativePath target(to);
  return source.Get() != nullptr && target.Get() != nullptr &&
         MoveFileExW(source.Get(), target.Get(), flags) != 0;
}

}  // namespace

PathKind KindOf(const char* path) noexcept {
  const HandleCloser file(Open(path, 0));
  BY_HANDLE_FILE_INFORMATION information;
  if (!file.IsOpen()) {
    return PathKind::kMissing;
  }
  if (GetFileType(file.Get()) != FILE_TYPE_DISK ||
      GetFileInformationByHandle(file.Get(), &information) == 0) {
    return PathKind::kOther;
  }
  return (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathKind::kFolder
                                                                        : PathKind::kFile;
}

SpecialKind SpecialKindOf(const char* path) noexcept {
  // The names of pipes and sockets are none of files here.
  return KindOf(path) == PathKind::kOther ? SpecialKind::kDevice : SpecialKind::kNone;
}

bool IsFileOfSystem(const char* path) noexcept { return KindOf(path) == PathKind::kFile; }

bool LinkTarget(const char* /*path*/, char* /*target*/, std::size_t /*size*/) noexcept {
  return false;
}

bool SameFile(const char* one, const char* other) noexcept {
  const HandleCloser firstFile(Open(one, 0));
  const HandleCloser secondFile(Open(other, 0));
  BY_HANDLE_FILE_INFORMATION first;
  BY_HANDLE_FILE_INFORMATION second;
  return firstFile.IsOpen() && secondFile.IsOpen() &&
         GetFileInformationByHandle(firstFile.Get(), &first) != 0 &&
         GetFileInformationByHandle(secondFile.Get(), &second) != 0 &&
         first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
         first.nFileIndexHigh == second.nFileIndexHigh &&
         first.nFileIndexLow == second.nFileIndexLow;
}

bool FolderIsWritable(const char* path) noexcept {
  // Opening a folder with this right succeeds where a file could be made in it; nothing is made.
  return KindOf(path) == PathKind::kFolder && HandleCloser(Open(path, FILE_ADD_FILE)).IsOpen();
}

bool Rename(const char* from, const char* to) noexcept {
  constexpr DWORD kNeverReplace = 0;
  return Move(from, to, kNeverReplace);
}

bool ReplaceFile(const char* from, const char* to) noexcept {
  return Move(from, to, MOVEFILE_REPLACE_EXISTING);
}

bool RemoveFile(const char* path) noexcept {
  const NativePath native(path);
  return native.Get() != nullptr && DeleteFileW(native.Get()) != 0;
}

bool CurrentFolder(char* path, std::size_t size) noexcept {
  WideBuffer wide;
  const DWORD length = GetCurrentDirectoryW(kMostWideCharacters, wide.data());
  return length > 0 && length < wide.size() && ToPathBytes(wide.data(), path, size);
}

}  // namespace Vell::IO::Platform
