#pragma once

// Runs a program as a process of its own, with any name, working folder and standard streams, and
// collects everything it leaves. POSIX only.

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Testing {

/// Where the standard input of a process comes from.
enum class Input {
  kNull,      // /dev/null
  kClosed,    // the process starts without one
  kText,      // a pipe that holds `inputText` and ends
  kFile,      // a file that holds `inputText`
  kOpenPipe,  // a pipe that holds `inputText` and stays open, so that reading on blocks
  kTerminal,  // a pseudo terminal with the process in its foreground; `inputText` is typed ahead
};

/// Where an output stream of a process goes.
enum class Output {
  kCaptured,
  kClosed,        // the process starts without one
  kFull,          // /dev/full, on which every write fails
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
};

struct ProcessResult {
  int exitStatus = -1;  // -1 when a signal ended the process
  int signal = 0;       // 0 when it exited
  std::string output;
  std::string error;
};

/// A running process. It is killed at the end of the scope if it still runs, and after a minute: a
/// process that hangs fails the test.
class Process {
 public:
  explicit Process(const Command& command);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Waits until standard output holds `text`. False when the process ended without it.
  bool WaitForOutput(std::string_view text);
  /// True when the process ends within this time.
  bool EndsWithin(std::chrono::milliseconds time);
  /// Types on the terminal or writes into the open pipe.
  void Type(std::string_view text) const;
  /// Sends a signal to this process alone.
  void Signal(int signal) const;
  /// Waits for the end.
  ProcessResult Wait();

  /// What appeared on the terminal so far.
  std::string TerminalText() const;
  /// The number of typed bytes that nobody has read.
  int UnreadTerminalBytes() const;
  /// The terminal's settings as text, for comparisons; now, and before the process was started.
  std::string TerminalSettings() const;
  const std::string& TerminalSettingsAtStart() const { return settingsAtStart_; }

 private:
  using Clock = std::chrono::steady_clock;

  void StartOnTerminal(const std::function<void()>& becomeProgram, std::array<int, 3>& streams);
  bool TakeStatus(int& status);
  bool IsReading() const { return outputPipe_ >= 0 || errorPipe_ >= 0; }
  void ReadOnce(Clock::time_point deadline);
  bool Reap(Clock::time_point deadline);

  int id_ = -1;
  bool isReaped_ = false;
  // A terminal forgets everything when the process that leads its session ends, so another process
  // does that: it starts the program, hands its id and its status on and stays.
  int leader_ = -1;
  int leaderReports_ = -1;
  int leaderStays_ = -1;   // until this end of a pipe is closed
  int terminal_ = -1;      // the user's side
  int terminalLine_ = -1;  // the process's side
  std::string settingsAtStart_;
  int inputPipe_ = -1;
  int outputPipe_ = -1;
  int errorPipe_ = -1;
  Clock::time_point deadline_;
  ProcessResult result_;
};

/// Starts a process and waits for its end.
ProcessResult RunProcess(const Command& command);

}  // namespace Testing
