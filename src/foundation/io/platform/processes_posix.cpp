#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "foundation/io/platform/interruption_posix.h"
#include "foundation/io/platform/processes.h"

namespace Vell::IO::Platform {
namespace {

int StatusOf(int waited) noexcept {
  return WIFSIGNALED(waited) ? kSignalStatus + WTERMSIG(waited) : WEXITSTATUS(waited);
}

/// Makes `file` the standard stream `standard` of this process.
bool Connect(FileHandle file, int standard) noexcept {
  return file == standard ||
         WithoutInterruption([&] { return dup2(static_cast<int>(file), standard); }) == standard;
}

/// Moves a descriptor above those of the standard streams, which a process that was started without
/// them has free. -1 on failure.
int AboveStandard(int descriptor) noexcept {
  if (descriptor < 0 || descriptor > STDERR_FILENO) {
    return descriptor;
  }
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(descriptor);
  return moved;
}

/// Both ends of a pipe or none.
bool MakePipe(int (&ends)[2]) noexcept {
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return false;
  }
  for (int& end : ends) {
    end = AboveStandard(end);
  }
  if (ends[0] >= 0 && ends[1] >= 0) {
    return true;
  }
  close(ends[0]);
  close(ends[1]);
  return false;
}

/// Blocks all signals while it lives.
class BlockedSignals {
 public:
  BlockedSignals() noexcept {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &before_);
  }
  ~BlockedSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t before_{};
};

/// True for a signal that a new process must ignore as this one does: those of failed writes, those
/// by which shells and nohup shield what they start, and those of job control.
bool StaysIgnored(int signal) noexcept {
  constexpr std::array kShielded = {SIGPIPE, SIGXFSZ, SIGHUP,  SIGINT, SIGQUIT,
                                    SIGTERM, SIGTSTP, SIGTTIN, SIGTTOU};
  return std::find(kShielded.begin(), kShielded.end(), signal) != kShielded.end();
}

/// Gives back to each signal what it usually does, and lets all of them in. None is caught by this
/// process's handler any more, which would lose a request to end.
void AnswerSignalsAsUsual() noexcept {
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_DFL &&
        !(action.sa_handler == SIG_IGN && StaysIgnored(signal))) {
      static_cast<void>(std::signal(signal, SIG_DFL));
    }
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// What a new process writes to its parent before the program starts in it. The pipe closes then.
constexpr char kIsUnbound = 'u';
constexpr char kIsNotStarted = 'n';

/// What the new process does between its start and the program's. Only calls that are safe in a
/// copy of any process stand here.
[[noreturn]] void RunChild(const char* program, const char* const* arguments,
                           const ProcessStreams& streams, pid_t parent, int report) noexcept {
  const auto tell = [report](char what) { static_cast<void>(write(report, &what, 1) == 1); };
  constexpr int kCannotExecute = 126;
  if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) {
    tell(kIsUnbound);
  }
  if (getppid() != parent) {
    _exit(kCannotExecute);  // it ended before its end was bound to ours
  }
  AnswerSignalsAsUsual();
  if (Connect(streams.input, STDIN_FILENO) && Connect(streams.output, STDOUT_FILENO) &&
      Connect(streams.error, STDERR_FILENO)) {
    BecomeProgram(program, arguments);
  }
  tell(kIsNotStarted);
  _exit(kCannotExecute);
}

}  // namespace

ProcessHandle StartProcess(const char* program, const char* const* arguments,
                           const ProcessStreams& streams, bool* isBound) noexcept {
  int report[2];
  if (!MakePipe(report)) {
    return kNoProcess;
  }
  const pid_t self = getpid();
  pid_t process = -1;
  {
    const BlockedSignals blocked;
    process = fork();
    if (process == 0) {
      RunChild(program, arguments, streams, self, report[1]);
    }
  }
  close(report[1]);
  bool isStarted = process > 0;
  bool isUnbound = false;
  char what = 0;
  for (ssize_t count = 1; process > 0 && count != 0;) {
    count = read(report[0], &what, 1);
    isUnbound = isUnbound || (count == 1 && what == kIsUnbound);
    isStarted = isStarted && !(count == 1 && what == kIsNotStarted);
    if (count < 0 && errno != EINTR) {
      break;
    }
  }
  close(report[0]);
  if (process > 0 && !isStarted) {
    WaitForProcess(process);
  }
  if (isBound != nullptr) {
    *isBound = !isUnbound;
  }
  return isStarted ? process : kNoProcess;
}

Pipe NewPipe() noexcept {
  int ends[2];
  if (!MakePipe(ends)) {
    return {};
  }
  // The one end is read in turns with other work. Without the larger size it is read more often.
  constexpr int kMegabyte = 1 << 20;
  fcntl(ends[0], F_SETPIPE_SZ, kMegabyte);
  if (fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0) {
    close(ends[0]);
    close(ends[1]);
    return {};
  }
  return {ends[0], ends[1]};
}

std::int64_t ReadArrived(FileHandle pipe, void* buffer, std::size_t size) noexcept {
  ssize_t count = 0;
  while ((count = read(static_cast<int>(pipe), buffer, size)) < 0 && errno == EINTR) {
  }
  return count > 0 ? count : count == 0 ? kPipeEnd : errno == EAGAIN ? 0 : kPipeFailure;
}

std::optional<int> PollProcess(ProcessHandle process) noexcept {
  int waited = 0;
  const pid_t ended = waitpid(static_cast<pid_t>(process), &waited, WNOHANG);
  if (ended < 0 && errno != EINTR) {
    return kLostStatus;  // somebody else has taken it
  }
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

void StopProcess(ProcessHandle process) noexcept {
  kill(static_cast<pid_t>(process), SIGTERM);
  kill(static_cast<pid_t>(process), SIGCONT);
}

void KillProcess(ProcessHandle process) noexcept { kill(static_cast<pid_t>(process), SIGKILL); }

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
