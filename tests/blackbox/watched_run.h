#pragma once

// A run that may never end by itself: it is asked to end, and what it leaves is looked for. POSIX
// only.

#include <chrono>
#include <string>
#include <vector>

#include "support/process.h"

namespace Testing {

/// How long a process may take to end when it is asked to.
inline constexpr std::chrono::milliseconds kTimeToEnd{2000};

/// Marks a command and all that it starts, so that processes that outlive it are found, and kills
/// them at the end of the scope.
class ProcessMark {
 public:
  explicit ProcessMark(Command& command);
  ~ProcessMark();
  ProcessMark(const ProcessMark&) = delete;
  ProcessMark& operator=(const ProcessMark&) = delete;

  /// The ids of the marked processes that live.
  std::vector<int> Living() const;
  /// The same after waiting up to `time` for there to be none.
  std::vector<int> LivingAfter(std::chrono::milliseconds time) const;

 private:
  std::string value_;
};

struct WatchedEnd {
  ProcessResult result;
  /// True when TERM was sent because the run had not ended by itself.
  bool wasAsked = false;
  /// True when it ended neither by itself nor within kTimeToEnd of the request.
  bool hangs = false;
  /// Processes that were left kTimeToEnd after the end.
  std::size_t orphans = 0;
};

/// Runs a command. What has not ended within `patience` is asked to end by TERM, and killed when it
/// does not.
WatchedEnd Watch(Command command, std::chrono::milliseconds patience);

}  // namespace Testing
