#pragma once

// A process that a test talks to while it runs: signals, a terminal, an input that stays open.
// POSIX only.

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "support/process.h"

namespace Testing {

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
  /// Reads standard output no more, as the end of `| head` does.
  void CloseOutput();
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

}  // namespace Testing
