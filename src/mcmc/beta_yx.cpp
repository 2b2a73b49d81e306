#include "mcmc/beta_yx.h"

#include <cmath>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/number_text.h"
#include "foundation/io/standard_writers.h"
#include "foundation/random/random_generator.h"
#include "mcmc/mcmc_model.h"
#include "messages/output_lines.h"
#include "regression/covariance.h"
#include "regression/logistic_regression.h"

namespace Hovar {

BetaYX::BetaYX(const DataSet& dataSet, const FitSettings& settings)
    : dataSet_(dataSet), settings_(settings) {}

void BetaYX::Initialize() {
  const std::int32_t columns = dataSet_.x.Columns();
  Resize(columns);
  AllocateChainBuffers();
  fittedCoefficients_.Resize(columns);
  factor_ = Vell::SymmetricMatrix(columns);
  for (std::int32_t i = 0; i < columns; ++i) {
    factor_(i, i) = 1;
  }
}

Vell::String BetaYX::GetName(std::int32_t component) const {
  Vell::String name("BetaYX[");
  name.Append(Vell::IO::NumberText::OfInteger(component).View());
  name.Append(']');
  return name;
}

double BetaYX::AcceptanceProbability(const Vell::Vector& /*proposal*/) { return 1; }

void BetaYX::Propose(Vell::Vector& proposal) {
  FitState state(settings_);
  fitRows_.Collect(RowsOfYGivenXWithoutImputedP(dataSet_), dataSet_.hospitalSize);
  fittedCoefficients_ = FitCoefficients(state, fitRows_);
  UpdateFactor(state);
  // The deviates are used as they are drawn, the last component's first.
  for (std::int32_t i = proposal.Size() - 1; i >= 0; --i) {
    proposal[i] = Vell::RandomGenerator::Normal();
  }
  proposal = Vell::SolveTransposed(factor_, proposal);
  Vell::AddInPlace(proposal, fittedCoefficients_);
}

void BetaYX::UpdateFactor(const FitState& state) {
  if (settings_.workingCorrelation == WorkingCorrelation::kIndependent) {
    factor_ = state.factor;
    return;
  }
  try {
    factor_ = Vell::Cholesky(EmpiricalCovariance(state));
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    throw;
  } catch (const Vell::Exceptions::Exception&) {
    // With few hospitals the empirical covariance need not be positive definite. The chain goes on
    // with the factor of an earlier iteration: the one error that does not end a run.
    Vell::IO::StandardOutput().WriteMessage(Messages::kWarnings.empiricalVariance);
  }
}

void BetaYX::Finalize() {
  const std::int32_t columns = Values().Size();
  const bool isEmpirical = settings_.workingCorrelation == WorkingCorrelation::kExchangeable;
  resultTable_ = Vell::Matrix(columns, 3);
  for (std::int32_t i = 0; i < columns; ++i) {
    const double standardError = std::sqrt(Statistics(i).Variance(Model().Kept()));
    resultTable_(i, 0) = Statistics(i).Mean(Model().Kept());
    resultTable_(i, 1) = isEmpirical ? -1 : standardError;
    resultTable_(i, 2) = isEmpirical ? standardError : -1;
  }
}

}  // namespace Hovar
