#include "faults/call_lists.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

namespace Testing {
namespace {

/// The calls of a part of a trace, numbered from the start of the process.
class CallCounter {
 public:
  /// Takes a line; true when it is of a call that can meet a fault.
  bool Take(const std::string& line) {
    // Ends of processes, signals, and ends of calls that began in an earlier line.
    if (line.find_first_of("+-<") == 0) {
      return false;
    }
    call_.name = line.substr(0, line.find('('));
    call_.number = ++numbers_[call_.name];
    // strace leaves open what it says cannot be closed. Nobody would see the end of such a pipe, but
    // the system does close it.
    if (line.starts_with("close(") && line.find("<pipe:") != std::string::npos) {
      return false;
    }
    // These do not fail, or not for what lies outside of the process. Memory has suites of its own.
    static const std::set<std::string, std::less<>> others = {"clock_gettime",
                                                              "brk",
                                                              "mmap",
                                                              "mprotect",
                                                              "munmap",
                                                              "mremap",
                                                              "madvise",
                                                              "exit_group",
                                                              "rt_sigreturn",
                                                              "futex",
                                                              "set_robust_list",
                                                              "set_tid_address",
                                                              "rseq",
                                                              "arch_prctl",
                                                              "restart_syscall"};
    return !others.contains(call_.name);
  }
  const CommandCall& Call() const { return call_; }

 private:
  std::map<std::string, int> numbers_;
  CommandCall call_;
};

bool BeginsChild(const CommandCall& call) {
  return call.name == "clone" || call.name == "clone3" || call.name == "fork" ||
         call.name == "vfork";
}

}  // namespace

std::vector<CommandCall> CallsOfMain(const std::vector<std::string>& trace) {
  std::vector<CommandCall> calls;
  CallCounter counter;
  bool isMain = false;
  for (const std::string& line : trace) {
    // The first thing that main does is to see to its signals.
    isMain = isMain || line.starts_with("rt_sig");
    if (counter.Take(line) && isMain) {
      calls.push_back(counter.Call());
    }
  }
  return calls;
}

std::vector<CommandCall> AllCalls(const std::vector<std::string>& trace) {
  std::vector<CommandCall> calls;
  CallCounter counter;
  for (const std::string& line : trace) {
    if (counter.Take(line)) {
      calls.push_back(counter.Call());
    }
  }
  return calls;
}

std::vector<CommandCall> CallsOfStart(const std::vector<std::string>& trace) {
  std::vector<CommandCall> calls;
  CallCounter counter;
  for (const std::string& line : trace) {
    if (counter.Take(line)) {
      calls.push_back(counter.Call());
      if (counter.Call().name == "execve") {
        break;
      }
    }
  }
  return calls;
}

std::vector<CommandCall> CallsBesideChild(const std::vector<std::string>& trace) {
  constexpr std::size_t kMostCalls = 40;  // later ones are of polls that are all alike
  std::vector<CommandCall> calls;
  CallCounter counter;
  bool hasChild = false;
  for (const std::string& line : trace) {
    if (calls.size() == kMostCalls) {
      break;
    }
    if (counter.Take(line)) {
      if (hasChild) {
        calls.push_back(counter.Call());
      }
      hasChild = hasChild || BeginsChild(counter.Call());
    }
  }
  return calls;
}

const std::vector<std::string>& ErrorsOf(const std::string& call) {
  static const std::map<std::string, std::vector<std::string>, std::less<>> errors = {
      {"access", {"EACCES", "EIO"}},
      {"clock_nanosleep", {"EINVAL"}},
      {"clone", {"EAGAIN", "ENOMEM"}},
      {"clone3", {"EAGAIN", "ENOMEM"}},
      {"close", {"EIO", "ENOSPC"}},
      {"dup2", {"EMFILE"}},
      {"dup3", {"EMFILE"}},
      {"execve", {"EACCES", "ENOMEM"}},
      {"faccessat2", {"EACCES", "EIO"}},
      {"fallocate", {"ENOSPC", "EOPNOTSUPP"}},
      {"fcntl", {"EMFILE", "EIO"}},
      {"fork", {"EAGAIN", "ENOMEM"}},
      {"fsync", {"EIO", "ENOSPC"}},
      {"ftruncate", {"EIO", "EFBIG"}},
      {"getcwd", {"ENOENT", "EACCES"}},
      {"getdents64", {"EIO", "ENOMEM"}},
      {"getrandom", {"EAGAIN", "ENOSYS"}},
      {"ioctl", {"ENOTTY", "EIO"}},
      {"kill", {"ESRCH", "EPERM"}},
      {"linkat", {"EEXIST", "ENOSPC", "EPERM"}},
      {"lseek", {"ESPIPE", "EIO"}},
      {"mkdir", {"ENOSPC", "EACCES", "EROFS"}},
      {"newfstatat", {"EACCES", "EIO"}},
      {"openat", {"EACCES", "EMFILE", "EIO", "ENOSPC"}},
      {"pipe2", {"EMFILE", "ENFILE"}},
      {"poll", {"ENOMEM"}},
      {"ppoll", {"ENOMEM"}},
      {"prctl", {"EINVAL", "EPERM"}},
      {"pread64", {"EIO"}},
      {"prlimit64", {"EPERM"}},
      {"read", {"EIO"}},
      {"readlink", {"EACCES", "EIO"}},
      {"readlinkat", {"EACCES", "EIO"}},
      {"rename", {"ENOSPC", "EACCES", "EIO"}},
      {"renameat", {"ENOSPC", "EACCES", "EIO"}},
      {"renameat2", {"ENOSPC", "EACCES", "EINVAL"}},
      {"rt_sigaction", {"EINVAL"}},
      {"rt_sigprocmask", {"EINVAL"}},
      {"sched_getaffinity", {"EINVAL"}},
      {"statx", {"EACCES", "EIO"}},
      {"uname", {"EFAULT"}},
      {"unlink", {"EACCES", "EIO", "EROFS"}},
      {"unlinkat", {"EACCES", "EIO", "EROFS"}},
      {"wait4", {"ECHILD"}},
      {"waitid", {"ECHILD"}},
      {"write", {"EIO", "ENOSPC"}}};
  static const std::vector<std::string> others = {"EIO", "ENOMEM"};
  const auto found = errors.find(call);
  return found != errors.end() ? found->second : others;
}

bool IsInterruptible(const std::string& call) {
  static const std::set<std::string, std::less<>> calls = {"access",     "clock_nanosleep",
                                                           "close",      "dup2",
                                                           "dup3",       "faccessat2",
                                                           "fallocate",  "fstat",
                                                           "fsync",      "ftruncate",
                                                           "getdents64", "getrandom",
                                                           "ioctl",      "link",
                                                           "linkat",     "lseek",
                                                           "lstat",      "mkdir",
                                                           "mkdirat",    "newfstatat",
                                                           "openat",     "poll",
                                                           "ppoll",      "pread64",
                                                           "pwrite64",   "read",
                                                           "readlink",   "readlinkat",
                                                           "rename",     "renameat",
                                                           "renameat2",  "stat",
                                                           "statx",      "unlink",
                                                           "unlinkat",   "wait4",
                                                           "waitid",     "write"};
  return calls.contains(call);
}

}  // namespace Testing
