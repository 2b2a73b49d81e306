#include "faults/system_calls.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>

// The functions that the linker binds to the names of the calls.
extern "C" {
int __real_open(const char* path, int flags, ...);
ssize_t __real_read(int file, void* buffer, size_t size);
ssize_t __real_write(int file, const void* buffer, size_t size);
off_t __real_lseek(int file, off_t offset, int whence);
int __real_fstat(int file, struct stat* status);
int __real_close(int file);
int __real_mkdir(const char* path, mode_t mode);

int __wrap_open(const char* path, int flags, ...);
ssize_t __wrap_read(int file, void* buffer, size_t size);
ssize_t __wrap_write(int file, const void* buffer, size_t size);
off_t __wrap_lseek(int file, off_t offset, int whence);
int __wrap_fstat(int file, struct stat* status);
int __wrap_close(int file);
int __wrap_mkdir(const char* path, mode_t mode);
}

namespace Testing {
namespace {

struct OpenedFile {
  bool isWritable;
  char path[sizeof SystemCallReport::path];
};

// Plain static storage: the calls are met before and after everything else in the process.
SystemCallReport* armedReport = nullptr;
SystemCallFault armedFault;
std::array<OpenedFile, 64> openedFiles;

OpenedFile* Opened(int file) {
  const auto index = static_cast<std::size_t>(file);
  return file >= 0 && index < openedFiles.size() ? &openedFiles[index] : nullptr;
}

void CopyPath(char* to, const char* path) {
  std::strncpy(to, path, sizeof SystemCallReport::path - 1);
}

bool IsShort() {
  return armedReport != nullptr && armedFault.kind == SystemCallFault::Kind::kShort;
}

[[noreturn]] void Die() {
  kill(getpid(), SIGKILL);
  pause();
  _exit(98);
}

/// Counts a call and returns the number of its error, or 0 when it is to be done.
int Begin(SystemCall call, int file, const char* path) {
  if (armedReport == nullptr || (armedFault.only.has_value() && *armedFault.only != call)) {
    return 0;
  }
  SystemCallReport& report = *armedReport;
  ++report.count;
  const bool isHit = armedFault.kind == SystemCallFault::Kind::kError && armedFault.isFromThenOn
                         ? report.count >= armedFault.failing
                         : report.count == armedFault.failing;
  if (armedFault.failing == 0 || !isHit) {
    return 0;
  }
  if (!report.hasFired) {
    report.hasFired = true;
    report.call = call;
    report.file = file;
    if (path != nullptr) {
      report.isThere = access(path, F_OK) == 0;
      CopyPath(report.path, path);
    } else if (const OpenedFile* const opened = Opened(file); opened != nullptr) {
      report.isOpenForWriting = opened->isWritable;
      CopyPath(report.path, opened->path);
    }
  }
  if (armedFault.kind == SystemCallFault::Kind::kKillBefore) {
    Die();
  }
  return armedFault.kind == SystemCallFault::Kind::kError ? armedFault.error : 0;
}

template <typename Result>
Result End(Result result) {
  if (armedReport != nullptr && armedReport->hasFired &&
      armedFault.kind == SystemCallFault::Kind::kKillAfter) {
    Die();
  }
  return result;
}

}  // namespace

SystemCallFaults::SystemCallFaults() : report_(nullptr) {
  void* const shared = mmap(nullptr, sizeof(SystemCallReport), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  EXPECT_NE(shared, MAP_FAILED);
  report_ = static_cast<SystemCallReport*>(shared);
}

SystemCallFaults::~SystemCallFaults() {
  Disarm();
  munmap(report_, sizeof(SystemCallReport));
}

void SystemCallFaults::Clear() { *report_ = {}; }

void SystemCallFaults::Arm(const SystemCallFault& fault) {
  armedFault = fault;
  armedReport = report_;
}

void SystemCallFaults::Disarm() { armedReport = nullptr; }

std::string NameOf(SystemCall call) {
  constexpr std::array<const char*, kSystemCalls.size()> kNames = {
      "open", "read", "write", "seek", "length", "close", "mkdir"};
  return kNames.at(static_cast<std::size_t>(call));
}

}  // namespace Testing

using Testing::Begin;
using Testing::End;
using Testing::IsShort;
using Testing::Opened;
using Testing::SystemCall;

extern "C" {

int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : mode_t{};
  va_end(arguments);
  if (const int error = Begin(SystemCall::kOpen, -1, path); error != 0) {
    errno = error;
    return -1;
  }
  const int file = __real_open(path, flags, mode);
  if (Testing::OpenedFile* const opened = Opened(file); opened != nullptr) {
    opened->isWritable = (flags & O_ACCMODE) != O_RDONLY;
    Testing::CopyPath(opened->path, path);
  }
  return End(file);
}

ssize_t __wrap_read(int file, void* buffer, size_t size) {
  if (const int error = Begin(SystemCall::kRead, file, nullptr); error != 0) {
    errno = error;
    return -1;
  }
  constexpr size_t kShort = 37;
  return End(__real_read(file, buffer, IsShort() ? std::min(size, kShort) : size));
}

ssize_t __wrap_write(int file, const void* buffer, size_t size) {
  if (const int error = Begin(SystemCall::kWrite, file, nullptr); error != 0) {
    errno = error;
    return -1;
  }
  return End(__real_write(file, buffer, IsShort() ? (size + 1) / 2 : size));
}

off_t __wrap_lseek(int file, off_t offset, int whence) {
  if (const int error = Begin(SystemCall::kSeek, file, nullptr); error != 0) {
    errno = error;
    return -1;
  }
  return End(__real_lseek(file, offset, whence));
}

int __wrap_fstat(int file, struct stat* status) {
  if (const int error = Begin(SystemCall::kLength, file, nullptr); error != 0) {
    errno = error;
    return -1;
  }
  return End(__real_fstat(file, status));
}

int __wrap_close(int file) {
  const int error = Begin(SystemCall::kClose, file, nullptr);
  const int result = __real_close(file);
  if (error != 0) {
    errno = error;
    return -1;
  }
  return End(result);
}

int __wrap_mkdir(const char* path, mode_t mode) {
  if (const int error = Begin(SystemCall::kMakeFolder, -1, path); error != 0) {
    errno = error;
    return -1;
  }
  return End(__real_mkdir(path, mode));
}

}  // extern "C"
