#include "regression/independent_score.h"

#include "regression/logistic_kernels.h"

namespace Hovar {

void IndependentScore::Begin() {}

void IndependentScore::Evaluate(RecordBlock& block) noexcept { EvaluateIndependentTerms(block); }

void IndependentScore::Add(NormalEquations& equations, const RecordBlock& block,
                           const FitRows& rows) noexcept {
  double* const score = equations.score.begin();
  rows.VisitLists(block.index, [&](std::size_t i, auto setColumns) {
    for (const FitRows::Column j : setColumns) {
      score[j] += block.residual[i];
    }
  });
}

void IndependentScore::Assemble(NormalEquations& /*equations*/, FitState& state) {
  state.workingCorrelation = 0;
}

}  // namespace Hovar
