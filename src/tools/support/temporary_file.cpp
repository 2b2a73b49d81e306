#include "tools/support/temporary_file.h"

#include <array>
#include <utility>

#include "foundation/io/platform/folders.h"
#include "tools/support/paths.h"
#include "tools/support/write_failure.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

/// Random digits of 64 bits, or an empty text where the system has none.
std::string RandomDigits() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<unsigned char, 8> bytes;
  std::string digits;
  if (Platform::RandomBytes(bytes.data(), bytes.size())) {
    for (const unsigned char byte : bytes) {
      digits += kDigits[byte / kDigits.size()];
      digits += kDigits[byte % kDigits.size()];
    }
  }
  return digits;
}

/// The beginning of a path, so that a file system takes the name with what is put behind it.
std::string WithRoom(const std::string& path) {
  constexpr std::size_t kLongestName = 200;
  const auto isInsideCharacter = [](char c) {  // of UTF-8
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
  };
  const std::size_t begin = path.size() - LastName(path).size();
  std::size_t size = path.size();
  while (size > begin + kLongestName || (size < path.size() && isInsideCharacter(path[size]))) {
    --size;
  }
  return path.substr(0, size);
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& path) {
  constexpr int kMostTries = 8;  // that a name is taken once has a probability of 1 in 2^64
  for (int i = 0; i < kMostTries && !IsOpen(); ++i) {
    const std::string digits = RandomDigits();
    if (digits.empty()) {
      return;
    }
    path_ = WithRoom(path) + '.' + digits + ".part";
    made_ = Platform::CreateTemporaryFile(path_.c_str());
    reason_ = IsOpen() ? std::string_view() : LastWriteReason();
    if (!IsOpen() && Platform::IsTaken(path_.c_str()) != true) {
      return;
    }
  }
}

TemporaryFile::~TemporaryFile() {
  Close();
  if (made_.name != nullptr) {
    Platform::RemoveFile(path_.c_str());
  }
}

bool TemporaryFile::Close() noexcept {
  const Platform::FileHandle file = std::exchange(made_.file, Platform::kNoFile);
  return file == Platform::kNoFile || Platform::CloseFile(file);
}

bool TemporaryFile::Replace(const std::string& path) {
  if (!Platform::ReplaceFile(path_.c_str(), path.c_str())) {
    return false;
  }
  made_.name.reset();
  return true;
}

bool TemporaryFile::Name(const std::string& path) {
  if (!Platform::Rename(path_.c_str(), path.c_str())) {
    return false;
  }
  made_.name.reset();
  return true;
}

}  // namespace Hovar
