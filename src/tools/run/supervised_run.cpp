#include "tools/run/supervised_run.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/exit_status.h"
#include "messages/error_texts.h"
#include "tools/plan/run_plan.h"
#include "tools/run/child_run.h"
#include "tools/run/kept_outputs.h"
#include "tools/run/messages.h"
#include "tools/run/own_files.h"
#include "tools/run/program_start.h"
#include "tools/run/progress.h"
#include "tools/run/progress_display.h"
#include "tools/run/run_record.h"
#include "tools/support/files.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/output_file.h"
#include "tools/support/sentence_parts.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

/// Passes the program's lines on to the streams that they were meant for.
class LineEcho {
 public:
  void Take(std::string_view line) {
    if (line.starts_with(Messages::kErrorPrefix)) {
      TakeError(line);
    } else {
      Write(Platform::kStandardOutput, line);
    }
  }
  /// False when a line could not be written.
  bool IsGood() const noexcept { return isGood_; }

 private:
  /// A terminal gets names in errors printable; whatever else takes the lines gets them as they are.
  void TakeError(std::string_view line) {
    if (line.ends_with('\n') && Platform::StandardErrorIsTerminal()) {
      line.remove_suffix(1);
      const std::string shown = Printable(line) + '\n';
      Write(Platform::kStandardError, shown);
    } else {
      Write(Platform::kStandardError, line);
    }
  }
  void Write(Platform::FileHandle stream, std::string_view text) {
    isGood_ = isGood_ && WriteUntilRequest(stream, text);
  }

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

/// Writes the record and returns the exit status: that of the run, or 1 when a run without an error has
/// no record under its name.
int WriteRecord(OutputFile& file, const std::string& name, const std::string& text, int status) {
  file.Write(text);
  const std::optional<std::string> written = file.CompleteOrKeepBeside();
  if (written == name) {
    return status;
  }
  const std::string shown = PastablePath(name);
  if (written) {
    Say(kRunMessages.recordKept, shown, file.Reason(), PastablePath(*written));
  } else if (status == kSuccess) {
    Say(kRunMessages.runCompleteRecordFailed, shown, file.Reason());
  } else {
    Say(kRunMessages.recordFailed, shown, file.Reason());
  }
  return status == kSuccess ? kFailure : status;
}

/// Runs and, if there is a record, writes it.
int RunRecorded(const RunSettings& settings, const RunPlan& plan, ChildRun& run,
                const LineEcho& echo, OutputFile& recordFile, std::optional<RunRecord>& record) {
  if (!run.Start(settings.definition)) {
    return kFailure;
  }
  Bar bar(plan, settings.showProgress);
  const int status = Supervise(run, bar, echo);
  if (!record) {
    return status;
  }
  // Whoever has asked for the end does not wait for large files to be hashed.
  record->NoteEnd(Platform::StopRequest() == 0);
  for (const std::string& file : record->ChangedFiles()) {
    Say(kRunMessages.inputChanged, PastablePath(file));
  }
  const std::string unread = status == kSuccess ? record->UnreadCoefficients() : std::string();
  const int written =
      WriteRecord(recordFile, settings.recordFile, record->Text(run.Lines(), status), status);
  if (!unread.empty()) {  // the program has read it, and the record does not say what it is
    Say(kToolMessages.cannotRead, PastablePath(unread));
    return kFailure;
  }
  return written;
}

int RunWatched(const RunSettings& settings, const RunPlan& plan) {
  std::optional<OwnFiles> own = ChooseOwnFiles(settings, plan);
  if (!own) {
    return kFailure;
  }
  // First of all, so that a failure shows before a long run and before anything is moved.
  OutputFile record(settings.recordFile, OwnOutput::kRecord, &own->protectedFiles);
  if (!settings.recordFile.empty() && !OpenRecord(record, settings.recordFile, plan)) {
    return kFailure;
  }
  Platform::DetachStandardInput();
  Platform::RememberStopRequests();
  std::optional<RunRecord> facts;
  if (!settings.recordFile.empty()) {
    facts.emplace(plan);
  }
  if (Platform::StopRequest() != 0) {
    return Platform::kSignalStatus + Platform::StopRequest();
  }
  if (facts && !facts->UnreadableData().empty()) {
    Say(kToolMessages.cannotRead, PastablePath(facts->UnreadableData()));
    return kFailure;
  }
  std::optional<Capture> capture;
  std::vector<std::string> further;
  ProtectedFiles taken = own->protectedFiles;  // names that nothing is moved to
  if (settings.showProgress) {
    further.push_back(
        capture.emplace(CaptureFor(plan), CaptureName::kOrNumbered, &own->protectedFiles).Path());
  }
  if (!settings.recordFile.empty()) {
    further.push_back(settings.recordFile);
    taken.Add(settings.recordFile);
  }
  if (settings.keepOutputs && !KeepOutputs(plan, taken, further)) {
    return kFailure;
  }
  LineEcho echo;
  ChildRun run(
      std::move(capture),
      settings.showProgress ? ChildRun::LineHandler() : [&echo](auto line) { echo.Take(line); });
  const int status = RunRecorded(settings, plan, run, echo, record, facts);
  if (settings.showProgress && run.HasEnded()) {
    const std::string warnings = Counted(run.Lines().WarningCount(), "warning");
    const std::string file = PastablePath(run.CaptureFile());
    SayLine(status == kSuccess ? Filled(kRunMessages.done, warnings, file)
                               : Filled(kRunMessages.notDone, warnings, file));
  }
  return status;
}

}  // namespace

int RunSupervised(const RunSettings& settings) {
  const RunPlan plan = MakeRunPlan(settings.definition);
  if (!plan.unreadable.empty()) {
    // What the program could read and write all the same would be neither kept nor recorded.
    Say(kToolMessages.cannotRead, PastablePath(plan.unreadable));
    return kFailure;
  }
  if (settings.showProgress || !settings.recordFile.empty()) {
    return RunWatched(settings, plan);
  }
  if (settings.keepOutputs && !KeepOutputs(plan, FilesOf(plan), {})) {
    return kFailure;
  }
  const char* const argument = settings.definition.c_str();
  return ExecuteProgram({&argument, 1});
}

}  // namespace Hovar
