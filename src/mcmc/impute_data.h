#pragma once

// The missing values of X and P among the unknowns of the model: the Gibbs half of the sampler.

#include "data/data_set.h"
#include "mcmc/beta_yx.h"
#include "mcmc/imputation_sweep.h"
#include "mcmc/mcmc_scalar.h"

namespace Hovar {

/// The missing values of the data set as one variable of the hierarchical model. Its step is one
/// imputation sweep with the current coefficients; the draws are made within the proposal, which is
/// then never accepted, so the scalar stays 0 and its row in the summary is 0, 0, 0.
class ImputeData final : public Vell::Mcmc::McmcScalar {
 public:
  /// All arguments must outlive the variable; see ImputationModel for their shapes.
  ImputeData(DataSet& dataSet, const BetaYX& beta, const Vell::Vector& pGivenX,
             const Vell::Vector& priorTable);

  /// Sets the missing cells to 0; see PrepareImputation.
  void Initialize() override;
  /// Always 0.
  double AcceptanceProbability(double proposal) override;
  /// Runs a sweep and returns 0.
  /// Errors: "Out of memory".
  double Propose() override;
  Vell::String GetName() const override;

 private:
  DataSet& dataSet_;
  ImputationModel model_;
};

}  // namespace Hovar
