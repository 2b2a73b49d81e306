#include "support/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace Testing {
namespace {

volatile sig_atomic_t interruptionCount = 0;

void CountInterruption(int) { interruptionCount = interruptionCount + 1; }

}  // namespace

ChildProcess::ChildProcess(const std::function<int()>& body) : id_(fork()) {
  if (id_ == 0) {
    _exit(body());
  }
  EXPECT_GT(id_, 0) << "no child process";
}

ChildProcess::~ChildProcess() {
  if (id_ > 0) {
    kill(id_, SIGKILL);
    Wait();
  }
}

ProcessEnd ChildProcess::Wait() {
  int status = 0;
  while (waitpid(id_, &status, 0) < 0 && errno == EINTR) {
  }
  return EndOf(status);
}

std::optional<ProcessEnd> ChildProcess::WaitFor(std::chrono::milliseconds time) {
  const auto deadline = std::chrono::steady_clock::now() + time;
  int status = 0;
  while (waitpid(id_, &status, WNOHANG) != id_) {
    if (std::chrono::steady_clock::now() > deadline) {
      return std::nullopt;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return EndOf(status);
}

ProcessEnd ChildProcess::EndOf(int status) {
  id_ = -1;
  ProcessEnd end;
  if (WIFEXITED(status)) {
    end.exitStatus = WEXITSTATUS(status);
  } else if (WIFSIGNALED(status)) {
    end.signal = WTERMSIG(status);
  }
  return end;
}

Pipe::Pipe() { EXPECT_EQ(pipe(ends_), 0); }

Pipe::~Pipe() {
  CloseReadEnd();
  CloseWriteEnd();
}

void Pipe::CloseReadEnd() {
  if (ends_[0] >= 0) {
    close(ends_[0]);
    ends_[0] = -1;
  }
}

void Pipe::CloseWriteEnd() {
  if (ends_[1] >= 0) {
    close(ends_[1]);
    ends_[1] = -1;
  }
}

void Pipe::Write(std::string_view bytes) const {
  EXPECT_EQ(write(ends_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

int Pipe::ReadByte() const {
  unsigned char byte = 0;
  ssize_t count;
  do {
    count = read(ends_[0], &byte, 1);
  } while (count < 0 && errno == EINTR);
  return count == 1 ? byte : -1;
}

bool Pipe::IsReadable(int milliseconds) const {
  pollfd entry{ends_[0], POLLIN, 0};
  return poll(&entry, 1, milliseconds) == 1;
}

NoFreeDescriptors::NoFreeDescriptors() {
  rlimit limit{};
  EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  before_ = limit.rlim_cur;
  const int lowestFree = open("/dev/null", O_RDONLY);
  EXPECT_GE(lowestFree, 0);
  close(lowestFree);
  limit.rlim_cur = static_cast<rlim_t>(lowestFree);
  EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

NoFreeDescriptors::~NoFreeDescriptors() {
  rlimit limit{};
  EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  limit.rlim_cur = before_;
  EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

void ReplaceHandle(int handle, int source) {
  if (dup2(source, handle) < 0) {
    std::abort();
  }
}

void ReplaceHandle(int handle, const std::string& path) {
  const int file = open(path.c_str(), O_RDWR);
  if (file < 0) {
    std::abort();
  }
  ReplaceHandle(handle, file);
  if (file != handle) {
    close(file);
  }
}

void CloseHandle(int handle) { close(handle); }

bool IsOpenHandle(int handle) { return fcntl(handle, F_GETFD) >= 0; }

void MakeNamedPipe(const std::string& path) { EXPECT_EQ(mkfifo(path.c_str(), 0600), 0) << path; }

Interruptions::Interruptions() {
  interruptionCount = 0;
  struct sigaction action {};
  action.sa_handler = CountInterruption;  // without SA_RESTART, so that calls end with EINTR
  sigaction(SIGALRM, &action, nullptr);
  const itimerval timer{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

Interruptions::~Interruptions() {
  const itimerval off{};
  setitimer(ITIMER_REAL, &off, nullptr);
  signal(SIGALRM, SIG_IGN);
  signal(SIGALRM, SIG_DFL);
}

int Interruptions::Count() const { return interruptionCount; }

void SleepMilliseconds(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace Testing
