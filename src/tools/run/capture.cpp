#include "tools/run/capture.h"

#include <utility>

#include "foundation/io/platform/folders.h"
#include "tools/support/messages.h"
#include "tools/support/write_failure.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

std::string CaptureOf(const std::string& file) { return file + ".output.txt"; }

Capture::Capture(std::string path, CaptureName name, const ProtectedFiles* protectedFiles)
    : path_(std::move(path)), name_(name), protectedFiles_(protectedFiles) {}

bool Capture::Fail(std::string_view reason) noexcept {
  reason_ = reason;
  return false;
}

bool Capture::Create() {
  file_ = std::make_unique<TemporaryFile>(path_);
  if (!file_->IsOpen()) {
    return Fail(file_->Reason());
  }
  const Platform::PathKind there = Platform::KindOf(path_.c_str());
  if (there == Platform::PathKind::kFolder || there == Platform::PathKind::kOther) {
    return Fail(
        (there == Platform::PathKind::kFolder ? kWriteReasons.isFolder : kWriteReasons.isNoFile)
            .Text());
  }
  if (file_->Replace(path_)) {
    return true;
  }
  const std::string_view reason = LastWriteReason();
  if (name_ == CaptureName::kAsGiven) {
    return Fail(reason);
  }
  const ProtectedFiles none;
  const std::string beside =
      TakeNumberedName(path_, protectedFiles_ != nullptr ? *protectedFiles_ : none,
                       [this](const std::string& name) { return file_->Name(name); });
  if (beside.empty()) {
    return Fail(reason);
  }
  path_ = beside;
  return true;
}

bool Capture::Write(std::string_view text) noexcept {
  return Platform::WriteFile(file_->Handle(), text.data(), text.size()) || Fail(LastWriteReason());
}

}  // namespace Hovar
