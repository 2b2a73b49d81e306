#include <sys/resource.h>

#include <algorithm>
#include <cstdint>

#include "foundation/io/platform/stack.h"

namespace Vell::IO::Platform {
namespace {

/// What is kept for a run at the deepest level; the sanitizers' frames are the widest.
constexpr rlim_t kRunBytes = rlim_t{256} << 10;

/// The assumed size of a stack without a limit.
constexpr rlim_t kLargestStack = rlim_t{64} << 20;

/// How deep the stack may become. Arguments and environment lie on it too and take at most a
/// quarter.
std::uintptr_t UsableBytes() noexcept {
  rlimit limit{};
  const bool isKnown = getrlimit(RLIMIT_STACK, &limit) == 0;
  const rlim_t size = isKnown ? std::min(limit.rlim_cur, kLargestStack) : kLargestStack;
  const rlim_t usable = size - size / 4;
  return usable - std::min(usable, kRunBytes);
}

}  // namespace

bool StackIsNearlyUsed() noexcept {
  // The frame, not a variable of it, which the address sanitizer may keep elsewhere.
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  static const std::uintptr_t start = here;
  static const std::uintptr_t usableBytes = UsableBytes();
  return here < start && start - here > usableBytes;
}

}  // namespace Vell::IO::Platform
