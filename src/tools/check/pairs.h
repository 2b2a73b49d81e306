#pragma once

#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// Warns when the names of a data file say that the number of POA indicators is wrong: under the
/// definition's number at most half of the pairs of Z and X have names that differ in one and the
/// same way ("ZAge80" and "XAge80", "Age_before" and "Age"), and under one that is up to ten larger
/// or smaller nine tenths have. Names without such a pattern give no warning.
void WarnOfPairs(Findings& findings, const DefinitionFile& definition);

}  // namespace Hovar
