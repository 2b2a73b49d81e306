// Asks stdlib.h for rand_s, which takes its numbers from the system.
#define _CRT_RAND_S

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "foundation/io/platform/temporary_files.h"
#include "foundation/io/platform/wide_text_windows.h"

namespace Vell::IO::Platform {

/// An entry of a list that the console's thread walks too: it changes only under the lock.
class TemporaryName {
 public:
  explicit TemporaryName(const char* path) noexcept : path(path) {}
  NativePath path;
  TemporaryName* next = nullptr;
  TemporaryName* before = nullptr;
};

namespace {

TemporaryName* firstName = nullptr;
SRWLOCK namesLock = SRWLOCK_INIT;

class NamesLocked {
 public:
  NamesLocked() noexcept { AcquireSRWLockExclusive(&namesLock); }
  ~NamesLocked() { ReleaseSRWLockExclusive(&namesLock); }
  NamesLocked(const NamesLocked&) = delete;
  NamesLocked& operator=(const NamesLocked&) = delete;
};

void Remember(TemporaryName* name) noexcept {
  name->next = firstName;
  if (firstName != nullptr) {
    firstName->before = name;
  }
  firstName = name;
}

BOOL WINAPI RemoveAtEvent(DWORD /*event*/) {
  RemoveTemporaryFiles();
  return FALSE;  // the end goes on
}

}  // namespace

void ForgetName::operator()(TemporaryName* name) const noexcept {
  {
    const NamesLocked locked;
    if (name->before != nullptr) {
      name->before->next = name->next;
    } else {
      firstName = name->next;
    }
    if (name->next != nullptr) {
      name->next->before = name->before;
    }
  }
  delete name;
}

bool RandomBytes(void* bytes, std::size_t size) noexcept {
  auto* next = static_cast<unsigned char*>(bytes);
  while (size > 0) {
    unsigned int number = 0;
    if (rand_s(&number) != 0) {
      return false;
    }
    const std::size_t part = std::min(size, sizeof number);
    std::memcpy(next, &number, part);
    next += part;
    size -= part;
  }
  return true;
}

NewFile CreateTemporaryFile(const char* path) {
  auto entry = std::make_unique<TemporaryName>(path);
  if (entry->path.Get() == nullptr) {
    return {};
  }
  // With the right to append and not that to write, every write goes to the end.
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  NewFile made;
  const NamesLocked locked;
  made.file = reinterpret_cast<FileHandle>(
      CreateFileW(entry->path.Get(), GENERIC_READ | FILE_APPEND_DATA, kShareAll, nullptr,
                  CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (made.file != kNoFile) {
    Remember(entry.get());
    made.name.reset(entry.release());
  }
  return made;
}

void RemoveTemporaryFiles() noexcept {
  const NamesLocked locked;
  for (const TemporaryName* name = firstName; name != nullptr; name = name->next) {
    DeleteFileW(name->path.Get());
  }
}

void RemoveTemporaryFilesAtEnd() noexcept { SetConsoleCtrlHandler(RemoveAtEvent, TRUE); }

}  // namespace Vell::IO::Platform
