#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "foundation/io/platform/end_requests_posix.h"
#include "foundation/io/platform/interruption_posix.h"
#include "foundation/io/platform/native_path_posix.h"
#include "foundation/io/platform/temporary_files.h"

namespace Vell::IO::Platform {

/// An entry of a list that a signal handler walks: it changes only while signals are held back.
class TemporaryName {
 public:
  explicit TemporaryName(const char* path) noexcept : path(path) {}
  NativePath path;
  TemporaryName* next = nullptr;
  TemporaryName* before = nullptr;
};

namespace {

TemporaryName* volatile firstName = nullptr;
// A copy of this process, before another program takes its place, owns none.
pid_t ownerOfNames = 0;

/// Holds all signals back for as long as it lives.
class SignalsHeldBack {
 public:
  SignalsHeldBack() noexcept {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsHeldBack() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeldBack(const SignalsHeldBack&) = delete;
  SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;

 private:
  sigset_t before_;
};

void Remember(TemporaryName* name) noexcept {
  ownerOfNames = getpid();
  name->next = firstName;
  if (firstName != nullptr) {
    firstName->before = name;
  }
  firstName = name;
}

}  // namespace

void ForgetName::operator()(TemporaryName* name) const noexcept {
  {
    const SignalsHeldBack held;
    if (name->before != nullptr) {
      name->before->next = name->next;
    } else {
      firstName = name->next;
    }
    if (name->next != nullptr) {
      name->next->before = name->before;
    }
  }
  delete name;
}

bool RandomBytes(void* bytes, std::size_t size) noexcept {
  return WithoutInterruption([&] { return getrandom(bytes, size, 0); }) ==
         static_cast<ssize_t>(size);
}

NewFile CreateTemporaryFile(const char* path) {
  auto entry = std::make_unique<TemporaryName>(path);
  if (entry->path.Get() == nullptr) {
    return {};
  }
  NewFile made;
  const SignalsHeldBack held;
  const int opened = WithoutInterruption([&] {
    return open(entry->path.Get(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_APPEND | O_CLOEXEC,
                S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH);
  });
  made.file = opened;
  if (opened >= 0 && opened <= STDERR_FILENO) {  // never in the place of a standard handle
    made.file = fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(opened);
    if (made.file < 0) {
      unlink(entry->path.Get());
    }
  }
  if (made.file >= 0) {
    Remember(entry.get());
    made.name.reset(entry.release());
  }
  return made;
}

void RemoveTemporaryFiles() noexcept {
  if (ownerOfNames != getpid()) {
    return;
  }
  for (const TemporaryName* name = firstName; name != nullptr; name = name->next) {
    unlink(name->path.Get());
  }
}

void EndBySignal(int signal) noexcept {
  RemoveTemporaryFiles();
  static_cast<void>(std::signal(signal, SIG_DFL));
  static_cast<void>(std::raise(signal));  // arrives when it is not blocked any more
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, signal);
  sigprocmask(SIG_UNBLOCK, &only, nullptr);
}

void RemoveTemporaryFilesAtEnd() noexcept {
  struct sigaction action {};
  action.sa_handler = EndBySignal;
  sigfillset(&action.sa_mask);
  ForEachEndRequest([&action](int signal) {
    struct sigaction before {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler == SIG_DFL) {
      sigaction(signal, &action, nullptr);
    }
  });
}

}  // namespace Vell::IO::Platform
