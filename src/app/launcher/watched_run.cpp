#include "app/launcher/watched_run.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/exit_status.h"
#include "app/launcher/child_run.h"
#include "app/launcher/files.h"
#include "app/launcher/kept_outputs.h"
#include "app/launcher/message.h"
#include "app/launcher/program_start.h"
#include "app/launcher/progress.h"
#include "app/launcher/progress_display.h"
#include "app/launcher/run_plan.h"
#include "app/launcher/run_record.h"
#include "app/launcher/shown_path.h"
#include "foundation/io/platform/folders.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

// Behind the name of the log, or of the run record for a file that goes when the program has ended.
constexpr std::string_view kCaptureSuffix = ".output.txt";
constexpr std::string_view kPassingSuffix = ".output.part";

/// The file for the program's lines: beside the log of the first run. Its folder is made as the
/// program would make it. Without a log to be beside, the file is beside the definition.
std::string BesideLog(const RunPlan& plan, std::string_view suffix) {
  if (!plan.runs.empty()) {
    const PlannedRun& run = plan.runs.front();
    Platform::CreateFolder(run.folder.c_str());
    if (Platform::FolderIsWritable(run.folder.c_str())) {
      return run.logFile + std::string(suffix);
    }
  }
  return plan.definition + std::string(suffix);
}

std::string CaptureFileFor(const Options& options, const RunPlan& plan) {
  if (options.showProgress) {
    return BesideLog(plan, kCaptureSuffix);
  }
  const bool isDevice = Platform::KindOf(options.recordFile.c_str()) == Platform::PathKind::kOther;
  return isDevice ? BesideLog(plan, kPassingSuffix)
                  : options.recordFile + std::string(kPassingSuffix);
}

/// What a watched run writes besides the program's own outputs.
std::vector<std::string> FurtherOutputs(const Options& options, const std::string& captureFile) {
  std::vector<std::string> files;
  if (options.showProgress) {
    files.push_back(captureFile);
  }
  if (!options.recordFile.empty()) {
    files.push_back(options.recordFile);
  }
  return files;
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
  const bool hasEnded = run.HasEnded();
  run.Stop();
  bar.End(run);
  if (!hasEnded && Platform::StopRequest() != 0) {
    return Platform::kSignalStatus + Platform::StopRequest();
  }
  if (!echo.IsGood()) {
    Say("cannot write to standard output");
    return kFailure;
  }
  if (run.ExitStatus() != kSuccess && run.Lines().Error().empty() && Platform::StopRequest() == 0) {
    Say("the program ended with status " + std::to_string(run.ExitStatus()));
  }
  return run.ExitStatus();
}

/// Removes a file, if its path is not empty, at the end of the scope.
class PassingFile {
 public:
  explicit PassingFile(std::string path) : path_(std::move(path)) {}
  ~PassingFile() {
    if (!path_.empty()) {
      Platform::RemoveFile(path_.c_str());
    }
  }
  PassingFile(const PassingFile&) = delete;
  PassingFile& operator=(const PassingFile&) = delete;

 private:
  std::string path_;
};

/// True when the run reads or writes the file itself.
bool BelongsToRun(const std::string& path, const RunPlan& plan) {
  std::vector<std::string> files{plan.definition};
  for (const PlannedRun& run : plan.runs) {
    files.push_back(run.definition);
    files.insert(files.end(), run.inputs.begin(), run.inputs.end());
    files.insert(files.end(), run.outputs.begin(), run.outputs.end());
  }
  return std::any_of(files.begin(), files.end(), [&path](const std::string& file) {
    return file == path || Platform::SameFile(file.c_str(), path.c_str());
  });
}

/// Runs and, if a record is wanted, writes it; its file is opened first, so that nobody finds out
/// after a long run that it cannot be written.
int RunRecorded(const Options& options, const RunPlan& plan, ChildRun& run, const LineEcho& echo) {
  std::optional<OutputFile> recordFile;
  std::optional<RunRecord> record;
  if (!options.recordFile.empty()) {
    if (!recordFile.emplace(options.recordFile).Open()) {
      Say("cannot write " + options.recordFile);
      return kFailure;
    }
    record.emplace(plan);
  }
  if (!run.Start(options.definition)) {
    return kFailure;
  }
  Bar bar(plan, options.showProgress);
  const int status = Watch(run, bar, echo);
  if (record) {
    recordFile->Write(record->Text(run.Lines(), status));
    if (!recordFile->Complete()) {
      Say("cannot write " + options.recordFile);
      return kFailure;
    }
  }
  return status;
}

}  // namespace

int RunWatched(const Options& options) {
  const RunPlan plan = MakeRunPlan(options.definition);
  if (!options.recordFile.empty() && BelongsToRun(options.recordFile, plan)) {
    Say("the record cannot be written to " + options.recordFile + ", a file of the run itself");
    return kFailure;
  }
  const bool isWatched = options.showProgress || !options.recordFile.empty();
  const std::string captureFile = isWatched ? CaptureFileFor(options, plan) : std::string();
  if (options.keepOutputs && !KeepOutputs(plan, FurtherOutputs(options, captureFile))) {
    return kFailure;
  }
  if (!isWatched) {
    const char* const argument = options.definition.c_str();
    return BecomeHovar({&argument, 1});
  }
  Platform::DetachStandardInput();
  Platform::RememberStopRequests();
  const PassingFile passing(options.showProgress ? std::string() : captureFile);
  LineEcho echo;
  ChildRun run(
      captureFile,
      options.showProgress ? ChildRun::LineTaker() : [&echo](auto line) { echo.Take(line); });
  const int status = RunRecorded(options, plan, run, echo);
  if (options.showProgress && run.HasEnded()) {
    Say((status == kSuccess ? "done, " : "not done, ") +
        Count(run.Lines().WarningCount(), "warning") + "; output in " + PastablePath(captureFile));
  }
  return status;
}

}  // namespace Hovar
