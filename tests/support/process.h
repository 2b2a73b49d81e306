#pragma once

// Runs a program as a process of its own, with any name, working folder and standard streams, and
// collects everything it leaves.

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace Testing {

/// Where the standard input of a process comes from.
enum class Input {
  kNull,      // the null device
  kClosed,    // the process starts without one
  kText,      // a pipe that holds `inputText` and ends
  kFile,      // a file that holds `inputText`
  kOpenPipe,  // a pipe that holds `inputText` and stays open, so that reading on blocks
  kTerminal,  // a pseudo terminal with the process in its foreground; `inputText` is typed ahead;
              // for a RunningProcess only
};

/// Where an output stream of a process goes.
enum class Output {
  kCaptured,
  kClosed,        // the process starts without one
  kFull,          // a file on which every write fails
  kBroken,        // a pipe that nobody reads
  kWithStandard,  // standard error only: into the same pipe as standard output
};

struct Command {
  std::filesystem::path program;
  /// The first one is the name that the program sees as its own.
  std::vector<std::string> arguments;
  std::filesystem::path folder;
  /// Set on top of the environment of the test.
  std::vector<std::pair<std::string, std::string>> environment;
  Input input = Input::kNull;
  std::string inputText;
  Output output = Output::kCaptured;
  Output error = Output::kCaptured;
  /// Bytes to which the process may let a file grow, as `ulimit -f`, or -1. POSIX only.
  std::int64_t fileSizeLimit = -1;
};

struct ProcessResult {
  int exitStatus = -1;  // -1 when a signal ended the process, or it was stopped after a minute
  int signal = 0;       // 0 when it exited
  std::string output;
  std::string error;
};

/// Starts a process and waits for its end.
ProcessResult RunProcess(const Command& command);

}  // namespace Testing
