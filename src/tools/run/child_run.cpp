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

ChildRun::ChildRun(std::string captureFile, LineHandler handleLine)
    : captureFile_(std::move(captureFile)), handleLine_(std::move(handleLine)) {}

ChildRun::~ChildRun() {
  if (process_ != Platform::kNoProcess && !HasEnded()) {
    Platform::StopProcess(process_);
    Platform::WaitForProcess(process_);
  }
}

bool ChildRun::Start(const std::string& definition) {
  const Platform::FileHandle output =
      Platform::OpenFile(captureFile_.c_str(), Platform::Access::kWrite);
  capture_ = std::make_unique<InputFile>(captureFile_);
  if (output == Platform::kNoFile || !capture_->IsOpen()) {
    Say(kToolMessages.cannotWrite, PastablePath(captureFile_));
    return false;
  }
  const Vell::String root = InstallationFolder();
  const Vell::String program = ProgramFileIn(root);
  const Vell::String name = ProgramNameIn(root);
  const std::array<const char*, 3> arguments{name.CStr(), definition.c_str(), nullptr};
  process_ = Platform::StartProcess(program.CStr(), arguments.data(),
                                    {Platform::kStandardInput, output, output});
  Platform::CloseFile(output);
  if (process_ == Platform::kNoProcess) {
    Say(kRunMessages.cannotStart, program.View());
    return false;
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
  if (process_ != Platform::kNoProcess && !HasEnded()) {
    Platform::StopProcess(process_);
    exitStatus_ = Platform::WaitForProcess(process_);
    ReadNew();
    HandleRest();
  }
}

void ChildRun::ReadNew() {
  std::array<char, 65536> block;
  for (std::int64_t count = capture_->Read(block); count > 0; count = capture_->Read(block)) {
    std::string_view text(block.data(), static_cast<std::size_t>(count));
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
