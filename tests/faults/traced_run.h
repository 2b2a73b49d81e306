#pragma once

// Runs of the built program under strace, which shows its system calls and makes one of them fail
// from outside. POSIX only; the package is `strace`.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/system_calls.h"

namespace Testing {

/// The calls that are traced, by their names in the kernel.
inline constexpr char kTracedCalls[] = "openat,read,write,lseek,close,mkdir";

struct TracedCall {
  std::string name;
  /// False for the calls of the loader, which looks for libraries, and of the sanitizers, which
  /// open pipes of their own and read what the system reports of the process.
  bool isOfProgram = false;
  SystemCallReport call;  // isThere: an earlier call has made the folder
  std::size_t size = 0;   // of a read or a write
  bool isInjected = false;
};

/// What becomes of a call instead of its work.
struct Injection {
  std::string name;
  int number = 0;      // among the calls of this name, from 1
  std::string effect;  // as strace takes it: error=EIO, retval=1
};

struct TracedResult {
  RunResult run;
  std::vector<TracedCall> calls;
};

/// Empty when processes can be traced here, otherwise the reason.
std::string WhyNothingCanBeTraced();

/// Runs `definition` of the study under strace.
TracedResult RunTraced(const FaultStudy& study, const std::string& definition,
                       const std::optional<Injection>& injection = std::nullopt);

}  // namespace Testing
