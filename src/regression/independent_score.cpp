#include "regression/independent_score.h"

#include "regression/logistic_kernels.h"

namespace Hovar {

void IndependentScore::Begin() {}

void IndependentScore::Evaluate(RecordBlock& block) noexcept {
  if (block.isAtZero) {  // mu is 1/2, and the weights are not asked for
    for (std::size_t i = 0; i < static_cast<std::size_t>(block.count); ++i) {
      block.residual[i] = block.response[i] - 0.5;
    }
    return;
  }
  EvaluateIndependentTerms(block);
}

void IndependentScore::Add(NormalEquations& equations, const RecordBlock& block,
                           const FitRows& rows) noexcept {
  AddInformation(equations.crossproducts, equations.score.Span(), block, rows);
}

void IndependentScore::Assemble(NormalEquations& /*equations*/, FitState& state) {
  state.workingCorrelation = 0;
}

}  // namespace Hovar
