#pragma once

// Runs of the built command under strace, which lets one of its system calls fail, or sends it a
// signal in place of a call. POSIX only; the package is `strace`.

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "faults/call_lists.h"
#include "faults/command_tools.h"
#include "faults/forked_run.h"

namespace Testing {

/// Which process meets a fault.
enum class FaultPlace {
  kCommand,  // the command itself
  kStart,    // what is to become the program, before it has; the command may meet the fault too
  kProgram,  // the program that the command has started; of two chains, the first
};

std::string NameOf(FaultPlace place);

struct CallFault {
  CommandCall call;
  std::string effect;         // as strace takes it: error=EIO, signal=SIGKILL
  bool isFromThenOn = false;  // all later calls of the name have the effect too

  std::string Text() const;
};

struct CommandResult {
  RunResult run;
  bool hasHung = false;
  std::vector<std::string> trace;  // the lines
  std::vector<std::string> left;   // processes that were there two seconds after its end

  /// True when a call met the fault.
  bool IsHit() const;
  /// True when a call whose trace begins so met it.
  bool IsHit(const std::string& begin) const;
};

/// What the command starts as its program.
enum class StandIn {
  kNone,     // the program
  kStaying,  // a process that ends only when it is told to
};

/// Runs of one tool in the folder of its study.
class TracedCommand {
 public:
  TracedCommand(const CommandTool& tool, const CommandStudy& study);

  /// A run without a fault.
  CommandResult Run() const;
  CommandResult Run(FaultPlace place, const CallFault& fault,
                    StandIn program = StandIn::kNone) const;
  /// The calls of a run that can meet a fault, from the start of main.
  std::vector<CommandCall> CallsOf(FaultPlace place) const;
  /// Those of the command while a program that stays runs.
  std::vector<CommandCall> CallsBesideProgram() const;

 private:
  CommandResult RunTraced(FaultPlace place, const std::string& injection, StandIn program,
                          std::chrono::milliseconds patience) const;
  CommandResult Finish(const std::vector<std::string>& begin,
                       std::chrono::milliseconds patience) const;
  std::vector<std::string> TakeTrace(FaultPlace place) const;

  std::vector<std::string> arguments_;
  std::filesystem::path folder_;
  ScratchFolder place_;  // of installations and traces
};

}  // namespace Testing
