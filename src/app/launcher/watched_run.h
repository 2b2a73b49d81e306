#pragma once

#include "app/launcher/options.h"

namespace Hovar {

/// Runs a definition as a child process, with a bar instead of its lines, with a run record, or
/// both. Returns the exit status: the program's, or 1 when the launcher's own part failed.
int RunWatched(const Options& options);

}  // namespace Hovar
