#include <cerrno>
#include <csignal>
#include <ctime>

#include "foundation/io/platform/end_requests_posix.h"
#include "foundation/io/platform/processes.h"

namespace Vell::IO::Platform {
namespace {

constexpr int kMillisecondsPerSecond = 1000;
constexpr long kNanosecondsPerMillisecond = 1'000'000;

// What the signal handler writes. Plain objects with static storage: a handler can be given nothing
// else. It is not interrupted by another request.
volatile std::sig_atomic_t stopRequest = 0;
volatile std::sig_atomic_t stopRequestCount = 0;
timespec firstRequest;

std::int64_t MillisecondsSince(const timespec& start) noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec - start.tv_sec) * kMillisecondsPerSecond +
         (now.tv_nsec - start.tv_nsec) / kNanosecondsPerMillisecond;
}

void RememberSignal(int signal) {
  const int error = errno;
  if (stopRequest == 0) {
    stopRequest = signal;
    clock_gettime(CLOCK_MONOTONIC, &firstRequest);
  }
  stopRequestCount = stopRequestCount + 1;
  // What asks for the end often sends its signal to this process and to its group at once. Whoever
  // asks a third time, and a second later, waits for an end that does not come.
  constexpr int kPatientRequests = 2;
  if (stopRequestCount > kPatientRequests &&
      MillisecondsSince(firstRequest) >= kMillisecondsPerSecond) {
    EndBySignal(signal);
  }
  errno = error;
}

}  // namespace

void ResetSignals() noexcept {
  // A parent that ignores the ends of its children would leave us without theirs.
  static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void RememberStopRequests() noexcept {
  struct sigaction action {};
  action.sa_handler = RememberSignal;
  sigfillset(&action.sa_mask);
  ForEachEndRequest([&action](int signal) {
    struct sigaction before {};
    sigaction(signal, &action, &before);
    if (before.sa_handler == SIG_IGN) {
      sigaction(signal, &before, nullptr);
    }
  });
}

void ForgetStopRequests() noexcept {
  ForEachEndRequest([](int signal) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == RememberSignal) {
      static_cast<void>(std::signal(signal, SIG_DFL));
    }
  });
}

int StopRequest() noexcept { return stopRequest; }

int StopRequestCount() noexcept { return stopRequestCount; }

void Sleep(int milliseconds) noexcept {
  static int known = 0;  // requests that have ended a sleep
  timespec rest{milliseconds / kMillisecondsPerSecond,
                (milliseconds % kMillisecondsPerSecond) * kNanosecondsPerMillisecond};
  while (stopRequestCount == known && nanosleep(&rest, &rest) != 0 && errno == EINTR) {
  }
  known = stopRequestCount;
}

}  // namespace Vell::IO::Platform
