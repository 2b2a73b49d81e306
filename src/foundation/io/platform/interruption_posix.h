#pragma once

#include <cerrno>

#include "foundation/io/platform/processes.h"

namespace Vell::IO::Platform {

/// Repeats a call for as long as a signal interrupts it that does not ask for the end: a call that
/// may wait for another process for ever must not outlast such a request.
template <typename Call>
auto WithoutInterruption(Call call) noexcept {
  auto result = call();
  while (result < 0 && errno == EINTR && StopRequest() == 0) {
    result = call();
  }
  return result;
}

}  // namespace Vell::IO::Platform
