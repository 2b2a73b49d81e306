#include "support/streams.h"

#include <filesystem>
#include <fstream>
#include <random>

#include "support/files.h"

namespace Testing {
namespace {

std::string NewFile(std::string_view content) {
  std::random_device random;
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() /
      ("hovar-stream-" + std::to_string(random()) + std::to_string(random()));
  std::ofstream(path, std::ios::binary) << content;
  return path.string();
}

Vell::SharedHandle<Vell::IO::Stream> Open(const std::string& path, std::uint32_t mode) {
  // Readers are tested with the same bytes on every platform.
  return Vell::MakeShared<Vell::IO::FileStream>(Vell::String(path), mode,
                                                Vell::IO::Platform::LineEnds::kLineFeeds);
}

}  // namespace

InputStream::InputStream(std::string_view content)
    : path_(NewFile(content)), stream_(Open(path_, Vell::IO::Mode::kReadText)) {}

InputStream::~InputStream() { std::filesystem::remove(path_); }

OutputStream::OutputStream()
    : path_(NewFile("")), stream_(Open(path_, Vell::IO::Mode::kWriteText)), writer_(stream_) {}

OutputStream::~OutputStream() { std::filesystem::remove(path_); }

std::string OutputStream::Content() {
  stream_->Flush();
  return ReadFile(path_);
}

}  // namespace Testing
