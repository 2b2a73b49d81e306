#include <windows.h>

#include <atomic>
#include <csignal>

#include "foundation/io/platform/processes.h"

namespace Vell::IO::Platform {
namespace {

constexpr int kHangUp = 1;

std::atomic<int> stopRequest = 0;
std::atomic<int> stopRequestCount = 0;
HANDLE stopEvent = nullptr;  // set by each request, to end a rest, which takes it back

BOOL WINAPI RememberEvent(DWORD event) {
  int none = 0;
  stopRequest.compare_exchange_strong(none, event == CTRL_C_EVENT       ? SIGINT
                                            : event == CTRL_BREAK_EVENT ? SIGTERM
                                                                        : kHangUp);
  constexpr int kPatientRequests = 2;
  if (++stopRequestCount > kPatientRequests) {
    return FALSE;  // the system ends this process
  }
  SetEvent(stopEvent);
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    // The process is ended when this returns; the main thread needs the time that is left.
    ::Sleep(INFINITE);
  }
  return TRUE;
}

}  // namespace

void ResetSignals() noexcept {}

void Sleep(int milliseconds) noexcept {
  if (stopEvent != nullptr) {
    WaitForSingleObject(stopEvent, static_cast<DWORD>(milliseconds));
  } else {
    ::Sleep(static_cast<DWORD>(milliseconds));
  }
}

void RememberStopRequests() noexcept {
  if (stopEvent == nullptr) {
    stopEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  }
  ForgetStopRequests();  // a handler that is added twice would have to be removed twice
  SetConsoleCtrlHandler(RememberEvent, TRUE);
}

void ForgetStopRequests() noexcept { SetConsoleCtrlHandler(RememberEvent, FALSE); }

int StopRequest() noexcept { return stopRequest; }

int StopRequestCount() noexcept { return stopRequestCount; }

}  // namespace Vell::IO::Platform
