#pragma once

#include <cerrno>

namespace Vell::IO::Platform {

/// Repeats a call for as long as a signal interrupts it.
template <typename Call>
auto WithoutInterruption(Call call) noexcept {
  auto result = call();
  while (result < 0 && errno == EINTR) {
    result = call();
  }
  return result;
}

}  // namespace Vell::IO::Platform
