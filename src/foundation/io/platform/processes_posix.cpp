#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "foundation/io/platform/processes.h"

namespace Vell::IO::Platform {
namespace {

int StatusOf(int waited) noexcept {
  return WIFSIGNALED(waited) ? kSignalStatus + WTERMSIG(waited) : WEXITSTATUS(waited);
}

/// Makes `file` the standard stream `standard` of this process.
bool Connect(FileHandle file, int standard) noexcept {
  return file == standard || dup2(static_cast<int>(file), standard) == standard;
}

/// What the new process does between its start and the program's. Only calls that are safe in a
/// copy of any process stand here.
[[noreturn]] void RunChild(const char* program, const char* const* arguments,
                           const ProcessStreams& streams, int failure) noexcept {
  if (Connect(streams.input, STDIN_FILENO) && Connect(streams.output, STDOUT_FILENO) &&
      Connect(streams.error, STDERR_FILENO)) {
    BecomeProgram(program, arguments);
  }
  const char failed = 1;
  static_cast<void>(write(failure, &failed, 1) == 1);
  constexpr int kCannotExecute = 126;
  _exit(kCannotExecute);
}

/// True when the new process reported that the program could not be started. The pipe closes
/// without a byte when it was.
bool ReportedFailure(int pipe) noexcept {
  char failed = 0;
  ssize_t count = 0;
  while ((count = read(pipe, &failed, 1)) < 0 && errno == EINTR) {
  }
  return count == 1;
}

volatile std::sig_atomic_t stopRequest = 0;

void RememberSignal(int signal) { stopRequest = signal; }

}  // namespace

ProcessHandle StartProcess(const char* program, const char* const* arguments,
                           const ProcessStreams& streams) noexcept {
  int failure[2];
  if (pipe2(failure, O_CLOEXEC) != 0) {
    return kNoProcess;
  }
  const pid_t process = fork();
  if (process == 0) {
    RunChild(program, arguments, streams, failure[1]);
  }
  close(failure[1]);
  const bool failed = process > 0 && ReportedFailure(failure[0]);
  close(failure[0]);
  if (failed) {
    WaitForProcess(process);
  }
  return failed || process < 0 ? kNoProcess : process;
}

std::optional<int> PollProcess(ProcessHandle process) noexcept {
  int waited = 0;
  const pid_t ended = waitpid(static_cast<pid_t>(process), &waited, WNOHANG);
  return ended == process ? std::optional<int>(StatusOf(waited)) : std::nullopt;
}

int WaitForProcess(ProcessHandle process) noexcept {
  if (process == kNoProcess) {
    return -1;  // for waitpid it would be any process
  }
  int waited = 0;
  while (waitpid(static_cast<pid_t>(process), &waited, 0) < 0) {
    if (errno != EINTR) {
      return -1;
    }
  }
  return StatusOf(waited);
}

void StopProcess(ProcessHandle process) noexcept { kill(static_cast<pid_t>(process), SIGTERM); }

void Sleep(int milliseconds) noexcept {
  constexpr int kMillisecondsPerSecond = 1000;
  constexpr long kNanosecondsPerMillisecond = 1'000'000;
  timespec rest{milliseconds / kMillisecondsPerSecond,
                (milliseconds % kMillisecondsPerSecond) * kNanosecondsPerMillisecond};
  while (stopRequest == 0 && nanosleep(&rest, &rest) != 0 && errno == EINTR) {
  }
}

void RememberStopRequests() noexcept {
  struct sigaction action {};
  action.sa_handler = RememberSignal;
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    sigaction(signal, &action, &before);
    if (before.sa_handler == SIG_IGN) {
      sigaction(signal, &before, nullptr);
    }
  }
}

int StopRequest() noexcept { return stopRequest; }

bool StandardErrorIsTerminal() noexcept { return isatty(STDERR_FILENO) == 1; }

bool StandardErrorTakesEscapes() noexcept {
  const char* const kind = std::getenv("TERM");
  return StandardErrorIsTerminal() && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

int TerminalColumns() noexcept {
  constexpr int kUsualColumns = 80;
  winsize size{};
  const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kUsualColumns;
}

int ProcessorCount() noexcept {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  const int count = sched_getaffinity(0, sizeof allowed, &allowed) == 0 ? CPU_COUNT(&allowed) : 0;
  return count > 0 ? count : 1;
}

bool HostName(char* name, std::size_t size) noexcept {
  if (size == 0 || gethostname(name, size) != 0) {
    return false;
  }
  name[size - 1] = '\0';
  return true;
}

}  // namespace Vell::IO::Platform
