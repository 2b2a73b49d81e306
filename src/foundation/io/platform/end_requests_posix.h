#pragma once

#include <array>
#include <csignal>

namespace Vell::IO::Platform {

/// Calls `take` with every signal that ends a process, can be caught and is no sign of a fault in
/// it. Those of failed writes are no requests either (IgnoreWriteSignals).
template <typename Take>
void ForEachEndRequest(Take take) noexcept {
  constexpr std::array kRequests = {SIGHUP,    SIGINT,  SIGQUIT,   SIGTERM, SIGUSR1,
                                    SIGUSR2,   SIGALRM, SIGVTALRM, SIGPROF, SIGXCPU,
                                    SIGSTKFLT, SIGIO,   SIGPWR};
  for (const int signal : kRequests) {
    take(signal);
  }
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
    take(signal);
  }
}

/// Within a handler of the signal: removes the temporary files of this process and lets the signal do
/// what it would have done without a handler.
void EndBySignal(int signal) noexcept;

}  // namespace Vell::IO::Platform
