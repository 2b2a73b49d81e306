#include <windows.h>

#include <algorithm>
#include <ctime>
#include <string_view>

#include "foundation/io/platform/platform.h"
#include "foundation/io/platform/wide_text_windows.h"

// The start-up code of the compiler would put the names of matching files in the place of an
// argument with a star or a question mark. Arguments are passed on as they were given.
extern "C" {
extern int _dowildcard;
int _dowildcard = 0;
}

namespace Vell::IO::Platform {
namespace {

/// The handle of the system behind one of ours. Ours is the system's number itself, but for the
/// three standard streams, which may be exchanged and may be absent (null).
HANDLE SystemHandle(FileHandle file) noexcept {
  switch (file) {
    case kNoFile:
      return nullptr;
    case kStandardInput:
      return GetStdHandle(STD_INPUT_HANDLE);
    case kStandardOutput:
      return GetStdHandle(STD_OUTPUT_HANDLE);
    case kStandardError:
      return GetStdHandle(STD_ERROR_HANDLE);
    default:
      return reinterpret_cast<HANDLE>(file);  // NOLINT(performance-no-int-to-ptr): it was one
  }
}

struct OpenRule {
  DWORD access;
  DWORD disposition;
};

OpenRule RuleOf(Access access) noexcept {
  switch (access) {
    case Access::kRead:
    case Access::kReadRegular:
      return {GENERIC_READ, OPEN_EXISTING};
    case Access::kWrite:
      return {GENERIC_WRITE, CREATE_ALWAYS};
    case Access::kReadWriteExisting:
      return {GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING};
    case Access::kReadAppend:
      // With the right to append and not that to write, every write goes to the end.
      return {GENERIC_READ | FILE_APPEND_DATA, OPEN_ALWAYS};
    case Access::kReadWriteCreate:
      return {GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS};
  }
  return {GENERIC_READ, OPEN_EXISTING};
}

/// How much one call reads or writes: less than a DWORD can say, and what the console can take.
constexpr std::size_t kMostAtOnce = std::size_t{1} << 24;

DWORD AtOnce(std::size_t size) noexcept { return static_cast<DWORD>(std::min(size, kMostAtOnce)); }

bool HasPositions(HANDLE handle) noexcept { return GetFileType(handle) == FILE_TYPE_DISK; }

/// True when the last folder of a path is "." or "..". Windows would make the folder before it;
/// elsewhere nothing is made.
bool EndsInDots(std::string_view path) noexcept {
  constexpr std::string_view kSeparators = "\\/";
  path = path.substr(0, path.find_last_not_of(kSeparators) + 1);
  path = path.substr(path.find_last_of(kSeparators) + 1);
  return path == "." || path == "..";
}

bool IsConsole(HANDLE handle) noexcept {
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) != 0;
}

}  // namespace

LineEnds TextLineEnds() noexcept { return LineEnds::kWithCarriageReturns; }

char FolderSeparator() noexcept { return '\\'; }

FileHandle OpenFile(const char* path, Access access) noexcept {
  const NativePath native(path);
  if (native.Get() == nullptr) {
    return kNoFile;
  }
  const OpenRule rule = RuleOf(access);
  // As elsewhere, a file that is open can be opened, renamed and removed. The handle is not
  // inherited.
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE opened = CreateFileW(native.Get(), rule.access, kShareAll, nullptr, rule.disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (access == Access::kReadRegular && opened != INVALID_HANDLE_VALUE && !HasPositions(opened)) {
    CloseHandle(opened);
    return kNoFile;
  }
  return reinterpret_cast<FileHandle>(opened);  // INVALID_HANDLE_VALUE is kNoFile
}

std::int64_t ReadFile(FileHandle file, void* buffer, std::size_t size) noexcept {
  DWORD count = 0;
  if (::ReadFile(SystemHandle(file), buffer, AtOnce(size), &count, nullptr) != 0) {
    return count;
  }
  return GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1;  // a pipe's writer has gone: the end
}

bool WriteFile(FileHandle file, const void* buffer, std::size_t size) noexcept {
  const char* next = static_cast<const char*>(buffer);
  while (size > 0) {
    DWORD written = 0;
    if (::WriteFile(SystemHandle(file), next, AtOnce(size), &written, nullptr) == 0 ||
        written == 0) {
      return false;
    }
    next += written;
    size -= written;
  }
  return true;
}

void IgnoreWriteSignals() noexcept {}  // a write that fails sends no signal here

std::int64_t SeekFile(FileHandle file, std::int64_t offset, Origin origin) noexcept {
  const HANDLE handle = SystemHandle(file);
  const DWORD method = origin == Origin::kCurrent ? FILE_CURRENT
                       : origin == Origin::kEnd   ? FILE_END
                                                  : FILE_BEGIN;
  LARGE_INTEGER distance;
  LARGE_INTEGER position;
  distance.QuadPart = offset;
  return HasPositions(handle) && SetFilePointerEx(handle, distance, &position, method) != 0
             ? position.QuadPart
             : -1;
}

std::int64_t FileLength(FileHandle file) noexcept {
  LARGE_INTEGER length;
  const HANDLE handle = SystemHandle(file);
  return HasPositions(handle) && GetFileSizeEx(handle, &length) != 0 ? length.QuadPart : -1;
}

bool CloseFile(FileHandle file) noexcept {
  const HANDLE handle = SystemHandle(file);
  return handle != nullptr && CloseHandle(handle) != 0;
}

void CreateFolder(const char* path) noexcept {
  const NativePath native(path);
  if (native.Get() != nullptr && !EndsInDots(path)) {
    CreateDirectoryW(native.Get(), nullptr);
  }
}

bool StandardInputIsTerminal() noexcept { return IsConsole(SystemHandle(kStandardInput)); }

void DetachStandardInput() noexcept {
  const HANDLE empty = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (empty != INVALID_HANDLE_VALUE) {
    SetStdHandle(STD_INPUT_HANDLE, empty);
  }
}

std::int64_t CalendarSeconds() noexcept { return std::time(nullptr); }

std::int64_t ProcessorMilliseconds() noexcept {
  FILETIME unused;
  FILETIME system;
  FILETIME user;
  if (GetProcessTimes(GetCurrentProcess(), &unused, &unused, &system, &user) == 0) {
    return 0;
  }
  const auto ticks = [](const FILETIME& time) {  // of 100 nanoseconds
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
  };
  constexpr std::int64_t kTicksPerMillisecond = 10'000;
  return (ticks(system) + ticks(user)) / kTicksPerMillisecond;
}

bool ProgramFile(char* path, std::size_t size) noexcept {
  WideBuffer name;
  const DWORD length = GetModuleFileNameW(nullptr, name.data(), kMostWideCharacters);
  if (length == 0 || length >= name.size()) {
    return false;
  }
  const HandleCloser file(CreateFileW(name.data(), 0, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  // The target of symbolic links comes with a mark before it: "\\?\C:\..." or
  // "\\?\UNC\server\...". Where it is not a drive's, the name as it was found serves.
  WideBuffer place;
  constexpr DWORD kMark = 4;
  const DWORD placeLength =
      file.IsOpen() ? GetFinalPathNameByHandleW(file.Get(), place.data(), kMostWideCharacters,
                                                FILE_NAME_NORMALIZED | VOLUME_NAME_DOS)
                    : 0;
  const bool isOnDrive =
      placeLength > kMark + 2 && placeLength < place.size() && place[kMark + 1] == L':';
  return ToPathBytes(isOnDrive ? place.data() + kMark : name.data(), path, size);
}

namespace {

/// True for a key that is there to change others.
bool IsModifier(WORD key) noexcept {
  constexpr std::array<WORD, 8> kModifiers = {VK_SHIFT,   VK_CONTROL, VK_MENU, VK_CAPITAL,
                                              VK_NUMLOCK, VK_SCROLL,  VK_LWIN, VK_RWIN};
  return std::find(kModifiers.begin(), kModifiers.end(), key) != kModifiers.end();
}

/// The console reports keys, not bytes, so a key that stands for several of them is one event, and
/// nothing is shown. Ctrl-C never arrives here; it ends the process as always.
void WaitForConsoleKey(HANDLE console) noexcept {
  FlushConsoleInputBuffer(console);  // drops what was typed earlier
  INPUT_RECORD record;
  DWORD count = 0;
  do {
    if (ReadConsoleInputW(console, &record, 1, &count) == 0) {
      return;
    }
  } while (record.EventType != KEY_EVENT || record.Event.KeyEvent.bKeyDown == 0 ||
           IsModifier(record.Event.KeyEvent.wVirtualKeyCode));
}

}  // namespace

void WaitForKey() noexcept {
  if (StandardInputIsTerminal()) {
    WaitForConsoleKey(SystemHandle(kStandardInput));
    return;
  }
  char byte = 0;
  ReadFile(kStandardInput, &byte, 1);
}

}  // namespace Vell::IO::Platform
