#include <windows.h>

#include <cstdint>

#include "foundation/io/platform/stack.h"

namespace Vell::IO::Platform {
namespace {

/// What is kept for a run at the deepest level, of the 1 MB that a stack has as a rule.
constexpr ULONG_PTR kRunBytes = ULONG_PTR{256} << 10;

}  // namespace

bool StackIsNearlyUsed() noexcept {
  ULONG_PTR low = 0;
  ULONG_PTR high = 0;
  GetCurrentThreadStackLimits(&low, &high);
  const auto here = reinterpret_cast<ULONG_PTR>(__builtin_frame_address(0));
  return here - low < kRunBytes;
}

}  // namespace Vell::IO::Platform
