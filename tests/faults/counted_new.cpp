#include "faults/counted_new.h"

#include <cstdlib>
#include <new>

namespace {

bool isCounting = false;
int newCount = 0;

}  // namespace

// The operators of this program, in place of the library's.
void* operator new(std::size_t size) {
  newCount += isCounting ? 1 : 0;
  if (void* const block = std::malloc(size); block != nullptr) {
    return block;
  }
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace Testing {

CountedNew::CountedNew() {
  newCount = 0;
  isCounting = true;
}

CountedNew::~CountedNew() { isCounting = false; }

int CountedNew::Count() const { return newCount; }

}  // namespace Testing
