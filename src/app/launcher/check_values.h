#pragma once

#include "app/launcher/check_definition.h"
#include "app/launcher/check_findings.h"

namespace Hovar {

/// Checks the numbers and texts of a single run's definition: an error for sampling that is
/// refused, warnings for values that mean something else than one would think.
void CheckValues(Findings& findings, const RunPlan& plan);

/// The first byte order mark or carriage return of a definition file is a warning.
void CheckDefinitionText(Findings& findings, const RunPlan& plan);

}  // namespace Hovar
