#include "foundation/memory.h"

#include <cstdlib>

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Vell {
namespace {

void* AllocateFromRuntime(std::size_t bytes) noexcept { return std::calloc(bytes, 1); }

AllocationFunction allocationFunction = AllocateFromRuntime;

}  // namespace

void* AllocateZeroed(std::size_t bytes) {
  if (bytes == 0) {
    return nullptr;
  }
  void* const block = allocationFunction(bytes);
  if (block == nullptr) {
    throw Exceptions::OutOfMemoryException(Messages::kErrors.outOfMemory);
  }
  return block;
}

void ReleaseBlock(void* block) noexcept { std::free(block); }

AllocationFunction SetAllocationFunction(AllocationFunction function) noexcept {
  const AllocationFunction previous = allocationFunction;
  allocationFunction = function != nullptr ? function : AllocateFromRuntime;
  return previous;
}

void RaiseInvalidSize() {
  throw Exceptions::InvalidArgumentException(Messages::kErrors.invalidArgument);
}

}  // namespace Vell
