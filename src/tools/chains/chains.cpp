#include "tools/chains/chains.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/exit_status.h"
#include "foundation/io/platform/temporary_files.h"
#include "tools/chains/chain_comparison.h"
#include "tools/chains/chain_definitions.h"
#include "tools/chains/chain_files.h"
#include "tools/chains/chain_outputs.h"
#include "tools/chains/messages.h"
#include "tools/chains/verdict_text.h"
#include "tools/report/report.h"
#include "tools/run/child_run.h"
#include "tools/run/progress.h"
#include "tools/run/progress_display.h"
#include "tools/support/inputs.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

/// A chain that runs.
class RunningChain {
 public:
  explicit RunningChain(const ChainDefinition& chain)
      : chain_(chain),
        plan_(MakeRunPlan(chain.file, chain.text)),
        start_(SteadySeconds()),
        progress_(plan_, start_),
        run_(Capture(chain.captureFile)) {}

  bool Start() { return run_.Start(chain_.file); }
  bool Advance() {
    const bool isRunning = run_.Advance();
    progress_.Update(run_.Lines(), SteadySeconds());
    return isRunning;
  }
  ChildRun& Run() noexcept { return run_; }
  const ChildRun& Run() const noexcept { return run_; }
  const std::string& Name() const noexcept { return chain_.name; }
  double Seconds() const { return SteadySeconds() - start_; }

  ProgressItem Item(double now, int columns) const {
    const std::string label = chain_.name + "  ";
    const int left = std::max(columns - static_cast<int>(label.size()), 0);
    return {chain_.name, label + ProgressLine(progress_, now, left), progress_.Share()};
  }

 private:
  const ChainDefinition& chain_;
  RunPlan plan_;
  double start_;
  Progress progress_;
  ChildRun run_;
};

/// Runs chains side by side. The first failure, or a request to end, ends them all.
class ChainPool {
 public:
  ChainPool(const ChainSet& set, std::vector<const ChainDefinition*> waiting, std::size_t jobs)
      : set_(set), waiting_(std::move(waiting)), jobs_(jobs) {
    std::reverse(waiting_.begin(), waiting_.end());  // the next one is at the end
  }

  /// Returns the exit status.
  int Run() {
    PollPause pause;
    bool isGood = true;
    while (isGood && !(waiting_.empty() && running_.empty())) {
      isGood = StartWaiting() && AdvanceRunning() && Platform::StopRequest() == 0;
      if (isGood) {  // nothing comes below the message of a failure
        Show();
      }
      if (isGood && !running_.empty()) {
        if (std::exchange(isBusy_, false)) {
          pause.Restart();
        }
        pause.Sleep();
      }
    }
    display_.Clear();
    StopAll();
    if (Platform::StopRequest() != 0) {
      Say(kChainMessages.stopped);
      return Platform::kSignalStatus + Platform::StopRequest();
    }
    return isGood ? kSuccess : kFailure;
  }

 private:
  bool StartWaiting() {
    while (!waiting_.empty() && running_.size() < jobs_) {
      const ChainDefinition& chain = *waiting_.back();
      waiting_.pop_back();
      display_.Clear();  // a message of a failure must not be taken back with the bars
      if (Platform::StopRequest() != 0 || !WriteChainDefinition(set_, chain)) {
        return false;
      }
      running_.push_back(std::make_unique<RunningChain>(chain));
      if (!running_.back()->Start()) {
        running_.pop_back();
        return false;
      }
    }
    return true;
  }

  /// False when a chain has failed.
  bool AdvanceRunning() {
    for (std::size_t i = 0; i < running_.size();) {
      RunningChain& chain = *running_[i];
      const bool isRunning = chain.Advance();
      if (!chain.Run().Loss().empty() || (!isRunning && chain.Run().ExitStatus() != kSuccess)) {
        TellFailure(chain);
        return false;
      }
      isBusy_ = isBusy_ || chain.Run().IsBusy();
      if (isRunning) {
        ++i;
        continue;
      }
      display_.Print(Filled(kChainMessages.chainDone, chain.Name(), DurationText(chain.Seconds())));
      running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    return true;
  }

  void TellFailure(const RunningChain& chain) {
    if (Platform::StopRequest() != 0) {
      return;  // the terminal sent the request to the program too
    }
    const ChildRun& run = chain.Run();
    const std::string& error = run.Lines().Error();
    if (!run.Loss().empty()) {
      display_.Print(run.Loss());
    }
    if (run.Loss().empty() || !error.empty()) {
      display_.Print(error.empty() ? Filled(kChainMessages.chainEndedWithStatus, chain.Name(),
                                            run.ExitStatus())
                                   : chain.Name() + ": " + error);
    }
    Say(kChainMessages.chainFailed, chain.Name(), PastablePath(chain.Run().CaptureFile()));
  }

  void StopAll() {
    std::vector<ChildRun*> runs;
    for (const std::unique_ptr<RunningChain>& chain : running_) {
      runs.push_back(&chain->Run());
    }
    StopRuns(runs);
    running_.clear();
  }

  void Show() {
    constexpr std::size_t kMostLines = 20;  // a terminal is hardly lower
    const double now = SteadySeconds();
    std::vector<ProgressItem> items;
    for (std::size_t i = 0; i < std::min(running_.size(), kMostLines); ++i) {
      items.push_back(running_[i]->Item(now, display_.Columns()));
    }
    display_.Show(items, now);
  }

  const ChainSet& set_;
  std::vector<const ChainDefinition*> waiting_;
  std::size_t jobs_;
  std::vector<std::unique_ptr<RunningChain>> running_;
  bool isBusy_ = false;  // some chain, since the last pause
  ProgressDisplay display_;
};

/// Chains of one definition have one shape. A shorter one is unfinished, or that of another run.
bool HaveOneShape(const ChainDraws& one, const ChainDraws& other) {
  return one.names == other.names && one.DrawCount() == other.DrawCount();
}

/// Prints the verdict on the finished chains and writes their report.
int Collect(const ChainSet& set) {
  std::vector<ChainDraws> draws;
  std::vector<std::string> folders;
  for (const ChainDefinition& chain : set.chains) {
    std::optional<ChainDraws> read = ReadChainFile(chain.chainFile);
    const bool fits = read && (draws.empty() || HaveOneShape(*read, draws.front()));
    if (!fits) {
      RefuseIrregular(chain.chainFile);
      Say(kChainMessages.cannotReadDraws, chain.name, PastablePath(chain.chainFile));
      return kFailure;
    }
    draws.push_back(std::move(*read));
    folders.push_back(ShownPath(chain.folder));
  }
  if (!BelongTogether(set)) {
    return kFailure;
  }
  NameEarlierChains(set);
  const std::string& coefficientFile = set.chains.front().coefficientFile;
  if (RefuseIrregular(coefficientFile)) {
    return kFailure;
  }
  const std::string text =
      VerdictText(draws, ReadCoefficientNames(coefficientFile), set.estimation);
  if (!Print(text)) {
    return kFailure;
  }
  return RunReport({folders, ShownPath(ReportOf(set))});
}

std::size_t JobsOf(const ChainSettings& settings) {
  return static_cast<std::size_t>(settings.jobs > 0 ? settings.jobs : Platform::ProcessorCount());
}

}  // namespace

int RunChains(const ChainSettings& settings) {
  const std::optional<ChainSet> set = MakeChainSet(settings.definition, settings.chainCount);
  if (!set || !MayWriteChainFiles(settings.definition, *set)) {
    return kFailure;
  }
  if (settings.collectOnly) {
    return Collect(*set);
  }
  if (!WriteChainList(*set)) {
    return kFailure;
  }
  std::vector<const ChainDefinition*> chosen;
  for (const ChainDefinition& chain : set->chains) {
    if (settings.onlyChain == 0 || settings.onlyChain == chain.number) {
      chosen.push_back(&chain);
    }
  }
  Platform::DetachStandardInput();
  Platform::RememberStopRequests();
  const int status = ChainPool(*set, std::move(chosen), JobsOf(settings)).Run();
  if (status != kSuccess || settings.onlyChain > 0) {
    return status;
  }
  // Nothing runs any more that would have to be stopped.
  Platform::ForgetStopRequests();
  Platform::RemoveTemporaryFilesAtEnd();
  return Platform::StopRequest() != 0 ? kFailure : Collect(*set);
}

}  // namespace Hovar
