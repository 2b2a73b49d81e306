#include "tools/support/files.h"

#include <utility>

#include "foundation/io/platform/folders.h"
#include "foundation/string.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

InputFile::InputFile(const std::string& path)
    : file_(Platform::OpenFile(path.c_str(), Platform::Access::kReadRegular)) {}

InputFile::~InputFile() {
  if (IsOpen()) {
    Platform::CloseFile(file_);
  }
}

std::int64_t InputFile::Read(std::span<char> buffer) const noexcept {
  std::size_t size = 0;
  while (size < buffer.size()) {
    const std::int64_t count =
        Platform::ReadFile(file_, buffer.data() + size, buffer.size() - size);
    if (count < 0) {
      return -1;
    }
    if (count == 0) {
      break;
    }
    size += static_cast<std::size_t>(count);
  }
  return static_cast<std::int64_t>(size);
}

std::optional<std::int64_t> FileSize(const std::string& path) {
  const InputFile file(path);
  return file.IsOpen() ? std::optional(file.Length()) : std::nullopt;
}

std::optional<std::string> ReadSmallFile(const std::string& path) {
  constexpr std::size_t kBlock = std::size_t{64} << 10;
  const InputFile file(path);
  std::string text;
  while (file.IsOpen() && text.size() <= kLargestSmallFile) {
    const std::size_t size = text.size();
    text.resize(size + kBlock);
    const std::int64_t count = file.Read({text.data() + size, kBlock});
    if (count < 0) {
      break;
    }
    text.resize(size + static_cast<std::size_t>(count));
    if (count < static_cast<std::int64_t>(kBlock)) {
      return text.size() <= kLargestSmallFile ? std::optional(std::move(text)) : std::nullopt;
    }
  }
  return std::nullopt;
}

OutputFile::OutputFile(std::string path)
    : path_(std::move(path)),
      part_(path_ + ".part"),
      isDirect_(Platform::KindOf(path_.c_str()) == Platform::PathKind::kOther) {}

OutputFile::~OutputFile() {
  if (file_ != Platform::kNoFile) {
    Platform::CloseFile(file_);
    if (!isDirect_) {
      Platform::RemoveFile(part_.c_str());
    }
  }
}

bool OutputFile::Open() {
  if (Platform::KindOf(path_.c_str()) != Platform::PathKind::kFolder) {
    const std::string& name = isDirect_ ? path_ : part_;
    file_ = Platform::OpenFile(name.c_str(), Platform::Access::kWrite);
  }
  isGood_ = file_ != Platform::kNoFile;
  return isGood_;
}

void OutputFile::Write(std::string_view text) {
  constexpr std::size_t kBlock = std::size_t{64} << 10;
  block_.append(text);
  if (block_.size() >= kBlock) {
    WriteBlock();
  }
}

void OutputFile::WriteBlock() {
  isGood_ = isGood_ && Platform::WriteFile(file_, block_.data(), block_.size());
  block_.clear();
}

bool OutputFile::Complete() {
  WriteBlock();
  if (file_ == Platform::kNoFile) {
    return false;
  }
  const bool isClosed = Platform::CloseFile(std::exchange(file_, Platform::kNoFile));
  if (isDirect_) {
    return isGood_ && isClosed;
  }
  if (isGood_ && isClosed && Platform::ReplaceFile(part_.c_str(), path_.c_str())) {
    return true;
  }
  Platform::RemoveFile(part_.c_str());
  return false;
}

bool WriteWholeFile(const std::string& path, std::string_view text) {
  OutputFile file(path);
  if (!file.Open()) {
    return false;
  }
  file.Write(text);
  return file.Complete();
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  return std::string(Vell::JoinPath(folder, name).View());
}

}  // namespace Hovar
