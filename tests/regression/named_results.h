#pragma once

// Results of a regression by the names of their variables.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "regression/regression_results.h"

namespace Testing {

inline Vell::StringArray MakeTexts(const std::vector<std::string>& texts) {
  Vell::StringArray result(static_cast<std::int32_t>(texts.size()));
  for (std::int32_t i = 0; i < result.Count(); ++i) {
    result[i] = Vell::String(texts[static_cast<std::size_t>(i)]);
  }
  return result;
}

/// Results with these names, all tables 0 and all estimates as new.
inline Hovar::RegressionResults MakeResults(const std::vector<std::string>& xNames,
                                            const std::vector<std::string>& zNames) {
  Hovar::RegressionResults results;
  results.xNames = MakeTexts(xNames);
  results.zNames = MakeTexts(zNames);
  const std::int32_t count = results.xNames.Count();
  results.xzTables.Resize(std::max(count - 1, 0));
  for (Hovar::CoefficientEstimates& block : results.blocks) {
    block = Hovar::CoefficientEstimates(count);
  }
  return results;
}

}  // namespace Testing
