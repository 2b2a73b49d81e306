#include "support/allocation_fault.h"

#include <cstdlib>

#include "foundation/memory.h"

namespace Testing {
namespace {

struct {
  int failing = 0;
  AllocationFault::Extent extent = AllocationFault::Extent::kOnce;
  int count = 0;
  bool hasFired = false;
} current;

void* Allocate(std::size_t bytes) noexcept {
  ++current.count;
  if (current.failing != 0 &&
      (current.extent == AllocationFault::Extent::kOnce ? current.count == current.failing
                                                        : current.count >= current.failing)) {
    current.hasFired = true;
    return nullptr;
  }
  return std::calloc(1, bytes);
}

}  // namespace

AllocationFault::AllocationFault(int failing, Extent extent) {
  current = {failing, extent, 0, false};
  Vell::SetAllocationFunction(Allocate);
}

AllocationFault::~AllocationFault() { Vell::SetAllocationFunction(nullptr); }

int AllocationFault::Count() const { return current.count; }

bool AllocationFault::HasFired() const { return current.hasFired; }

}  // namespace Testing
