#include <windows.h>

// A macro there, the name of a function here.
#undef ReplaceFile

#include <string_view>

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

std::optional<PathKind> LookAt(const char* path) noexcept {
  const HandleCloser file(Open(path, 0));
  BY_HANDLE_FILE_INFORMATION information;
  if (!file.IsOpen()) {
    const DWORD error = GetLastError();
    const bool isUnknown = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ||
                           error == ERROR_NOT_READY || error == ERROR_IO_DEVICE;
    return isUnknown ? std::nullopt : std::optional(PathKind::kMissing);
  }
  if (GetFileType(file.Get()) != FILE_TYPE_DISK ||
      GetFileInformationByHandle(file.Get(), &information) == 0) {
    return PathKind::kOther;
  }
  return (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathKind::kFolder
                                                                        : PathKind::kFile;
}

PathKind KindOf(const char* path) noexcept { return LookAt(path).value_or(PathKind::kMissing); }

SpecialKind SpecialKindOf(const char* path) noexcept {
  // The names of pipes and sockets are none of files here.
  return KindOf(path) == PathKind::kOther ? SpecialKind::kDevice : SpecialKind::kNone;
}

bool IsFileOfSystem(const char* path) noexcept { return KindOf(path) == PathKind::kFile; }

bool LinkTarget(const char* /*path*/, char* /*target*/, std::size_t /*size*/) noexcept {
  return false;
}

std::optional<FileStamp> StampOf(const char* path) noexcept {
  constexpr int kHalf = 32;
  const HandleCloser file(Open(path, 0));
  BY_HANDLE_FILE_INFORMATION facts;
  if (!file.IsOpen() || GetFileInformationByHandle(file.Get(), &facts) == 0) {
    return std::nullopt;
  }
  const auto whole = [](DWORD high, DWORD low) { return std::uint64_t{high} << kHalf | low; };
  return FileStamp{{facts.dwVolumeSerialNumber, whole(facts.nFileIndexHigh, facts.nFileIndexLow)},
                   static_cast<std::int64_t>(whole(facts.nFileSizeHigh, facts.nFileSizeLow)),
                   static_cast<std::int64_t>(whole(facts.ftLastWriteTime.dwHighDateTime,
                                                   facts.ftLastWriteTime.dwLowDateTime))};
}

bool FoldName(const char* name, char* folded, std::size_t size) noexcept {
  const NativePath native(name);
  if (native.Get() == nullptr) {
    return false;
  }
  WideBuffer capitals;
  const int length = LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, native.Get(), -1,
                                   capitals.data(), kMostWideCharacters, nullptr, nullptr, 0);
  if (length <= 0) {
    return false;
  }
  // Windows drops points and blanks at the end of a name.
  std::wstring_view text(capitals.data());
  capitals[text.find_last_not_of(L". ") + 1] = L'\0';
  return ToBytes(capitals.data(), folded, size);
}

std::optional<bool> IsTaken(const char* path) noexcept {
  const NativePath native(path);
  if (native.Get() == nullptr) {
    return false;
  }
  if (GetFileAttributesW(native.Get()) != INVALID_FILE_ATTRIBUTES) {
    return true;
  }
  const DWORD error = GetLastError();
  const bool isFree =
      error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME;
  return isFree ? std::optional(false) : std::nullopt;
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
