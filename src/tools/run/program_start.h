#pragma once

#include <span>

namespace Hovar {

/// Replaces this process by the program, with these arguments after its own name, after
/// DetachUnattendedInput. Returns an exit status only when the program cannot be started; a line on
/// standard error names it then. No container of the standard library is used, as in the program
/// itself.
int ExecuteProgram(std::span<const char* const> arguments);

}  // namespace Hovar
