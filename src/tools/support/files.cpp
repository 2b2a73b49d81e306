#include "tools/support/files.h"

#include "foundation/io/platform/device_files.h"
#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/processes.h"
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

bool WriteUntilRequest(Platform::FileHandle file, std::string_view bytes) noexcept {
  constexpr int kWait = 100;  // milliseconds
  constexpr int kMostWaitsAfterRequest = 10;
  int waits = 0;
  while (!bytes.empty()) {
    const std::int64_t count = Platform::WriteSome(file, bytes.data(), bytes.size(), kWait);
    if (count < 0) {
      return false;
    }
    waits = count == 0 && Platform::StopRequest() != 0 ? waits + 1 : 0;
    if (waits > kMostWaitsAfterRequest) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::optional<std::int64_t> FileSize(const std::string& path) {
  const InputFile file(path);
  return file.IsOpen() ? std::optional(file.Length()) : std::nullopt;
}

bool IsSmallFile(const std::string& path) {
  return Platform::KindOf(path.c_str()) == Platform::PathKind::kFile &&
         FileSize(path).value_or(0) <= static_cast<std::int64_t>(kLargestSmallFile);
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

std::string JoinPath(std::string_view folder, std::string_view name) {
  return std::string(Vell::JoinPath(folder, name).View());
}

}  // namespace Hovar
