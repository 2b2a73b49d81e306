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

static void WriteCounts(void) {
  __gcov_dump();
  __gcov_reset();
}

int __wrap_execv(const char* program, char* const* arguments) {
  WriteCounts();
  return __real_execv(program, arguments);
}

/* The copy must not write once more what was counted before. */
int __wrap_fork(void) {
  WriteCounts();
  return __real_fork();
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
