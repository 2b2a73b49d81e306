#pragma once

// The four fits of an Analysis in their order. The fifth block is the sampler's
// (mcmc/mcmc_stage.h).

#include "data/data_set.h"
#include "messages/pattern.h"
#include "regression/fit_settings.h"
#include "regression/regression_results.h"

namespace Hovar {

/// Fills the names, the [X|Z] tables and the first four blocks: [P|X], [Y|Z], [Y|X] and [Y|X,P=0],
/// fitted in this order. Labels go to standard output, warnings to the log. The data set must have
/// been through column elimination, or a fit without a prior may have no solution. After an error
/// the results hold what was computed before it.
/// Errors: "Cannot compute XZ table"; those of the fits; "Invalid argument" for a data set without
///         variables; "Out of memory".
void RunRegressionAnalysis(RegressionResults& results, const DataSet& dataSet,
                           const FitSettings& settings);

/// Writes the heading of a stage of fits on standard output: one of two lines, by the kind of fit.
void AnnounceStage(WorkingCorrelation workingCorrelation, const Messages::Pattern& independent,
                   const Messages::Pattern& exchangeable);

}  // namespace Hovar
