#pragma once

#include "data/data_set.h"
#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// Reports a seed of a single run at which the random generator stands still, as far as the run
/// draws random numbers: an Analysis with iterations does, a Prediction or Validation where values
/// are missing. `dataSet` holds the variables that the run uses; null where it could not be read.
void CheckSeed(Findings& findings, const DefinitionFile& definition, const DataSet* dataSet);

}  // namespace Hovar
