#pragma once

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
  /// prepares the data set. Errors: "Out of memory".
  ImputationPasses(DataSet& dataSet, const RegressionResults& results,
                   const McmcSettings& settings);

  /// Number of passes that count; can be 0 or less.
  std::int32_t Steps() const noexcept { return steps_; }

  /// Runs the sweeps that are thrown away. Each prints its progress line.
  void RunBurnin();

  /// Prints the progress line "pass/steps" on standard output and runs one sweep.
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
