#include "faults/hostile_kinds.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fstream>

namespace Testing {
namespace {

namespace fs = std::filesystem;

void Write(const fs::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

/// A socket's address is shorter than many a path, so it is made in its folder under a short name
/// and renamed.
void MakeSocket(const fs::path& path) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const fs::path place = path.parent_path() / "s";
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(place.string().size(), sizeof address.sun_path);
  std::strcpy(address.sun_path, place.c_str());
  EXPECT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  close(socket);
  fs::rename(place, path);
}

/// What a link of this kind leads to; empty for what is none.
fs::path TargetOf(HostileKind kind, const fs::path& path, const fs::path& elsewhere) {
  switch (kind) {
    case HostileKind::kZeros:
      return "/dev/zero";
    case HostileKind::kFullDevice:
      return "/dev/full";
    case HostileKind::kNullDevice:
      return "/dev/null";
    case HostileKind::kTerminalDevice:
      return "/dev/tty";
    case HostileKind::kLink:
      return elsewhere / "target";
    case HostileKind::kLinkToFolder:
      return elsewhere;
    case HostileKind::kLinkToItself:
      return path.filename();
    case HostileKind::kLinksInACircle:
      return elsewhere / "circle";
    case HostileKind::kDanglingLink:
      return elsewhere / "none";
    case HostileKind::kKernelFile:
      return "/proc/self/status";
    case HostileKind::kEndlessKernelFile:
      return "/proc/self/pagemap";
    default:
      return {};
  }
}

void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

}  // namespace

const std::vector<NamedKind>& HostileKinds() {
  static const std::vector<NamedKind> kinds = {
      {HostileKind::kMissing, "missing"},
      {HostileKind::kPipe, "pipe"},
      {HostileKind::kSlowPipe, "pipe with a slow writer"},
      {HostileKind::kZeros, "/dev/zero"},
      {HostileKind::kFullDevice, "/dev/full"},
      {HostileKind::kNullDevice, "/dev/null"},
      {HostileKind::kTerminalDevice, "/dev/tty"},
      {HostileKind::kSocket, "socket"},
      {HostileKind::kFolder, "folder"},
      {HostileKind::kLink, "link"},
      {HostileKind::kLinkToFolder, "link to a folder"},
      {HostileKind::kLinkToItself, "link to itself"},
      {HostileKind::kLinksInACircle, "links in a circle"},
      {HostileKind::kDanglingLink, "dangling link"},
      {HostileKind::kUnreadable, "unreadable"},
      {HostileKind::kGrowing, "growing"},
      {HostileKind::kSparse, "sparse"},
      {HostileKind::kKernelFile, "file of the kernel"},
      {HostileKind::kEndlessKernelFile, "endless file of the kernel"},
  };
  return kinds;
}

bool IsEndless(HostileKind kind) {
  return kind == HostileKind::kPipe || kind == HostileKind::kSlowPipe ||
         kind == HostileKind::kZeros || kind == HostileKind::kSparse ||
         kind == HostileKind::kGrowing || kind == HostileKind::kEndlessKernelFile;
}

bool Varies(HostileKind kind) {
  return kind == HostileKind::kGrowing || kind == HostileKind::kSlowPipe ||
         kind == HostileKind::kKernelFile || kind == HostileKind::kEndlessKernelFile;
}

HostileFile::HostileFile(const fs::path& path, HostileKind kind, const std::string& content,
                         const fs::path& elsewhere)
    : path_(path), kind_(kind) {
  fs::remove_all(path_);
  fs::create_directories(path_.parent_path());
  Make(content, elsewhere);
}

HostileFile::~HostileFile() {
  isOver_ = true;
  if (worker_.joinable()) {
    worker_.join();
  }
  if (kind_ == HostileKind::kUnreadable && fs::exists(path_)) {
    fs::permissions(path_, fs::perms::owner_all);
  }
}

void HostileFile::Make(const std::string& content, const fs::path& elsewhere) {
  if (const fs::path target = TargetOf(kind_, path_, elsewhere); !target.empty()) {
    fs::create_symlink(target, path_);
  }
  switch (kind_) {
    case HostileKind::kPipe:
      EXPECT_EQ(::mkfifo(path_.c_str(), 0600), 0);
      break;
    case HostileKind::kSlowPipe:
      EXPECT_EQ(::mkfifo(path_.c_str(), 0600), 0);
      worker_ = std::thread([this, content] { WriteSlowly(content); });
      break;
    case HostileKind::kSocket:
      MakeSocket(path_);
      break;
    case HostileKind::kFolder:
      fs::create_directory(path_);
      break;
    case HostileKind::kLink:
      Write(elsewhere / "target", content);
      break;
    case HostileKind::kLinksInACircle:
      fs::create_symlink(path_, elsewhere / "circle");
      break;
    case HostileKind::kRegular:
      Write(path_, content);
      break;
    case HostileKind::kUnreadable:
      Write(path_, content);
      fs::permissions(path_, fs::perms::none);
      break;
    case HostileKind::kGrowing:
      Write(path_, content);
      worker_ = std::thread([this] { Grow(); });
      break;
    case HostileKind::kSparse:
      Write(path_, content);
      fs::resize_file(path_, std::uintmax_t{1} << 40);
      break;
    default:
      break;
  }
}

void HostileFile::WriteSlowly(const std::string& content) {
  int pipe = -1;
  while (!isOver_ && pipe < 0) {  // until somebody reads
    pipe = open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    Pause();
  }
  for (std::size_t next = 0; !isOver_ && next < content.size(); next += 50) {
    if (write(pipe, content.data() + next, std::min<std::size_t>(50, content.size() - next)) <= 0) {
      break;
    }
    Pause();
  }
  if (pipe >= 0) {
    close(pipe);
  }
}

void HostileFile::Grow() {
  // It is looked up anew each time: a run may put another file in its place.
  constexpr int kMostLines = 100'000;
  for (int line = 0; !isOver_ && line < kMostLines; ++line) {
    const int file = open(path_.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC);
    if (file >= 0) {
      static_cast<void>(write(file, "z,Z,0,0\n", 8) == 8);
      close(file);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace Testing
