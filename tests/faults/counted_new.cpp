#include "faults/counted_new.h"

#include <cstdlib>
#include <new>

namespace {

bool isCounting = false;
int newCount = 0;
int failingNew = 0;

}  // namespace

// The operators of this program, in place of the library's.
void* operator new(std::size_t size) {
  newCount += isCounting ? 1 : 0;
  const bool fails = isCounting && newCount == failingNew;
  if (void* const block = fails ? nullptr : std::malloc(size); block != nullptr) {
    return block;
  }
  throw std::bad_alloc();
}
/// Whoever asks in this way does without; that is not counted.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return std::malloc(size);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { std::free(block); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace Testing {

CountedNew::CountedNew(int failing) {
  newCount = 0;
  failingNew = failing;
  isCounting = true;
}

CountedNew::~CountedNew() { isCounting = false; }

int CountedNew::Count() const { return newCount; }

}  // namespace Testing
