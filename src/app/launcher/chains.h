#pragma once

// Several chains of one Analysis: definitions with seeds of their own, runs side by side, verdict
// and report. docs/chains.md describes the folders and the seeds.

#include "app/launcher/options.h"

namespace Hovar {

/// Runs the chains, or the one that is asked for, or only collects what has been run. Returns the
/// exit status: 0 when every chain was run to its end and the report was written, whatever the
/// verdict says.
int RunChains(const Options& options);

}  // namespace Hovar
