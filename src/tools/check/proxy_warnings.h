#pragma once

#include <vector>

#include "linalg/bit_matrix.h"
#include "tools/check/columns.h"
#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// Warns of the Z columns of an Analysis that fill missing X with one value or take a risk factor
/// out of the model. One line for a variable, at its Z in the header of the data file; of one kind
/// the first five variables have a line of their own. `z` and `variables` as JudgeProxies takes
/// them.
void WarnOfProxies(Findings& findings, const DefinitionFile& definition, const Vell::BitMatrix& z,
                   const std::vector<VariableCounts>& variables);

}  // namespace Hovar
