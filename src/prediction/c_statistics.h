#pragma once

// The outcome of a Validation: which C-statistics there are, over which records, and the file that
// has them. c_statistic.h defines the measure.

#include "data/data_set.h"
#include "foundation/io/text_writer.h"
#include "mcmc/mcmc_settings.h"
#include "prediction/individual_predictions.h"
#include "regression/regression_results.h"

namespace Hovar {

/// How well each kind of prediction separates the records with an event from those without, each in
/// [0, 1], or -1.0 when there are no pairs to compare.
struct CStatisticValues {
  double yGivenZ = 0;              // E[Y|Z] against Y
  double yGivenX = 0;              // E[Y|X] against Y
  double yGivenXWithoutP = 0;      // E[Y|X,P=0] against Y where P = 0, mean over the passes
  double yGivenXWithoutPMcmc = 0;  // E[Y|X,P=0]-MCMC the same way
  double pGivenX = 0;              // E[P|X] against P, complete records
  double pGivenAll = 0;            // E[P|YPXZ] against P, complete records
};

/// Computes all six. The third and fourth depend on which records have P = 0, so they are averaged
/// over `settings.steps` imputation sweeps (ImputationPasses) after `settings.burnin` that are
/// thrown away; a sweep for which they are undefined enters with its -1.0. Without a sweep they are
/// 0. Progress goes to standard output. `result` must be fresh; `predictions` are those of the data
/// set's records in their order, and `results` those that the predictions were made with. The data
/// set keeps the last imputed values.
/// Errors: "Index out of range" when there are fewer predictions than records; "IO Exception"; "Out
///         of memory".
void ComputeCStatistics(CStatisticValues& result, DataSet& dataSet,
                        const RegressionResults& results, const IndividualPredictions& predictions,
                        const McmcSettings& settings);

/// Writes a header and one line for each of the six.
/// Errors: "IO Exception".
void WriteCStatistics(const CStatisticValues& result, Vell::IO::TextWriter& writer);

}  // namespace Hovar
