#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "foundation/io/platform/interruption_posix.h"
#include "foundation/io/platform/native_path_posix.h"
#include "foundation/io/platform/platform.h"
#include "foundation/io/platform/processes.h"

namespace Vell::IO::Platform {
namespace {

int OpenFlags(Access access) noexcept {
  switch (access) {
    case Access::kRead:
      return O_RDONLY;
    case Access::kReadRegular:
      return O_RDONLY | O_NONBLOCK | O_NOCTTY;
    case Access::kWrite:
      return O_WRONLY | O_CREAT | O_TRUNC;
    case Access::kReadWriteExisting:
      return O_RDWR;
    case Access::kReadAppend:
      return O_RDWR | O_CREAT | O_APPEND;
    case Access::kReadWriteCreate:
      return O_RDWR | O_CREAT | O_TRUNC;
  }
  return O_RDONLY;
}

int Descriptor(FileHandle file) noexcept { return static_cast<int>(file); }

/// Whether a file that was opened without waiting is a regular one, which then is as if opened in
/// the usual way.
bool IsRegular(int descriptor) noexcept {
  struct stat status {};
  return WithoutInterruption([&] { return fstat(descriptor, &status); }) == 0 &&
         S_ISREG(status.st_mode) && fcntl(descriptor, F_SETFL, O_RDONLY) == 0;
}

/// Whether a path leads to something that opening would change or wait for: a pipe would lose its
/// other reader's bytes, a device may move.
bool IsSpecial(const char* path) noexcept {
  struct stat status {};
  return WithoutInterruption([&] { return stat(path, &status); }) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace

LineEnds TextLineEnds() noexcept { return LineEnds::kLineFeeds; }

char FolderSeparator() noexcept { return '/'; }

FileHandle OpenFile(const char* path, Access access) noexcept {
  const NativePath native(path);
  const bool isRegularOnly = access == Access::kReadRegular;
  if (native.Get() == nullptr || (isRegularOnly && IsSpecial(native.Get()))) {
    return kNoFile;
  }
  const int opened = WithoutInterruption([&] {
    return open(native.Get(), OpenFlags(access) | O_CLOEXEC,
                S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH);
  });
  if (isRegularOnly && opened >= 0 && !IsRegular(opened)) {
    close(opened);
    return kNoFile;
  }
  if (opened < 0 || opened > STDERR_FILENO) {
    return opened;
  }
  // The process was started with a standard handle closed. A file in its place would receive what
  // is meant for the terminal.
  const int moved = fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(opened);
  return moved;
}

std::int64_t ReadFile(FileHandle file, void* buffer, std::size_t size) noexcept {
  return WithoutInterruption([&] { return read(Descriptor(file), buffer, size); });
}

bool WriteFile(FileHandle file, const void* buffer, std::size_t size) noexcept {
  const char* next = static_cast<const char*>(buffer);
  while (size > 0) {
    const ssize_t written =
        WithoutInterruption([&] { return write(Descriptor(file), next, size); });
    if (written <= 0) {
      return false;
    }
    next += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

void IgnoreWriteSignals() noexcept {
  // Fails for no signal that can be ignored.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

std::int64_t SeekFile(FileHandle file, std::int64_t offset, Origin origin) noexcept {
  const int whence = origin == Origin::kCurrent ? SEEK_CUR
                     : origin == Origin::kEnd   ? SEEK_END
                                                : SEEK_SET;
  return WithoutInterruption([&] { return lseek(Descriptor(file), offset, whence); });
}

std::int64_t FileLength(FileHandle file) noexcept {
  struct stat status;
  const int result = WithoutInterruption([&] { return fstat(Descriptor(file), &status); });
  return result == 0 ? status.st_size : -1;
}

bool CloseFile(FileHandle file) noexcept {
  // An interrupted close has closed the descriptor all the same; repeating it could hit another.
  return close(Descriptor(file)) == 0 || errno == EINTR;
}

void CreateFolder(const char* path) noexcept {
  const NativePath native(path);
  if (native.Get() != nullptr) {
    WithoutInterruption([&] { return mkdir(native.Get(), S_IRWXU | S_IRWXG | S_IRWXO); });
  }
}

bool StandardInputIsTerminal() noexcept { return isatty(STDIN_FILENO) == 1; }

void DetachStandardInput() noexcept {
  const int empty = WithoutInterruption([] { return open("/dev/null", O_RDONLY); });
  if (empty > STDIN_FILENO) {
    WithoutInterruption([&] { return dup2(empty, STDIN_FILENO); });
    close(empty);
  }
}

std::int64_t CalendarSeconds() noexcept { return std::time(nullptr); }

std::int64_t ProcessorMilliseconds() noexcept {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

bool ProgramFile(char* path, std::size_t size) noexcept {
  const ssize_t length =
      WithoutInterruption([&] { return readlink("/proc/self/exe", path, size); });
  if (length <= 0 || static_cast<std::size_t>(length) >= size) {
    return false;
  }
  path[length] = '\0';
  return true;
}

void BecomeProgram(const char* program, const char* const* arguments,
                   void (* /*warn*/)() noexcept) noexcept {
  // execv takes its arguments as pointers to non-const for historical reasons; it changes nothing.
  execv(program, const_cast<char* const*>(arguments));
}

namespace {

// What the signal handler needs to leave the terminal as it found it. Plain objects with static
// storage: a handler can be given nothing else. They are complete before a handler is installed.
termios terminalBefore;
termios terminalForKey;

/// True when the terminal's foreground belongs to another job. Without job control there is none.
bool InBackground() noexcept {
  const pid_t foreground = tcgetpgrp(STDIN_FILENO);
  return foreground != -1 && foreground != getpgrp();
}

void RestoreTerminal() noexcept {
  if (!InBackground()) {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &terminalBefore);
  }
}

/// Restores the terminal and lets the signal do what it would have done without us.
void EndBySignal(int signal) {
  RestoreTerminal();
  static_cast<void>(std::signal(signal, SIG_DFL));
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, signal);
  static_cast<void>(std::raise(signal));
  sigprocmask(SIG_UNBLOCK, &only, nullptr);
}

/// Restores the terminal while the process is suspended, and takes it again afterwards.
void StopBySignal(int /*signal*/) {
  const int error = errno;
  RestoreTerminal();
  static_cast<void>(std::raise(SIGSTOP));
  if (!InBackground()) {
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &terminalForKey);
  }
  errno = error;
}

/// Installs a handler for as long as it lives, unless the signal is ignored.
class SignalGuard {
 public:
  SignalGuard(int signal, void (*handler)(int)) noexcept : signal_(signal) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal_, &action, &before_);
    if (before_.sa_handler == SIG_IGN) {
      sigaction(signal_, &before_, nullptr);
    }
  }
  ~SignalGuard() { sigaction(signal_, &before_, nullptr); }
  SignalGuard(const SignalGuard&) = delete;
  SignalGuard& operator=(const SignalGuard&) = delete;

 private:
  int signal_;
  struct sigaction before_ {};
};

/// Drops what has arrived but was not read, and what follows within `milliseconds` of it.
void DropPendingInput(int milliseconds) noexcept {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  std::array<char, 64> dropped;
  while (poll(&input, 1, milliseconds) == 1 && (input.revents & POLLIN) != 0 &&
         read(STDIN_FILENO, dropped.data(), dropped.size()) > 0) {
  }
}

void WaitForTerminalKey() noexcept {
  if (InBackground() || tcgetattr(STDIN_FILENO, &terminalBefore) != 0) {
    return;
  }
  terminalForKey = terminalBefore;
  terminalForKey.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  terminalForKey.c_cc[VMIN] = 1;
  terminalForKey.c_cc[VTIME] = 0;
  const SignalGuard onInterrupt(SIGINT, EndBySignal);
  const SignalGuard onTerminate(SIGTERM, EndBySignal);
  const SignalGuard onHangUp(SIGHUP, EndBySignal);
  const SignalGuard onQuit(SIGQUIT, EndBySignal);
  const SignalGuard onStop(SIGTSTP, StopBySignal);
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &terminalForKey);  // drops what was typed earlier
  char key = 0;
  while (read(STDIN_FILENO, &key, 1) < 0 && errno == EINTR && !InBackground()) {
  }
  constexpr char kEscape = '\x1b';
  if (key == kEscape) {
    // Arrow and function keys send an escape and further bytes, which must not reach the shell.
    constexpr int kKeyGapMilliseconds = 50;
    DropPendingInput(kKeyGapMilliseconds);
  }
  RestoreTerminal();
}

}  // namespace

void WaitForKey() noexcept {
  if (StandardInputIsTerminal()) {
    WaitForTerminalKey();
    return;
  }
  char byte = 0;
  ReadFile(kStandardInput, &byte, 1);
}

}  // namespace Vell::IO::Platform
