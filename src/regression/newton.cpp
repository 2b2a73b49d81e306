#include "regression/newton.h"

#include <algorithm>

namespace Hovar {

void BeginBlock(RecordBlock& block, const FitRows& rows, std::int32_t index,
                const Vell::Vector& beta) noexcept {
  block.index = index;
  block.count = rows.BlockSize(index);
  const std::int32_t firstRecord = FitRows::FirstRecord(index);
  for (std::int32_t i = 0; i < block.count; ++i) {
    block.response[static_cast<std::size_t>(i)] = rows.Response(firstRecord + i);
  }
  block.isAtZero = std::all_of(beta.begin(), beta.end(), [](double b) { return b == 0; });
  ComputeLinearPredictors(block.linearPredictor, rows, index, beta);
}

void AddInformation(TriangleSums& crossproducts, std::span<double> columnSums,
                    const RecordBlock& block, const FitRows& rows) noexcept {
  if (block.isAtZero) {
    AddCrossproductsOfQuarters(crossproducts, columnSums, rows, block.index, block.residual);
  } else {
    AddCrossproducts(crossproducts, columnSums, rows, block.index, block.weight, block.residual);
  }
}

bool StepNewton(FitState& state, Vell::Vector& beta, NormalEquations& equations) {
  const double lambda = state.settings.parameters.priorPrecision;
  for (std::int32_t j = 0; j < beta.Size(); ++j) {
    equations.information(j, j) += lambda;
    equations.score[j] -= lambda * beta[j];
  }
  state.factor = Vell::Cholesky(equations.information);
  const Vell::Vector step = Vell::CholeskySolve(state.factor, equations.score);
  // A NaN counts as 0 in both norms, so a fit that has lost its way stops here.
  state.lastStep = Vell::MaximumNorm(step);
  if (state.settings.parameters.tolerance * Vell::MaximumNorm(beta) >= state.lastStep) {
    return false;
  }
  Vell::AddInPlace(beta, step);
  ++state.iterationCount;
  return true;
}

}  // namespace Hovar
