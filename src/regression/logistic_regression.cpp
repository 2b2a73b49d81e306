#include "regression/logistic_regression.h"

#include <cmath>
#include <utility>

#include "foundation/io/log.h"
#include "messages/output_lines.h"
#include "regression/covariance.h"
#include "regression/exchangeable_score.h"
#include "regression/independent_score.h"

namespace Hovar {

namespace {

void WarnOfIterationLimit(const FitState& state) {
  if (state.iterationCount >= state.settings.parameters.maxIterations) {
    Vell::IO::Log().WriteMessage(Messages::kWarnings.iterationLimit);
  }
}

}  // namespace

Vell::Vector FitCoefficients(FitState& state, const FitRows& rows) {
  Vell::Vector beta(rows.ColumnCount());
  switch (state.settings.workingCorrelation) {
    case WorkingCorrelation::kIndependent: {
      const IndependentScore score(rows);
      beta = FitNewton(state, std::move(beta), score);
      break;
    }
    case WorkingCorrelation::kExchangeable: {
      ExchangeableScore score(state, rows);
      beta = FitNewton(state, std::move(beta), score);
      break;
    }
  }
  WarnOfIterationLimit(state);
  return beta;
}

CoefficientEstimates EstimatesOf(const FitState& state, const Vell::Vector& beta) {
  CoefficientEstimates estimates(beta.Size());
  const Vell::SymmetricMatrix model = ModelCovariance(state);
  for (std::int32_t j = 0; j < beta.Size(); ++j) {
    estimates[j].estimate = beta[j];
    estimates[j].modelStandardError = std::sqrt(model(j, j));
  }
  if (state.settings.workingCorrelation == WorkingCorrelation::kExchangeable) {
    const Vell::SymmetricMatrix empirical = EmpiricalCovariance(state);
    for (std::int32_t j = 0; j < beta.Size(); ++j) {
      estimates[j].empiricalStandardError = std::sqrt(empirical(j, j));
    }
  }
  return estimates;
}

}  // namespace Hovar
