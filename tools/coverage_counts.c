/* For tools/coverage.sh: a process writes its counts at every end, not at exit alone.

   The linker leads the calls below here (ld --wrap). Without that, a process that ends by _exit or by
   a signal of its own, or becomes another program, would be taken for one that ran nothing. */
#include <stdlib.h>

extern void __gcov_dump(void);
extern void __gcov_reset(void);

extern int __real_execv(const char* program, char* const* arguments);
extern int __real_fork(void);
extern int __real_raise(int signal);
extern _Noreturn void __real__exit(int status);
extern _Noreturn void __real__Exit(int status);

/* Tests make thousands of copies of themselves that run the same code under other faults; of those
   beyond the first hundred one in twenty writes its counts. */
static int copies = 0;
static int isCounted = 1;

static void WriteCounts(void) {
  if (isCounted) {
    __gcov_dump();
    __gcov_reset();
  }
}

int __wrap_execv(const char* program, char* const* arguments) {
  WriteCounts();
  return __real_execv(program, arguments);
}

int __wrap_fork(void) {
  ++copies;
  const int process = __real_fork();
  if (process == 0) {
    isCounted = copies <= 100 || copies % 20 == 0;
    __gcov_reset(); /* what was counted before belongs to the other one */
  }
  return process;
}

int __wrap_raise(int signal) {
  WriteCounts();
  return __real_raise(signal);
}

_Noreturn void __wrap__exit(int status) {
  WriteCounts();
  __real__exit(status);
}

_Noreturn void __wrap__Exit(int status) {
  WriteCounts();
  __real__Exit(status);
}
