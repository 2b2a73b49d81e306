#pragma once

namespace Hovar {

/// Empties standard input unless it is a terminal: an unattended run must not wait for a key. Hence
/// no file of a run can come from there, "/dev/stdin" for example.
void DetachUnattendedInput() noexcept;

}  // namespace Hovar
