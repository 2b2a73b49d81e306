#pragma once

// One rule, reported by the check, the verdict on chains and the run record: with generalized
// estimating equations the draws of the chain have the inverse of the covariance that they should
// have, so they and what is made from them are not fit for inference. docs/limits.md gives the
// reason.

#include <cstdint>
#include <optional>
#include <string>

#include "data/data_set.h"
#include "regression/regression_results.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// How many records of a data set lack something.
struct MissingRecords {
  std::int32_t withoutP = 0;
  std::int32_t withoutX = 0;  // without some X
};

MissingRecords CountMissing(const DataSet& dataSet);

/// True for an Analysis that draws with generalized estimating equations: with the flag, and with
/// iterations of the main phase or of the burn-in.
bool DrawsWithEstimatingEquations(const DefinitionFile& definition);

/// True for one of these that has iterations of the burn-in alone, of which the fifth block is then
/// made.
bool DrawsInBurninAlone(const DefinitionFile& definition);

/// True when the fifth block was made with generalized estimating equations: it then has empirical
/// standard errors and no model-based ones.
bool HasClusteredDraws(const RegressionResults& results);

/// The same for a coefficient file; nothing when it cannot be read.
std::optional<bool> HasClusteredDraws(const std::string& coefficientFile);

/// Names what is made from the draws, for a sentence: "the fifth block, E[Y|X,P=0]-MCMC and ...".
/// Where P is missing, columns with an imputed P suffer, and where an X is, those with an imputed X;
/// `missing` is nothing where the data are not known.
std::string WhatIsUnfit(const std::optional<MissingRecords>& missing);

}  // namespace Hovar
