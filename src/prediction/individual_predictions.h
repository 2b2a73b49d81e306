#pragma once

// What is expected of each patient record: the probability of the outcome and of the condition's
// being present on admission, from the coefficients of an Analysis.

#include <array>
#include <cstdint>
#include <string_view>

#include "data/data_set.h"
#include "linalg/vector.h"
#include "mcmc/mcmc_settings.h"
#include "regression/regression_results.h"

namespace Hovar {

/// The columns of the prediction files, in their order.
inline constexpr std::array<std::string_view, 9> kPredictionNames = {
    "Y", "E[Y|Z]", "E[Y|X]",   "E[Y|P=0]", "E[Y|X,P=0]", "E[Y|X,P=0]-MCMC",
    "P", "E[P|X]", "E[P|YPXZ]"};

/// Predicted probabilities, one entry per record, in the order of the data set. Y and P themselves,
/// and E[Y|P=0], which is Y * (1 - E[P|YPXZ]), are not stored.
struct IndividualPredictions {
  Vell::Vector yGivenZ;              // E[Y|Z]
  Vell::Vector yGivenX;              // E[Y|X]
  Vell::Vector yGivenXWithoutP;      // E[Y|X,P=0]: P(P = 0) times the prediction without P
  Vell::Vector yGivenXWithoutPMcmc;  // E[Y|X,P=0]-MCMC: the same with the MCMC coefficients
  Vell::Vector pGivenX;              // E[P|X]
  Vell::Vector pGivenAll;            // E[P|YPXZ]: the share of passes in which P is 1

  /// Gives every vector `records` zeros.
  /// Errors: "Invalid argument" for a negative number; "Out of memory".
  void Resize(std::int32_t records);
};

/// Predicts every record of the data set, whose variables are those of the results; what the
/// predictions held is replaced. Missing values are imputed in `settings.burnin` sweeps that are
/// thrown away and in one sweep before every averaging pass but the first, which uses the state
/// that the burn-in left; each prediction of an incomplete record is the mean over the
/// `settings.steps` passes (at least one is made). Without incomplete records there is one pass and
/// no burn-in. Progress goes to standard output. The data set keeps the last imputed values.
/// Errors: "Out of memory"; "IO Exception".
void ComputeIndividualPredictions(IndividualPredictions& predictions, DataSet& dataSet,
                                  const RegressionResults& results, const McmcSettings& settings);

}  // namespace Hovar
