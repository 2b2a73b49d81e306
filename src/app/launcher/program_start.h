#pragma once

#include <span>

namespace Hovar {

/// Lets the program take this process's place, with these arguments behind its own name. Standard
/// input is emptied unless it is a terminal: an unattended run must not wait for a key. Returns an
/// exit status only when the program cannot be started; a line on standard error names it then.
/// No container of the standard library is used, as in the program itself.
int BecomeHovar(std::span<const char* const> arguments);

}  // namespace Hovar
