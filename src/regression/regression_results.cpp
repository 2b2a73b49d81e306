#include "regression/regression_results.h"

namespace Hovar {

Vell::Vector EstimateVector(const CoefficientEstimates& block) {
  Vell::Vector estimates(block.Size());
  for (std::int32_t j = 0; j < block.Size(); ++j) {
    estimates[j] = block[j].estimate;
  }
  return estimates;
}

Vell::Vector PriorTable(const RegressionResults& results, std::int32_t variableCount) {
  constexpr std::int32_t kClasses = 2;
  Vell::Vector table(variableCount > 0 ? kClasses * (variableCount - 1) : 0);
  for (std::int32_t i = 0; i < table.Size(); ++i) {
    table[i] = results.xzTables[i / kClasses].probability[static_cast<std::size_t>(i % kClasses)];
  }
  return table;
}

}  // namespace Hovar
