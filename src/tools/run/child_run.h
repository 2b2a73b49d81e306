#pragma once

// One run of the program as a child process. What it writes on standard output and standard error
// goes, in its order, into one file, which is read as it grows. Its standard input is empty, so
// that it never waits for a key.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/io/platform/processes.h"
#include "tools/run/run_lines.h"
#include "tools/support/files.h"

namespace Hovar {

class ChildRun {
 public:
  /// Called with each line and its line feed, which the last one may lack.
  using LineHandler = std::function<void(std::string_view line)>;

  /// `captureFile` is created or emptied by Start.
  explicit ChildRun(std::string captureFile, LineHandler handleLine = {});
  /// Stops the program if it still runs.
  ~ChildRun();
  ChildRun(const ChildRun&) = delete;
  ChildRun& operator=(const ChildRun&) = delete;

  /// Starts the program with a definition. When that fails a line on standard error says why.
  bool Start(const std::string& definition);

  /// Reads new output. True while the program runs; not to be called after its end.
  bool Advance();
  /// Asks the program to end, waits for it and reads the rest.
  void Stop();

  bool HasEnded() const noexcept { return exitStatus_.has_value(); }
  /// The program's exit status (128 + n when signal n ended it), or -1 while it runs.
  int ExitStatus() const noexcept { return exitStatus_.value_or(-1); }
  const RunLines& Lines() const noexcept { return lines_; }
  const std::string& CaptureFile() const noexcept { return captureFile_; }

 private:
  void ReadNew();
  void HandleRest();

  std::string captureFile_;
  LineHandler handleLine_;
  std::unique_ptr<InputFile> capture_;
  Vell::IO::Platform::ProcessHandle process_ = Vell::IO::Platform::kNoProcess;
  std::optional<int> exitStatus_;
  std::string partialLine_;
  RunLines lines_;
};

/// Seconds on a monotonic clock, from an arbitrary start.
double SteadySeconds();

/// Sleeps between two polls of a running program: short at first, so that a short run costs no
/// time, then a tenth of a second.
class PollPause {
 public:
  void Sleep();

 private:
  int milliseconds_ = 1;
};

}  // namespace Hovar
