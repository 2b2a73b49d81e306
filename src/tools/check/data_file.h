#pragma once

#include "data/data_set.h"
#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// Reads the data file of a definition, which exists, with the program's own reader. Its error
/// becomes a finding at the first cell, line or hospital that is wrong, and what would surprise a
/// warning.
/// Result: true when there was no error.
bool CheckDataFile(Findings& findings, const DefinitionFile& definition, DataSet& dataSet);

}  // namespace Hovar
