#include "regression/independent_score.h"

namespace Hovar {

void IndependentScore::Add(NormalEquations& equations, std::int32_t /*hospital*/,
                           std::span<const std::int32_t> setColumns, const LogisticTerms& terms,
                           bool response) {
  const double residual = response ? terms.complement : -terms.mean;
  for (const std::int32_t j : setColumns) {
    equations.score[j] += residual;
  }
}

void IndependentScore::Assemble(NormalEquations& /*equations*/, FitState& state) {
  state.workingCorrelation = 0;
}

}  // namespace Hovar
