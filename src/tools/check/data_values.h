#pragma once

// What the program silently reads of a data file otherwise than a user may have meant it.

#include <cstdint>

#include "data/data_set.h"
#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

// All examine a data file that the program's reader has accepted.

/// Warns of cells that are read otherwise than they are written.
void WarnOfCells(Findings& findings, const DefinitionFile& definition);

/// Warns of hospital IDs that are missing, that differ in blanks, capital letters or leading zeros
/// alone, or that a Validation could not read in the predictions which this run would write.
void WarnOfHospitals(Findings& findings, const DefinitionFile& definition, const DataSet& dataSet);

/// Warns of records with Y = 0 and P = 1, of which the reader takes P as 0, when they are 1 % or
/// more of those with Y = 0 and a known P.
void WarnOfContradictions(Findings& findings, const DefinitionFile& definition,
                          const DataSet& dataSet);

/// The records with Y = 0 and a known P.
std::int32_t CountWithoutOutcomeAndKnownP(const DataSet& dataSet);

}  // namespace Hovar
