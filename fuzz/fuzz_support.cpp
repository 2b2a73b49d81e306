#include "fuzz_support.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

/// The engine's own mutation.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace Fuzzing {
namespace {

/// The lines of a text with their line feeds, which the last one may lack.
std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    lines.push_back(text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1));
    text.remove_prefix(lines.back().size());
  }
  return lines;
}

/// Standard error as it was before the fuzzing engine closed it.
int messageHandle = STDERR_FILENO;

void WriteMessage(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(messageHandle, text.data(), text.size());
    if (written <= 0) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// One file and one block serve all streams, of which one is used at a time.

// The stream keeps room for bytes that are put back in front of its block.
constexpr std::size_t kPutBackRoom = 8;
std::array<unsigned char, kPutBackRoom + BlockStream::kLargestBlock> blockBuffer;

std::span<unsigned char> BufferOfBlock(std::size_t blockSize) noexcept {
  const std::size_t block = std::clamp<std::size_t>(blockSize, 1, BlockStream::kLargestBlock);
  return std::span(blockBuffer).first(kPutBackRoom + block);
}

int OpenMemoryFile() {
  const int file = memfd_create("fuzz", MFD_CLOEXEC);
  Require(file >= 0, "no file in memory");
  return file;
}

/// The file with this content, at its start.
int FileWith(std::string_view content) {
  static const int file = OpenMemoryFile();
  Require(ftruncate(file, 0) == 0 && lseek(file, 0, SEEK_SET) == 0 &&
              write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size()) &&
              lseek(file, 0, SEEK_SET) == 0,
          "the file in memory cannot be written");
  return file;
}

}  // namespace

void Fail(std::string_view message) {
  WriteMessage("Property violated: " + std::string(message) + "\n");
  std::abort();
}

bool AreSameNumber(double a, double b) noexcept {
  return (std::isnan(a) && std::isnan(b)) ||
         std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

std::uint8_t TakeByte(std::string_view& input) noexcept {
  if (input.empty()) {
    return 0;
  }
  const auto byte = static_cast<std::uint8_t>(input.front());
  input.remove_prefix(1);
  return byte;
}

std::size_t MutateLines(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed) {
  std::minstd_rand random(seed);
  const std::string input(TextOf(data, size));
  std::vector<std::string_view> lines = LinesOf(input);
  if (random() % 4 != 0 || lines.size() < 2) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  const auto choose = [&] { return 1 + random() % (lines.size() - 1); };
  const std::size_t line = choose();
  const auto place = lines.begin() + static_cast<std::ptrdiff_t>(line);
  switch (random() % 4) {
    case 0:
      lines.erase(place);
      break;
    case 1:
      lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(choose()), lines[line]);
      break;
    case 2:
      std::swap(lines[line], lines[choose()]);
      break;
    default:
      lines = {lines[0], lines[line]};
  }
  std::string changed;
  for (const std::string_view each : lines) {
    changed += each;
  }
  changed.resize(std::min(changed.size(), maxSize));
  std::copy(changed.begin(), changed.end(), data);
  return changed.size();
}

BlockStream::BlockStream(std::string_view content, std::size_t blockSize)
    : stream_(FileWith(content), Vell::IO::Mode::kReadText, BufferOfBlock(blockSize)) {}

}  // namespace Fuzzing

/// Puts the engine's settings that every fuzzer needs before those of the command line, which win.
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
  using Fuzzing::messageHandle;
  const int copy = dup(STDERR_FILENO);
  messageHandle = copy >= 0 ? copy : STDERR_FILENO;
  // The program's own lines go nowhere; an input takes a tenth of a second at most, and little
  // memory.
  static std::array<std::string, 4> settings = {"-close_fd_mask=3", "-rss_limit_mb=1024",
                                                "-malloc_limit_mb=64", "-timeout=20"};
  static std::vector<char*> all;
  const std::span<char*> given(*arguments, static_cast<std::size_t>(*count));
  all.assign(given.begin(), given.begin() + 1);
  for (std::string& setting : settings) {
    all.push_back(setting.data());
  }
  all.insert(all.end(), given.begin() + 1, given.end());
  *count = static_cast<int>(all.size());
  all.push_back(nullptr);
  *arguments = all.data();
  return 0;
}
