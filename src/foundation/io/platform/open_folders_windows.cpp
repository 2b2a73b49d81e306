#include <windows.h>

#include <algorithm>
#include <array>
#include <cwchar>
#include <string_view>

#include "foundation/io/platform/open_folders.h"
#include "foundation/io/platform/wide_text_windows.h"

namespace Vell::IO::Platform {
namespace {

// A folder that is open may be read and written in by others, but not renamed or removed: so the path
// of an entry leads where the folder is.
constexpr DWORD kShareForFolders = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE SystemHandle(std::intptr_t handle) noexcept { return reinterpret_cast<HANDLE>(handle); }

/// The path of an entry of a folder; false when there is no such path.
bool EntryPath(FolderHandle folder, const wchar_t* name, WideBuffer& path) noexcept {
  const DWORD length =
      GetFinalPathNameByHandleW(SystemHandle(folder), path.data(), kMostWideCharacters, 0);
  const std::size_t nameLength = std::wcslen(name);
  if (length == 0 || length + nameLength + 2 > path.size()) {
    return false;
  }
  path[length] = L'\\';
  *std::copy(name, name + nameLength, path.begin() + length + 1) = L'\0';
  return true;
}

bool EntryPath(FolderHandle folder, const char* name, WideBuffer& path) noexcept {
  WideBuffer wide;
  return ToWide(name, wide.data(), kMostWideCharacters) > 0 && EntryPath(folder, wide.data(), path);
}

/// Opens an entry itself, not what it leads to.
HANDLE OpenEntry(FolderHandle folder, const char* name, DWORD rights, DWORD share) noexcept {
  WideBuffer path;
  return EntryPath(folder, name, path)
             ? CreateFileW(path.data(), rights, share, nullptr, OPEN_EXISTING,
                           FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr)
             : INVALID_HANDLE_VALUE;
}

EntryKind KindOfOpen(HANDLE entry) noexcept {
  BY_HANDLE_FILE_INFORMATION information;
  if (GetFileType(entry) != FILE_TYPE_DISK ||
      GetFileInformationByHandle(entry, &information) == 0) {
    return EntryKind::kOther;
  }
  const DWORD attributes = information.dwFileAttributes;
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? EntryKind::kLink
         : (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0   ? EntryKind::kFolder
                                                          : EntryKind::kFile;
}

/// The handle, if it is that of an entry of the kind; otherwise closes it.
std::intptr_t OpenOfKind(HANDLE entry, EntryKind kind) noexcept {
  if (entry != INVALID_HANDLE_VALUE && KindOfOpen(entry) != kind) {
    CloseHandle(entry);
    return kNoFolder;
  }
  return reinterpret_cast<std::intptr_t>(entry);  // INVALID_HANDLE_VALUE is kNoFolder and kNoFile
}

}  // namespace

FolderHandle OpenFolder(const char* path) noexcept {
  const NativePath native(path);
  if (native.Get() == nullptr) {
    return kNoFolder;
  }
  return OpenOfKind(CreateFileW(native.Get(), FILE_LIST_DIRECTORY, kShareForFolders, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr),
                    EntryKind::kFolder);
}

FolderHandle OpenFolderIn(FolderHandle folder, const char* name) noexcept {
  return OpenOfKind(OpenEntry(folder, name, FILE_LIST_DIRECTORY, kShareForFolders),
                    EntryKind::kFolder);
}

FileHandle OpenFileIn(FolderHandle folder, const char* name) noexcept {
  return OpenOfKind(OpenEntry(folder, name, GENERIC_READ, kShareAll), EntryKind::kFile);
}

EntryKind KindIn(FolderHandle folder, const char* name) noexcept {
  const HandleCloser entry(OpenEntry(folder, name, 0, kShareAll));
  if (entry.IsOpen()) {
    return KindOfOpen(entry.Get());
  }
  return GetLastError() == ERROR_FILE_NOT_FOUND ? EntryKind::kMissing : EntryKind::kUnknown;
}

bool IsForbiddenFolder(FolderHandle folder, const char* name) noexcept {
  const HandleCloser entry(OpenEntry(folder, name, FILE_LIST_DIRECTORY, kShareAll));
  return !entry.IsOpen() && GetLastError() == ERROR_ACCESS_DENIED;
}

bool VisitFolder(FolderHandle folder, FolderVisitor visitor, void* context) {
  WideBuffer pattern;
  WIN32_FIND_DATAW entry;
  if (!EntryPath(folder, L"*", pattern)) {
    return false;
  }
  const HANDLE search = FindFirstFileW(pattern.data(), &entry);
  if (search == INVALID_HANDLE_VALUE) {
    return false;
  }
  do {
    constexpr std::size_t kMostBytes = std::size_t{4} * MAX_PATH;
    std::array<char, kMostBytes> bytes;
    const std::wstring_view name(entry.cFileName);
    if (name != L"." && name != L".." && ToBytes(entry.cFileName, bytes.data(), bytes.size())) {
      visitor(context, bytes.data());
    }
  } while (FindNextFileW(search, &entry) != 0);
  FindClose(search);
  return true;
}

void CloseFolder(FolderHandle folder) noexcept { CloseHandle(SystemHandle(folder)); }

}  // namespace Vell::IO::Platform
