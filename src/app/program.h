#pragma once

// The program as a function, so that tests can run it within their process.

#include "foundation/string.h"

namespace Hovar {

/// The program: prints the banner, takes the one argument, a definition file, and runs it.
///
/// Result: 0 after a run whose output has all reached the operating system. After any error 1: its
/// line is on standard error already, so only a prompt is written and one key awaited.
/// The first argument is the program's own path. It must hold a backslash, on every platform; the
/// part before the last one is the start-up directory.
/// Errors: "Wrong number of parameters in command line"; "Invalid argument" for a path that is
///         missing or holds no backslash; "Cannot determine startup directory" when that part is
///         empty; those of the run. Each ends as described.
int RunProgram(int argumentCount, const char* const* arguments);

/// The folder of the program's own path: the part before the last backslash, trimmed.
/// Errors: as RunProgram.
Vell::String StartupDirectoryOf(const Vell::String& programPath);

/// The start-up directory of this process; empty before RunProgram has found one. Valid as long as
/// the process, and unchanged until RunProgram is called again.
const Vell::String& StartupDirectory() noexcept;

}  // namespace Hovar
