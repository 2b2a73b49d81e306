#pragma once

// The [X|Z] tables: how a hospital's record of a condition (Z) goes with the patient's condition
// (X). Imputation takes them as the prior probabilities of a missing X (mcmc/imputation_sweep.h).

#include <array>
#include <cstdint>

#include "data/data_set.h"

namespace Hovar {

/// How often a variable's X is 1 where its Z is 0 and where its Z is 1: [X|Z].
struct XzTable {
  /// Probability that X is 1, by the value of Z.
  std::array<double, 2> probability{};
};

/// Counts the records whose X cell of the variable (0 .. variableCount - 1) is not missing: the
/// probabilities are relative frequencies, without a prior, so 0 and 1 occur.
/// Errors: Exception "Cannot compute XZ table" when they all have the same Z, or there are none.
XzTable ComputeXzTable(const DataSet& dataSet, std::int32_t variable);

}  // namespace Hovar
