#include "regression/independent_score.h"

#include "regression/logistic_kernels.h"

namespace Hovar {

void IndependentScore::Begin() {}

void IndependentScore::Evaluate(RecordBlock& block) noexcept { EvaluateIndependentTerms(block); }

void IndependentScore::Add(NormalEquations& equations, const RecordBlock& block,
                           const FitRows& rows) noexcept {
  AddCrossproducts(equations.crossproducts, equations.score.Span(), rows, block.index, block.weight,
                   block.residual);
}

void IndependentScore::Assemble(NormalEquations& /*equations*/, FitState& state) {
  state.workingCorrelation = 0;
}

}  // namespace Hovar
