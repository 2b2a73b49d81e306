#pragma once

#include "data/data_set.h"
#include "mcmc/hb_model.h"
#include "regression/regression_results.h"

namespace Hovar {

/// Runs the hierarchical model with the [P|X] estimates and the [X|Z] tables of the results and
/// stores what it finds as the block [Y|X,P=0,MCMC].
/// The data set keeps the last iteration's imputed values. Progress goes to standard output.
/// Errors: those of McmcModel::Run.
void RunMcmcStage(RegressionResults& results, DataSet& dataSet, const HBModelSettings& settings);

}  // namespace Hovar
