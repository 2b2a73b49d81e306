#pragma once

// One run of the program as a child process. What it writes on standard output and standard error
// comes, in its order, through one pipe, so that a full disk takes nothing of it. Its standard input
// is empty, so that it never waits for a key.

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "foundation/io/platform/processes.h"
#include "tools/run/capture.h"
#include "tools/run/run_lines.h"

namespace Hovar {

class ChildRun {
 public:
  /// Called with each line and its line feed, which the last one may lack.
  using LineHandler = std::function<void(std::string_view line)>;

  /// All that the program writes goes into `capture`, which Start creates; into no file without one.
  explicit ChildRun(std::optional<Capture> capture, LineHandler handleLine = {});
  /// Ends the program, which is not asked, if it still runs.
  ~ChildRun();
  ChildRun(const ChildRun&) = delete;
  ChildRun& operator=(const ChildRun&) = delete;

  /// Starts the program with a definition. When that fails a line on standard error says why.
  bool Start(const std::string& definition);

  /// Reads new output. True while the program runs; not to be called after its end.
  bool Advance();
  /// Ends the program as StopRuns does.
  void Stop();

  /// True when so much was read at last that the program may have to wait before it can write more.
  bool IsBusy() const noexcept { return isBusy_; }
  /// The line that says why not all that the program writes is read and kept, or the empty text.
  const std::string& Loss() const noexcept { return loss_; }
  bool IsRunning() const noexcept {
    return process_ != Vell::IO::Platform::kNoProcess && !HasEnded();
  }
  bool HasEnded() const noexcept { return exitStatus_.has_value(); }
  /// The program's exit status (128 + n when signal n ended it), or -1 while it runs.
  int ExitStatus() const noexcept { return exitStatus_.value_or(-1); }
  const RunLines& Lines() const noexcept { return lines_; }
  /// The file of the program's lines, whose name is certain once Start has succeeded; empty without
  /// one.
  std::string CaptureFile() const { return capture_ ? capture_->Path() : std::string(); }

 private:
  friend void StopRuns(std::span<ChildRun* const> runs);

  bool OpenCapture();
  void ReadNew();
  void Take(std::string_view text);
  void HandleRest();

  std::optional<Capture> capture_;
  LineHandler handleLine_;
  Vell::IO::Platform::FileHandle lineSource_ = Vell::IO::Platform::kNoFile;
  std::string loss_;
  bool isBusy_ = false;
  Vell::IO::Platform::ProcessHandle process_ = Vell::IO::Platform::kNoProcess;
  std::optional<int> exitStatus_;
  std::string partialLine_;
  RunLines lines_;
};

/// Asks the programs that still run to end, all at once, waits for them and reads the rest. Those
/// that have not ended after a few seconds, or at a second request to end, are not asked any more.
void StopRuns(std::span<ChildRun* const> runs);

/// Seconds on a monotonic clock, from an arbitrary start.
double SteadySeconds();

/// Sleeps between two polls of a running program: short at first, so that a short run costs no
/// time, then a tenth of a second.
class PollPause {
 public:
  void Sleep();
  /// To be called when there was much to do: the next pauses are short again.
  void Restart() noexcept { milliseconds_ = 1; }

 private:
  int milliseconds_ = 1;
};

}  // namespace Hovar
