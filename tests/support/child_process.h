#pragma once

// Child processes, pipes, and what else tests of the platform layer need of the operating system.

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Testing {

/// How a process ended: with an exit status or by a signal (the other one is -1).
struct ProcessEnd {
  int exitStatus = -1;
  int signal = -1;

  bool operator==(const ProcessEnd&) const = default;
};

/// A copy of this process that runs `body` and ends with its result as exit status, without the
/// ordinary clean-up of a process. It is killed at the end of the scope if it still runs.
class ChildProcess {
 public:
  explicit ChildProcess(const std::function<int()>& body);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  ProcessEnd Wait();
  /// Empty when it still runs after this time.
  std::optional<ProcessEnd> WaitFor(std::chrono::milliseconds time);

 private:
  ProcessEnd EndOf(int status);

  int id_;
};

inline ProcessEnd RunInChild(const std::function<int()>& body) { return ChildProcess(body).Wait(); }

class Pipe {
 public:
  Pipe();
  ~Pipe();
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int ReadEnd() const { return ends_[0]; }
  int WriteEnd() const { return ends_[1]; }
  void CloseReadEnd();
  void CloseWriteEnd();

  void Write(std::string_view bytes) const;
  /// The next byte, waiting for it; -1 at the end.
  int ReadByte() const;
  /// True if a byte or the end comes within the time.
  bool IsReadable(int milliseconds) const;

 private:
  int ends_[2];
};

/// While it exists, this process cannot open anything.
class NoFreeDescriptors {
 public:
  NoFreeDescriptors();
  ~NoFreeDescriptors();
  NoFreeDescriptors(const NoFreeDescriptors&) = delete;
  NoFreeDescriptors& operator=(const NoFreeDescriptors&) = delete;

 private:
  std::uint64_t before_;
};

/// Makes `handle` another name of the open file `source`, or of the file `path`.
void ReplaceHandle(int handle, int source);
void ReplaceHandle(int handle, const std::string& path);
void CloseHandle(int handle);
bool IsOpenHandle(int handle);

/// A pipe with a name in the file system.
void MakeNamedPipe(const std::string& path);

/// Interrupts system calls of this process about every millisecond while it exists.
class Interruptions {
 public:
  Interruptions();
  ~Interruptions();
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;

  /// How often it happened so far.
  int Count() const;
};

void SleepMilliseconds(int milliseconds);

}  // namespace Testing
