#pragma once

// The files that other runs wrote and a Prediction or Validation reads.

#include "data/data_set.h"
#include "prediction/individual_predictions.h"
#include "regression/regression_results.h"
#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

// Each reads a file of the definition, which exists, with the program's own reader. An error of the
// reader becomes a finding, and what would surprise in the file a warning; the result is true when
// there was no error.

bool CheckCoefficientFile(Findings& findings, const DefinitionFile& definition,
                          RegressionResults& results);
bool CheckIndividualPredictions(Findings& findings, const DefinitionFile& definition,
                                IndividualPredictions& predictions);

/// Compares the variables of the data and of the coefficient file as the program does, which
/// removes from the data set what the other one lacks.
bool CheckVariables(Findings& findings, const DefinitionFile& definition, DataSet& dataSet,
                    const RegressionResults& results);

/// Compares the predictions with the records of the data file.
void CheckPredictionCount(Findings& findings, const DefinitionFile& definition,
                          std::int32_t records, const IndividualPredictions& predictions);

}  // namespace Hovar
