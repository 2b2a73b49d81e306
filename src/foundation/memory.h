#pragma once

// The one source of memory for everything that the system allocates: containers, strings, stream
// buffers and shared objects. Because there is a single door, a test can make any allocation fail
// and see that the run ends with "Out of memory" and nothing else.
//
// The system has a single thread, so nothing here is locked.

#include <cstddef>
#include <cstdint>

namespace Vell {

/// Returns `bytes` zero-filled bytes, aligned for any standard type, or null when there are none.
using AllocationFunction = void* (*)(std::size_t bytes) noexcept;

/// Allocates `bytes` zero-filled bytes, aligned for any standard type. 0 bytes give a null pointer.
/// Errors: OutOfMemoryException "Out of memory" when the allocation function returns null.
/// The caller owns the block until it passes it to ReleaseBlock.
void* AllocateZeroed(std::size_t bytes);

/// Gives a block of AllocateZeroed back to the C library, whatever function made it. A null pointer
/// is accepted. Objects in the block must have been destroyed.
void ReleaseBlock(void* block) noexcept;

/// Replaces the allocation function and returns the one that was in force. The replacement must
/// hand out blocks that std::free accepts. Null restores the default. For tests.
AllocationFunction SetAllocationFunction(AllocationFunction function) noexcept;

/// Allocates `count` zero-filled elements of T, which must be a type for which all-zero bytes are
/// its default value or whose objects the caller constructs. 0 elements give a null pointer. The
/// caller owns the block, as AllocateZeroed says. `count` times the size of T must fit in 64 bits.
/// Errors: InvalidArgumentException "Invalid argument" for a negative count; "Out of memory".
template <typename T>
T* AllocateArray(std::int64_t count);

/// Raises InvalidArgumentException "Invalid argument".
[[noreturn]] void RaiseInvalidSize();

/// Raises InvalidArgumentException "Invalid argument" for a negative size.
inline void RequireNotNegative(std::int64_t size) {
  if (size < 0) {
    RaiseInvalidSize();
  }
}

template <typename T>
T* AllocateArray(std::int64_t count) {
  static_assert(alignof(T) <= alignof(std::max_align_t));
  RequireNotNegative(count);
  // NOLINTNEXTLINE(bugprone-sizeof-expression): T may be a pointer; its size is meant then
  return static_cast<T*>(AllocateZeroed(static_cast<std::size_t>(count) * sizeof(T)));
}

}  // namespace Vell
