#include "regression/newton.h"

namespace Hovar {

void BeginBlock(RecordBlock& block, const FitRows& rows, std::int32_t index,
                const Vell::Vector& beta) noexcept {
  block.index = index;
  block.count = rows.BlockSize(index);
  const std::int32_t firstRecord = FitRows::FirstRecord(index);
  for (std::int32_t i = 0; i < block.count; ++i) {
    block.response[static_cast<std::size_t>(i)] = rows.Response(firstRecord + i);
  }
  ComputeLinearPredictors(block.linearPredictor, rows, index, beta);
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
