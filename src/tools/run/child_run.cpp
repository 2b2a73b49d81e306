#include "tools/run/child_run.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "tools/run/messages.h"
#include "tools/support/installation.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/shown_path.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

ChildRun::ChildRun(std::optional<Capture> capture, LineHandler handleLine)
    : capture_(std::move(capture)), handleLine_(std::move(handleLine)) {}

ChildRun::~ChildRun() {
  if (IsRunning()) {
    Platform::KillProcess(process_);
    Platform::WaitForProcess(process_);
  }
  if (lineSource_ != Platform::kNoFile) {
    Platform::CloseFile(lineSource_);
  }
}

bool ChildRun::OpenCapture() {
  if (capture_ && !capture_->Create()) {
    Say(kToolMessages.cannotWriteBecause, PastablePath(capture_->Path()), capture_->Reason());
    return false;
  }
  return true;
}

bool ChildRun::Start(const std::string& definition) {
  const std::optional<Installation> installation = FindInstallation();
  if (!installation || !OpenCapture()) {
    return false;
  }
  const Platform::Pipe pipe = Platform::NewPipe();
  lineSource_ = pipe.output;
  const std::array<const char*, 3> arguments{installation->programName.CStr(), definition.c_str(),
                                             nullptr};
  bool isBound = true;
  if (pipe.input != Platform::kNoFile) {
    process_ = Platform::StartProcess(installation->program.CStr(), arguments.data(),
                                      {Platform::kStandardInput, pipe.input, pipe.input}, &isBound);
    Platform::CloseFile(pipe.input);
  }
  if (process_ == Platform::kNoProcess) {
    Say(kRunMessages.cannotStart, installation->program.View());
    return false;
  }
  if (!isBound) {
    Say(kRunMessages.outlivesCommand);
  }
  return true;
}

bool ChildRun::Advance() {
  // In this order, so that once the end is known all that the program wrote can be read.
  exitStatus_ = Platform::PollProcess(process_);
  ReadNew();
  if (HasEnded()) {
    HandleRest();
  }
  return !HasEnded();
}

void ChildRun::Stop() {
  ChildRun* const self = this;
  StopRuns({&self, 1});
}

void StopRuns(std::span<ChildRun* const> runs) {
  constexpr double kPatience = 3;  // seconds
  const double start = SteadySeconds();
  const auto forEachRunning = [runs](auto take) {
    for (ChildRun* const run : runs) {
      if (run->IsRunning()) {
        take(*run);
      }
    }
  };
  forEachRunning([](const ChildRun& run) { Platform::StopProcess(run.process_); });
  PollPause pause;
  for (bool isRunning = true; isRunning;) {
    const bool isOver = SteadySeconds() - start >= kPatience || Platform::StopRequestCount() > 1;
    isRunning = false;
    forEachRunning([&](ChildRun& run) {
      if (isOver) {
        Platform::KillProcess(run.process_);
      }
      isRunning = run.Advance() || isRunning;
    });
    if (isRunning) {
      pause.Sleep();
    }
  }
}

void ChildRun::ReadNew() {
  // More than the pipe holds, so that all is read after the end; not for ever, if it never ends.
  constexpr std::size_t kMostAtOnce = std::size_t{4} << 20;
  constexpr std::size_t kMuch = std::size_t{16} << 10;  // a quarter of a small pipe
  std::array<char, 65536> block;
  std::size_t taken = 0;
  while (taken < kMostAtOnce) {
    const std::int64_t count = Platform::ReadArrived(lineSource_, block.data(), block.size());
    if (count == Platform::kPipeFailure) {
      loss_ = kRunMessages.cannotReadLines.Text();
    }
    if (count <= 0) {
      break;
    }
    Take({block.data(), static_cast<std::size_t>(count)});
    taken += static_cast<std::size_t>(count);
  }
  isBusy_ = taken >= kMuch;
}

void ChildRun::Take(std::string_view text) {
  if (capture_ && loss_.empty() && !capture_->Write(text)) {
    loss_ = Filled(kToolMessages.cannotWriteBecause, PastablePath(capture_->Path()),
                   capture_->Reason());
  }
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    partialLine_.append(text.substr(0, end + 1));
    text.remove_prefix(end + 1);
    lines_.Take(std::string_view(partialLine_).substr(0, partialLine_.size() - 1));
    if (handleLine_) {
      handleLine_(partialLine_);
    }
    partialLine_.clear();
  }
  partialLine_.append(text);
}

void ChildRun::HandleRest() {
  if (!partialLine_.empty()) {
    lines_.Take(partialLine_);
    if (handleLine_) {
      handleLine_(partialLine_);
    }
    partialLine_.clear();
  }
  lines_.End();
}

double SteadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void PollPause::Sleep() {
  constexpr int kLongest = 100;
  Platform::Sleep(milliseconds_);
  milliseconds_ = std::min(2 * milliseconds_, kLongest);
}

}  // namespace Hovar
