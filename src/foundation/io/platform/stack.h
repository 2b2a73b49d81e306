#pragma once

namespace Vell::IO::Platform {

/// True when so little of the main thread's stack is left that a recursion must end, so that what
/// it calls at its deepest level still fits. To be called from the recursion itself; the first call
/// of the process marks the start of the stack.
bool StackIsNearlyUsed() noexcept;

}  // namespace Vell::IO::Platform
