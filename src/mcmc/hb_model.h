#pragma once

// The hierarchical Bayes model of an Analysis: what is unknown in it, and in which order it is
// sampled. The draws are those of imputation_sweep.h and beta_yx.h, the loop is that of
// mcmc_model.h.

#include "data/data_set.h"
#include "foundation/string.h"
#include "linalg/vector.h"
#include "mcmc/beta_yx.h"
#include "mcmc/impute_data.h"
#include "mcmc/mcmc_model.h"
#include "mcmc/mcmc_settings.h"
#include "regression/fit_settings.h"

namespace Hovar {

/// What the hierarchical model takes from a definition: how each iteration's fit is made, how long
/// the chain is, and where it is written.
struct HBModelSettings {
  FitSettings regression;
  McmcSettings mcmc;
  /// Receives the chain and the summary.
  Vell::String chainFolder;
};

/// The hierarchical model: estimates the coefficients of [Y|X,P=0] while the missing values of X
/// and P are unknowns that are imputed afresh in every iteration. It alternates ImputeData and
/// BetaYX, whose coefficients are 0 before the first sweep. The data set is changed in place and
/// leaves the run with the last iteration's imputed values.
class HBModel final : public Vell::Mcmc::McmcModel {
 public:
  /// `pGivenX` (one entry per X column) and `priorTable` (see PriorTable) are fixed during the run;
  /// all arguments must outlive the model.
  HBModel(DataSet& dataSet, const Vell::Vector& pGivenX, const Vell::Vector& priorTable,
          const HBModelSettings& settings);

  /// Runs the sampler with a progress line after every iteration, which shows the intercept. To be
  /// called once, with a data set of at least one variable.
  /// Errors: those of McmcModel::Run.
  void Run();

  /// Posterior means and standard errors of the kept states, after Run; see BetaYX::ResultTable.
  const Vell::Matrix& ResultTable() const noexcept { return betaYX_.ResultTable(); }

 protected:
  void Initialize() override;
  void ReportProgress(std::int32_t iteration, bool isBurnin) override;

 private:
  const HBModelSettings& settings_;
  BetaYX betaYX_;
  ImputeData imputeData_;
};

}  // namespace Hovar
