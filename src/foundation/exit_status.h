#pragma once

namespace Hovar {

// The exit statuses of the program and of its launcher.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;

}  // namespace Hovar
