#pragma once

// Imputation without a sampler, for Predictions and Validations: the coefficients are given, and
// each pass draws the missing values anew.

#include <cstdint>

#include "data/data_set.h"
#include "linalg/vector.h"
#include "mcmc/imputation_sweep.h"
#include "mcmc/mcmc_settings.h"
#include "regression/regression_results.h"

namespace Hovar {

/// The repeated imputation that predictions and C-statistics average over: the sweep of the
/// hierarchical model with the coefficients of a finished analysis. A data set without incomplete
/// records needs one pass and no burn-in, whatever the settings say.
class ImputationPasses {
 public:
  /// Takes the estimates of [Y|X,P=0,MCMC] and [P|X] and the [X|Z] tables from the results and
  /// prepares the data set, which must outlive the passes and have the variables of the results.
  /// Errors: "Out of memory".
  ImputationPasses(DataSet& dataSet, const RegressionResults& results,
                   const McmcSettings& settings);

  /// Number of passes that count; can be 0 or less.
  std::int32_t Steps() const noexcept { return steps_; }

  /// Runs the sweeps that are thrown away. Each prints its progress line.
  /// Errors: as Run.
  void RunBurnin();

  /// Prints the progress line "pass/steps", `pass` from 0, on standard output and runs one sweep.
  /// Errors: "IO Exception"; "Out of memory".
  void Run(std::int32_t pass);

 private:
  void Sweep(std::int32_t pass, std::int32_t passes);

  DataSet& dataSet_;
  Vell::Vector yGivenXWithoutP_;
  Vell::Vector pGivenX_;
  Vell::Vector priorTable_;
  std::int32_t burnin_;
  std::int32_t steps_;
};

}  // namespace Hovar
