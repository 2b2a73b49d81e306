#include "regression/independent_score.h"

#include "regression/logistic_kernels.h"

namespace Hovar {
namespace {

void Evaluate(RecordBlock& block) noexcept {
  if (block.isAtZero) {  // mu is 1/2, and the weights are not asked for
    for (std::size_t i = 0; i < static_cast<std::size_t>(block.count); ++i) {
      block.residual[i] = block.response[i] - 0.5;
    }
    return;
  }
  EvaluateIndependentTerms(block);
}

}  // namespace

void IndependentScore::SumPass(NormalEquations& equations, RecordBlock& block,
                               const Vell::Vector& beta) const noexcept {
  SumBlocks(equations, block, rows_, beta, [&] {
    Evaluate(block);
    AddInformation(equations.crossproducts, equations.score.Span(), block, rows_);
  });
}

}  // namespace Hovar
