#include "tools/run/supervised_run.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/exit_status.h"
#include "foundation/io/platform/folders.h"
#include "messages/error_texts.h"
#include "tools/plan/run_plan.h"
#include "tools/run/child_run.h"
#include "tools/run/kept_outputs.h"
#include "tools/run/messages.h"
#include "tools/run/program_start.h"
#include "tools/run/progress.h"
#include "tools/run/progress_display.h"
#include "tools/run/run_record.h"
#include "tools/support/files.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/paths.h"
#include "tools/support/sentence_parts.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

/// The file for the program's lines where a bar takes their place: beside the log of the first run.
/// Its folder is made as the program would make it. Without a log to be beside, the file is beside
/// the definition.
std::string CaptureFileFor(const RunPlan& plan) {
  constexpr std::string_view kSuffix = ".output.txt";
  if (!plan.runs.empty()) {
    const PlannedRun& run = plan.runs.front();
    Platform::CreateFolder(run.folder.c_str());
    if (Platform::FolderIsWritable(run.folder.c_str())) {
      return run.logFile + std::string(kSuffix);
    }
  }
  return plan.definition + std::string(kSuffix);
}

/// What a supervised run writes besides the program's own outputs.
std::vector<std::string> FurtherOutputs(const RunSettings& settings,
                                        const std::string& captureFile) {
  std::vector<std::string> files;
  if (settings.showProgress) {
    files.push_back(captureFile);
  }
  if (!settings.recordFile.empty()) {
    files.push_back(settings.recordFile);
  }
  return files;
}

/// Passes the program's lines on to the streams that they were meant for.
class LineEcho {
 public:
  void Take(std::string_view line) {
    const Platform::FileHandle stream = line.starts_with(Messages::kErrorPrefix)
                                            ? Platform::kStandardError
                                            : Platform::kStandardOutput;
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

/// Supervises the program to its end and returns the exit status.
int Supervise(ChildRun& run, Bar& bar, const LineEcho& echo) {
  PollPause pause;
  while (run.Advance() && Platform::StopRequest() == 0 && echo.IsGood() && run.Loss().empty()) {
    bar.Update(run.Lines());
    if (run.IsBusy()) {
      pause.Restart();
    }
    pause.Sleep();
  }
  const bool hasEnded = run.HasEnded();
  run.Stop();
  bar.End(run);
  const bool isWhole = hasEnded && echo.IsGood() && run.Loss().empty();
  if (!isWhole && Platform::StopRequest() != 0) {
    return Platform::kSignalStatus + Platform::StopRequest();
  }
  if (!run.Loss().empty()) {
    SayLine(run.Loss());
    return kFailure;
  }
  if (!echo.IsGood()) {
    Say(kToolMessages.cannotPrint);
    return kFailure;
  }
  if (run.ExitStatus() != kSuccess && run.Lines().Error().empty() && Platform::StopRequest() == 0) {
    Say(kRunMessages.endedWithStatus, run.ExitStatus());
  }
  return run.ExitStatus();
}

/// True when the run reads or writes the file itself.
bool BelongsToRun(const std::string& path, const RunPlan& plan) {
  std::vector<std::string> files{plan.definition};
  for (const PlannedRun& run : plan.runs) {
    files.push_back(run.definition);
    files.insert(files.end(), run.inputs.begin(), run.inputs.end());
    files.insert(files.end(), run.outputs.begin(), run.outputs.end());
  }
  return std::any_of(files.begin(), files.end(),
                     [&path](const std::string& file) { return IsSameFile(file, path); });
}

/// Runs and, if a record is wanted, writes it; its file is opened first, so that a failure to write
/// it shows before a long run.
int RunRecorded(const RunSettings& settings, const RunPlan& plan, ChildRun& run,
                const LineEcho& echo) {
  std::optional<OutputFile> recordFile;
  std::optional<RunRecord> record;
  if (!settings.recordFile.empty()) {
    if (!recordFile.emplace(settings.recordFile).Open()) {
      Say(kToolMessages.cannotWrite, settings.recordFile);
      return kFailure;
    }
    record.emplace(plan);
  }
  if (Platform::StopRequest() != 0) {
    return Platform::kSignalStatus + Platform::StopRequest();
  }
  if (!run.Start(settings.definition)) {
    return kFailure;
  }
  Bar bar(plan, settings.showProgress);
  const int status = Supervise(run, bar, echo);
  if (record) {
    // Whoever has asked for the end does not wait for large files to be hashed.
    record->NoteEnd(Platform::StopRequest() == 0);
    for (const std::string& file : record->ChangedFiles()) {
      Say(kRunMessages.inputChanged, PastablePath(file));
    }
    recordFile->Write(record->Text(run.Lines(), status));
    if (!recordFile->Complete()) {
      Say(kToolMessages.cannotWrite, settings.recordFile);
      return kFailure;
    }
  }
  return status;
}

}  // namespace

int RunSupervised(const RunSettings& settings) {
  const RunPlan plan = MakeRunPlan(settings.definition);
  if (!settings.recordFile.empty() && BelongsToRun(settings.recordFile, plan)) {
    Say(kRunMessages.recordIsOfRun, settings.recordFile);
    return kFailure;
  }
  const bool isSupervised = settings.showProgress || !settings.recordFile.empty();
  const std::string captureFile = settings.showProgress ? CaptureFileFor(plan) : std::string();
  if (settings.keepOutputs && !KeepOutputs(plan, FurtherOutputs(settings, captureFile))) {
    return kFailure;
  }
  if (!isSupervised) {
    const char* const argument = settings.definition.c_str();
    return ExecuteProgram({&argument, 1});
  }
  Platform::DetachStandardInput();
  Platform::RememberStopRequests();
  LineEcho echo;
  ChildRun run(
      captureFile,
      settings.showProgress ? ChildRun::LineHandler() : [&echo](auto line) { echo.Take(line); });
  const int status = RunRecorded(settings, plan, run, echo);
  if (settings.showProgress && run.HasEnded()) {
    const std::string warnings = Counted(run.Lines().WarningCount(), "warning");
    const std::string file = PastablePath(captureFile);
    SayLine(status == kSuccess ? Filled(kRunMessages.done, warnings, file)
                               : Filled(kRunMessages.notDone, warnings, file));
  }
  return status;
}

}  // namespace Hovar
