#pragma once

// The last step of an Analysis before its file is written: sampling, from results to results.

#include "data/data_set.h"
#include "mcmc/hb_model.h"
#include "regression/regression_results.h"

namespace Hovar {

/// Runs the hierarchical model with the [P|X] estimates and the [X|Z] tables of the results and
/// stores what it finds as the block [Y|X,P=0,MCMC]. The results must have the first four blocks
/// and a table for every variable but the intercept; the data set must have their variables and
/// keeps the last iteration's imputed values. Without a main phase the block has the figures of the
/// burn-in, and zeros without either. Progress goes to standard output.
/// Errors: those of McmcModel::Run; "Out of memory".
void RunMcmcStage(RegressionResults& results, DataSet& dataSet, const HBModelSettings& settings);

}  // namespace Hovar
