#include "regression/newton.h"

#include <cmath>

namespace Hovar {

LogisticTerms EvaluateLogistic(double linearPredictor) noexcept {
  const double up = std::exp(linearPredictor);
  const double down = std::exp(-linearPredictor);
  return {1 / (1 + down), 1 / (1 + up), 1 / (up + 2 + down)};
}

void AddToInformation(Vell::SymmetricMatrix& information, double weight,
                      std::span<const std::int32_t> setColumns) noexcept {
  for (std::size_t a = 0; a < setColumns.size(); ++a) {
    double* const row = information.Row(setColumns[a]);
    for (std::size_t b = 0; b <= a; ++b) {
      row[setColumns[b]] += weight;
    }
  }
}

bool StepNewton(FitState& state, Vell::Vector& beta, NormalEquations& equations) {
  const double lambda = state.parameters.priorPrecision;
  for (std::int32_t j = 0; j < beta.Size(); ++j) {
    equations.information(j, j) += lambda;
    equations.score[j] -= lambda * beta[j];
  }
  state.factor = Vell::Cholesky(equations.information);
  const Vell::Vector step = Vell::CholeskySolve(state.factor, equations.score);
  // A NaN counts as 0 in both norms, so a fit that has lost its way stops here.
  state.lastStep = Vell::MaximumNorm(step);
  if (state.parameters.tolerance * Vell::MaximumNorm(beta) >= state.lastStep) {
    return false;
  }
  Vell::AddInPlace(beta, step);
  ++state.iterationCount;
  return true;
}

}  // namespace Hovar
