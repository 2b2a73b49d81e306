#include "app/launcher/watched_run.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "app/launcher/child_run.h"
#include "app/launcher/message.h"
#include "app/launcher/progress.h"
#include "app/launcher/progress_display.h"
#include "app/launcher/run_plan.h"
#include "foundation/io/platform/folders.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kSignalStatus = 128;

constexpr std::string_view kCaptureSuffix = ".output.txt";

/// The file for the program's lines: beside the log of the first run. Its folder is made as the
/// program would make it. Without a log to be beside, the file is beside the definition.
std::string CaptureFileBesideLog(const RunPlan& plan) {
  if (!plan.runs.empty()) {
    const PlannedRun& run = plan.runs.front();
    Platform::CreateFolder(run.folder.c_str());
    if (Platform::FolderIsWritable(run.folder.c_str())) {
      return run.logFile + std::string(kCaptureSuffix);
    }
  }
  return plan.definition + std::string(kCaptureSuffix);
}

/// Passes the program's lines on to the streams that they were meant for.
class LineEcho {
 public:
  void Take(std::string_view line) {
    constexpr std::string_view kErrorPrefix = "Error: ";
    const Platform::FileHandle stream =
        line.starts_with(kErrorPrefix) ? Platform::kStandardError : Platform::kStandardOutput;
    isGood_ = isGood_ && Platform::WriteFile(stream, line.data(), line.size());
  }
  /// False when a line could not be written.
  bool IsGood() const noexcept { return isGood_; }

 private:
  bool isGood_ = true;
};

/// The bar of one run, if it is wanted.
class Bar {
 public:
  Bar(const RunPlan& plan, bool isShown) : progress_(plan, SteadySeconds()), isShown_(isShown) {}

  void Update(const RunLines& lines) {
    const double now = SteadySeconds();
    progress_.Update(lines, now);
    Show(now);
  }

  void End(const ChildRun& run) {
    if (!isShown_) {
      return;
    }
    if (run.ExitStatus() == kSuccess) {
      progress_.Complete();
      Show(SteadySeconds());
      return;
    }
    display_.Clear();
    if (!run.Lines().Error().empty()) {
      display_.Print(run.Lines().Error());
    }
  }

 private:
  void Show(double now) {
    if (isShown_) {
      display_.Show({{"", ProgressLine(progress_, now, display_.Columns()), progress_.Share()}},
                    now);
    }
  }

  Progress progress_;
  ProgressDisplay display_;
  bool isShown_;
};

std::string Count(std::int64_t count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

/// Watches the program to its end and returns the exit status.
int Watch(ChildRun& run, Bar& bar, const LineEcho& echo) {
  PollPause pause;
  while (run.Advance() && Platform::StopRequest() == 0 && echo.IsGood()) {
    bar.Update(run.Lines());
    pause.Sleep();
  }
  run.Stop();
  bar.End(run);
  if (Platform::StopRequest() != 0) {
    return kSignalStatus + Platform::StopRequest();
  }
  if (!echo.IsGood()) {
    Say("cannot write to standard output");
    return kFailure;
  }
  return run.ExitStatus();
}

}  // namespace

int RunWatched(const Options& options) {
  const RunPlan plan = MakeRunPlan(options.definition);
  LineEcho echo;
  ChildRun::LineTaker takeLine;
  if (!options.showProgress) {
    takeLine = [&echo](std::string_view line) { echo.Take(line); };
  }
  Platform::DetachStandardInput();
  Platform::RememberStopRequests();
  ChildRun run(CaptureFileBesideLog(plan), takeLine);
  if (!run.Start(options.definition)) {
    return kFailure;
  }
  Bar bar(plan, options.showProgress);
  const int status = Watch(run, bar, echo);
  if (options.showProgress) {
    Say((status == kSuccess ? "done, " : "not done, ") +
        Count(run.Lines().WarningCount(), "warning") + "; output in " + run.CaptureFile());
  }
  return status;
}

}  // namespace Hovar
