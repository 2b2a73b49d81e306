#pragma once

#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// Checks the numbers and texts of a single run's definition: an error for sampling that is
/// refused, warnings for values that mean something else than one would think.
void CheckValues(Findings& findings, const DefinitionFile& definition);

/// The first byte order mark or carriage return of a definition file is a warning.
void CheckDefinitionText(Findings& findings, const DefinitionFile& definition);

}  // namespace Hovar
