#pragma once

// What the program reads of a data file without a word, and a user may have meant otherwise.

#include "data/data_set.h"
#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

// Both look at a data file that the program's reader has taken.

/// Warns of cells that are read otherwise than they are written.
void WarnOfCells(Findings& findings, const DefinitionFile& definition);

/// Warns of hospital IDs that are missing, that differ in blanks, capital letters or leading zeros
/// alone, or that a Validation could not read in the predictions which this run would write.
void WarnOfHospitals(Findings& findings, const DefinitionFile& definition, const DataSet& dataSet);

}  // namespace Hovar
