#pragma once

// Where and why the program's readers stopped in one of the comma-separated files that a run reads:
// the data file, a coefficient file, individual predictions. The readers decide that something is
// wrong; here the place is found and the sentence made.

#include <cstdint>
#include <string>
#include <string_view>

#include "app/launcher/check/findings.h"
#include "app/launcher/definition_file.h"
#include "data/data_set.h"
#include "prediction/individual_predictions.h"
#include "regression/regression_results.h"

namespace Hovar {

// Each reads a file of the definition, which exists, with the program's own reader. An error of the
// reader becomes a finding; the answer is whether there was none. What would surprise in the file
// becomes a warning.

bool CheckDataFile(Findings& findings, const DefinitionFile& definition, DataSet& dataSet);
bool CheckCoefficientFile(Findings& findings, const DefinitionFile& definition,
                          RegressionResults& results);
bool CheckIndividualPredictions(Findings& findings, const DefinitionFile& definition,
                                IndividualPredictions& predictions);

/// Compares the variables of the data and of the coefficient file as the program does, which
/// removes from the data set what the other one lacks.
bool CheckVariables(Findings& findings, const DefinitionFile& definition, DataSet& dataSet,
                    const RegressionResults& results);

}  // namespace Hovar
