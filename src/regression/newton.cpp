#include "regression/newton.h"

#include <algorithm>

namespace Hovar {

void BeginBlock(RecordBlock& block, const FitRows& rows, std::int32_t index,
                const Vell::Vector& beta) noexcept {
  block.index = index;
  block.firstRecord = index * FitRows::kBlockSize;
  block.count = std::min(FitRows::kBlockSize, rows.RecordCount() - block.firstRecord);
  for (std::int32_t i = 0; i < block.count; ++i) {
    block.response[static_cast<std::size_t>(i)] = rows.Response(block.firstRecord + i);
  }
  const double* const coefficients = beta.begin();
  rows.VisitLists(index, [&](std::size_t i, auto setColumns) {
    double sum = 0;
    for (const FitRows::Column j : setColumns) {
      sum += coefficients[j];
    }
    block.linearPredictor[i] = sum;
  });
}

void AddInformation(Vell::SymmetricMatrix& information, const RecordBlock& block,
                    const FitRows& rows) noexcept {
  double* const elements = information.Elements().begin();
  rows.VisitLists(block.index, [&](std::size_t i, auto setColumns) {
    const double weight = block.weight[i];
    for (std::size_t a = 0; a < setColumns.size(); ++a) {
      double* const row = elements + Vell::PackedRowStart(setColumns[a]);
      for (std::size_t b = 0; b <= a; ++b) {
        row[setColumns[b]] += weight;
      }
    }
  });
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
