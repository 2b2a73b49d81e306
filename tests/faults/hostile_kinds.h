#pragma once

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace Testing {

/// What stands where a file is expected.
enum class HostileKind {
  kRegular,
  kMissing,
  kPipe,        // a named pipe that nobody else opens
  kSlowPipe,    // a named pipe whose writer takes its time
  kZeros,       // the device without an end
  kFullDevice,  // the device on which every write fails
  kNullDevice,
  kTerminalDevice,  // of a process without a terminal
  kSocket,
  kFolder,
  kLink,  // to a regular file in another folder
  kLinkToFolder,
  kLinkToItself,
  kLinksInACircle,
  kDanglingLink,
  kUnreadable,  // may be neither read nor written
  kGrowing,     // written to during the run
  kSparse,      // a terabyte of zeros that takes no room
  kKernelFile,  // its length is 0 although it holds something
  kEndlessKernelFile,
};

struct NamedKind {
  HostileKind kind;
  const char* what;
};

const std::vector<NamedKind>& HostileKinds();

/// True where reading or writing waits, or goes on and on.
bool IsEndless(HostileKind kind);

/// True where the result of reading depends on the moment.
bool Varies(HostileKind kind);

/// A file of a kind, with what has to go on while it is used.
class HostileFile {
 public:
  /// `elsewhere` is an existing folder for what links lead to. `content` is what a regular file
  /// holds.
  HostileFile(const std::filesystem::path& path, HostileKind kind, const std::string& content,
              const std::filesystem::path& elsewhere);
  ~HostileFile();
  HostileFile(const HostileFile&) = delete;
  HostileFile& operator=(const HostileFile&) = delete;

 private:
  void Make(const std::string& content, const std::filesystem::path& elsewhere);
  void WriteSlowly(const std::string& content);
  void Grow();

  std::filesystem::path path_;
  HostileKind kind_;
  std::atomic<bool> isOver_ = false;
  std::thread worker_;
};

}  // namespace Testing
