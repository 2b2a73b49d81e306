#pragma once

namespace Hovar {

// The exit statuses of the program and of its launcher, as the shell sees them. A process that a
// signal ended has none of these: what started it sees 128 plus the signal's number.
/// Everything was done, and all of it has reached the operating system.
inline constexpr int kSuccess = 0;
/// An error ended it, or a check found one; the output says which.
inline constexpr int kFailure = 1;

}  // namespace Hovar
