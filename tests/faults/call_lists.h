#pragma once

// The system calls in a trace, and what can happen to each.

#include <string>
#include <vector>

namespace Testing {

struct CommandCall {
  std::string name;
  int number = 0;  // among the calls of this name in its process, from 1

  bool operator==(const CommandCall&) const = default;
};

/// The calls from the start of main to the end, of the trace of one process.
std::vector<CommandCall> CallsOfMain(const std::vector<std::string>& trace);

/// All calls in the trace of one process.
std::vector<CommandCall> AllCalls(const std::vector<std::string>& trace);

/// The calls of a copy of the command up to the one that makes it the program.
std::vector<CommandCall> CallsOfStart(const std::vector<std::string>& trace);

/// The first calls of the command while a program of it is there.
std::vector<CommandCall> CallsBesideChild(const std::vector<std::string>& trace);

/// The errors with which a call can plausibly fail, as strace takes them.
const std::vector<std::string>& ErrorsOf(const std::string& call);

/// True for a call that a signal can interrupt: it may wait, if only for a file system of a network.
bool IsInterruptible(const std::string& call);

}  // namespace Testing
