#include "tools/support/output_file.h"

#include <utility>

#include "foundation/io/platform/device_files.h"
#include "foundation/io/platform/processes.h"
#include "tools/support/files.h"
#include "tools/support/messages.h"
#include "tools/support/write_failure.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

OutputFile::OutputFile(std::string path, std::optional<OwnOutput> kind,
                       ProtectedFiles* protectedFiles)
    : path_(std::move(path)), kind_(kind), protectedFiles_(protectedFiles) {}

OutputFile::Direct::Direct(const std::string& path)
    : file_(Platform::OwnStreamNamed(path.c_str())) {
  if (!IsOpen()) {
    file_ = Platform::OpenDevice(path.c_str());
    isOwned_ = IsOpen();
  }
}

OutputFile::Direct::~Direct() {
  if (isOwned_) {
    Platform::CloseFile(file_);
  }
}

bool OutputFile::Fail(std::string_view reason) noexcept {
  reason_ = reason;
  isGood_ = false;
  return false;
}

bool OutputFile::OpenDirect() {
  direct_ = std::make_unique<Direct>(path_);
  isGood_ = direct_->IsOpen();
  const std::string_view reason = LastWriteReason();
  return isGood_ ||
         Fail(Platform::IsNamedPipe(path_.c_str()) ? kWriteReasons.isNoFile.Text() : reason);
}

bool OutputFile::Open() {
  const Platform::PathKind kind = Platform::KindOf(path_.c_str());
  if (kind == Platform::PathKind::kOther ||
      Platform::OwnStreamNamed(path_.c_str()) != Platform::kNoFile) {
    return OpenDirect();
  }
  if (kind == Platform::PathKind::kFolder) {
    return Fail(kWriteReasons.isFolder.Text());
  }
  before_ = Platform::StampOf(path_.c_str());
  file_ = std::make_unique<TemporaryFile>(path_);
  isGood_ = file_->IsOpen();
  return isGood_ || Fail(file_->Reason());
}

void OutputFile::Write(std::string_view text) {
  constexpr std::size_t kBlock = std::size_t{64} << 10;
  block_.append(text);
  if (block_.size() >= kBlock) {
    WriteBlock();
  }
}

void OutputFile::WriteBlock() {
  if (isGood_ &&
      !(direct_ != nullptr ? WriteUntilRequest(direct_->Handle(), block_)
                           : Platform::WriteFile(file_->Handle(), block_.data(), block_.size()))) {
    Fail(LastWriteReason());
  }
  block_.clear();
}

bool OutputFile::HasAllBytes() {
  WriteBlock();
  if (file_ != nullptr && !file_->Close() && isGood_) {
    Fail(LastWriteReason());
  }
  direct_.reset();
  return isGood_;
}

/// Gives the complete file its name.
bool OutputFile::TakePlace() {
  if (protectedFiles_ != nullptr) {
    protectedFiles_->LookAgain();
    if (protectedFiles_->Find(path_) != nullptr) {
      return Fail(kWriteReasons.fileOfRun.Text());
    }
  }
  const auto now = Platform::StampOf(path_.c_str());
  if (kind_ && now && now != before_ && !IsOwnOutput(path_, *kind_)) {
    return Fail(Platform::KindOf(path_.c_str()) == Platform::PathKind::kFolder
                    ? kWriteReasons.isFolder.Text()
                    : kWriteReasons.changed.Text());
  }
  return file_->Replace(path_) || Fail(LastWriteReason());
}

bool OutputFile::Complete() {
  const bool isComplete = HasAllBytes() && (file_ == nullptr || TakePlace());
  file_.reset();
  return isComplete;
}

std::optional<std::string> OutputFile::CompleteOrKeepBeside() {
  std::optional<std::string> name;
  if (HasAllBytes()) {
    name = path_;
    if (file_ != nullptr && !TakePlace()) {
      const ProtectedFiles none;
      name = TakeNumberedName(path_, protectedFiles_ != nullptr ? *protectedFiles_ : none,
                              [this](const std::string& free) { return file_->Name(free); });
    }
  }
  file_.reset();
  return name && !name->empty() ? name : std::nullopt;
}

bool WriteWholeFile(const std::string& path, std::string_view text) {
  OutputFile file(path);
  if (!file.Open()) {
    return false;
  }
  file.Write(text);
  return file.Complete();
}

}  // namespace Hovar
