#pragma once

// The coefficients among the unknowns of the model: a fit and a draw in every iteration.

#include "data/data_set.h"
#include "linalg/matrix.h"
#include "linalg/symmetric_matrix.h"
#include "mcmc/mcmc_vector.h"
#include "regression/fit_rows.h"
#include "regression/newton.h"

namespace Hovar {

/// The coefficients of [Y|X,P=0] as a variable of the hierarchical model. A step draws from a
/// normal distribution around the coefficients fitted to the data as currently imputed, and always
/// accepts: it is a draw from the approximate conditional posterior, not a random walk.
///
/// The draw is the fit plus r with L^T r = z, z independent standard normal deviates: r has the
/// covariance (L L^T)^-1. For independent records L is the Cholesky factor of the fit's information
/// matrix, so that covariance is the usual inverse information. With an exchangeable working
/// correlation L is the factor of the empirical covariance itself; the draws then have its inverse
/// as their covariance and are very wide, the more so the more records there are. This is a known
/// limit: the fifth block of such an analysis does not serve for inference. Where that covariance
/// has no factor, as with fewer hospitals than coefficients, standard output receives a line and
/// the factor of an earlier iteration serves, at first the identity; this error alone does not end
/// a run.
///
/// Each step's fit starts from zero coefficients, so a draw depends on the past through the imputed
/// data alone. A step costs a fit (logistic_regression.h) and p normal deviates.
class BetaYX final : public Vell::Mcmc::McmcVector {
 public:
  /// The data set must outlive the variable.
  BetaYX(const DataSet& dataSet, const FitSettings& settings);

  /// One row per coefficient: posterior mean, standard error, robust standard error, of which one
  /// does not apply and holds -1. A standard error is the standard deviation of the kept draws.
  /// Empty before Finalize.
  const Vell::Matrix& ResultTable() const noexcept { return resultTable_; }

  /// Sets the coefficients to 0, one for each X column, and makes their chain buffers.
  void Initialize() override;
  /// Fills the result table.
  void Finalize() override;
  double AcceptanceProbability(const Vell::Vector& proposal) override;
  /// Fits and draws.
  /// Errors: those of FitCoefficients.
  void Propose(Vell::Vector& proposal) override;
  /// "BetaYX[0]" for the intercept, and so on.
  Vell::String GetName(std::int32_t component) const override;

 private:
  void UpdateFactor(const FitState& state);

  const DataSet& dataSet_;
  FitSettings settings_;
  FitRows fitRows_;  // kept for its memory
  Vell::Vector fittedCoefficients_;
  Vell::SymmetricMatrix factor_;
  Vell::Matrix resultTable_;
};

}  // namespace Hovar
