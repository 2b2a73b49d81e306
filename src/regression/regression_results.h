#pragma once

// The outcome of an Analysis, from which the coefficient file is written and into which it is read.

#include <array>
#include <cstdint>
#include <string_view>

#include "foundation/growable_array.h"
#include "linalg/string_array.h"
#include "linalg/vector.h"
#include "regression/coefficient_estimate.h"
#include "regression/xz_table.h"

namespace Hovar {

/// The five models, in the order of the coefficient file.
enum class Model { kPGivenX, kYGivenZ, kYGivenX, kYGivenXWithoutP, kYGivenXWithoutPMcmc };

/// Their names in the coefficient file and on standard output.
inline constexpr std::array<std::string_view, 5> kModelLabels = {"[P|X]", "[Y|Z]", "[Y|X]",
                                                                 "[Y|X,P=0]", "[Y|X,P=0,MCMC]"};

/// What an analysis finds and the coefficient file carries; one row per variable, the intercept
/// first. Names of X and Z, tables and blocks correspond by position; whoever fills them sees to
/// that.
struct RegressionResults {
  Vell::StringArray xNames;
  Vell::StringArray zNames;
  /// Table k - 1 is that of variable k; the intercept has none.
  Vell::GrowableArray<XzTable> xzTables;
  /// By model, one entry per variable; a block is empty until its model has been fitted.
  std::array<CoefficientEstimates, kModelLabels.size()> blocks;

  std::int32_t VariableCount() const noexcept { return xNames.Count(); }
  CoefficientEstimates& Block(Model model) noexcept {
    return blocks[static_cast<std::size_t>(model)];
  }
  const CoefficientEstimates& Block(Model model) const noexcept {
    return blocks[static_cast<std::size_t>(model)];
  }
};

/// The estimates of a block alone, one per variable.
/// Errors: "Out of memory".
Vell::Vector EstimateVector(const CoefficientEstimates& block);

/// The prior probabilities that the imputation of X draws with: entry 2 * (j - 1) + b is the
/// probability that X_j = 1 for a record whose Z_j is b, for j = 1 .. variableCount - 1, which must
/// all have a table.
/// Errors: "Out of memory".
Vell::Vector PriorTable(const RegressionResults& results, std::int32_t variableCount);

}  // namespace Hovar
