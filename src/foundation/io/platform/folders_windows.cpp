#include <windows.h>

// A macro there, the name of a function here.
#undef ReplaceFile

#include <algorithm>
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

/// The path of a folder's entries, as a search takes it.
bool EntriesOf(const char* folder, WideBuffer& pattern) noexcept {
  constexpr std::wstring_view kEveryEntry = L"\\*";
  const NativePath native(folder);
  if (native.Get() == nullptr || *native.Get() == L'\0') {
    return false;
  }
  const std::wstring_view path(native.Get());
  if (path.size() + kEveryEntry.size() >= pattern.size()) {
    return false;
  }
  wchar_t* const end = std::copy(path.begin(), path.end(), pattern.begin());
  *std::copy(kEveryEntry.begin(), kEveryEntry.end(), end) = L'\0';
  return true;
}

/// Closes a search for files at the end of the scope.
class Search {
 public:
  explicit Search(const wchar_t* pattern) noexcept : handle_(FindFirstFileW(pattern, &entry_)) {}
  ~Search() {
    if (IsOpen()) {
      FindClose(handle_);
    }
  }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;

  bool IsOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
  const wchar_t* Name() const noexcept { return entry_.cFileName; }
  bool Next() noexcept { return FindNextFileW(handle_, &entry_) != 0; }

 private:
  WIN32_FIND_DATAW entry_{};
  HANDLE handle_;
};

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

bool IsNamedPipe(const char* /*path*/) noexcept {
  return false;  // their names are none of files
}

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

bool VisitFolder(const char* path, FolderVisitor visitor, void* context) {
  WideBuffer pattern;
  if (!EntriesOf(path, pattern)) {
    return false;
  }
  Search search(pattern.data());
  if (!search.IsOpen()) {
    return false;
  }
  do {
    constexpr std::size_t kMostBytes = std::size_t{4} * MAX_PATH;
    std::array<char, kMostBytes> bytes;
    const std::wstring_view name(search.Name());
    if (name != L"." && name != L".." && ToBytes(search.Name(), bytes.data(), bytes.size())) {
      visitor(context, bytes.data());
    }
  } while (search.Next());
  return true;
}

bool CurrentFolder(char* path, std::size_t size) noexcept {
  WideBuffer wide;
  const DWORD length = GetCurrentDirectoryW(kMostWideCharacters, wide.data());
  return length > 0 && length < wide.size() && ToPathBytes(wide.data(), path, size);
}

}  // namespace Vell::IO::Platform
