// A library to be loaded before a program (LD_PRELOAD), in which one call of the C library's
// allocation functions fails, counted from the start of the process. It answers for every way to
// allocate: operator new and the runtime's own allocations end here too. The environment says
//
//   FAILING_MALLOC_PROGRAM   the program whose calls count, as /proc/self/exe shows it
//   FAILING_MALLOC_CALL      the number of the call that fails, from 1
//   FAILING_MALLOC_ALL       all later calls fail too
//   FAILING_MALLOC_REPORT    a file that is made when a call has failed
//
// The calls that the dynamic loader makes before the C library is ready do not count.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

struct Fault {
  bool isKnown = false;
  long failing = 0;  // 0 for none
  bool isFromThenOn = false;
  const char* report = nullptr;
  long count = 0;
};

Fault fault;

void ReadFault() {
  const char* const program = std::getenv("FAILING_MALLOC_PROGRAM");
  if (program == nullptr) {
    return;
  }
  fault.isKnown = true;
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  path[length < 0 ? 0 : length] = '\0';
  if (std::strcmp(path, program) == 0) {
    fault.failing = std::atol(std::getenv("FAILING_MALLOC_CALL"));
    fault.isFromThenOn = std::getenv("FAILING_MALLOC_ALL") != nullptr;
    fault.report = std::getenv("FAILING_MALLOC_REPORT");
  }
}

bool Fails() {
  if (!fault.isKnown) {
    ReadFault();
  }
  if (fault.failing == 0) {
    return false;
  }
  ++fault.count;
  if (fault.count != fault.failing && !(fault.isFromThenOn && fault.count > fault.failing)) {
    return false;
  }
  close(open(fault.report, O_WRONLY | O_CREAT, 0600));
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return Fails() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return Fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return Fails() ? nullptr : __libc_realloc(block, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = memalign(alignment, size);
  return *block != nullptr ? 0 : ENOMEM;
}

}  // extern "C"
