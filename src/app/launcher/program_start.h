#pragma once

#include <span>

namespace Hovar {

/// Empties standard input unless it is a terminal: an unattended run must not wait for a key. Hence
/// no file of a run can come from there, "/dev/stdin" for example.
void DetachUnattendedInput() noexcept;

/// Lets the program take this process's place, with these arguments behind its own name, after
/// DetachUnattendedInput. Returns an exit status only when the program cannot be started; a line on
/// standard error names it then. No container of the standard library is used, as in the program
/// itself.
int BecomeHovar(std::span<const char* const> arguments);

}  // namespace Hovar
