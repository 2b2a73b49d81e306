#pragma once

#include <string>
#include <vector>

#include "tools/plan/run_plan.h"

namespace Hovar {

/// Moves every existing file that the planned runs (and `further`) would write aside: to NAME.1 or the
/// first number that is free and no name of one of the `files`. A line on standard error names each.
/// False, with a line, when that cannot be done; nothing is moved when a file that a run reads is among
/// them, unless an earlier run of the batch writes it.
bool KeepOutputs(const RunPlan& plan, const ProtectedFiles& files,
                 const std::vector<std::string>& further);

}  // namespace Hovar
