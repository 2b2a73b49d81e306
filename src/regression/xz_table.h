#pragma once

#include <array>
#include <cstdint>

#include "data/data_set.h"

namespace Hovar {

/// How often a variable's X is 1 where its Z is 0 and where its Z is 1: [X|Z].
struct XzTable {
  std::array<double, 2> probability{};
};

/// Counts the records whose X cell of the variable (0 .. variableCount - 1) is not missing.
/// Errors: Exception "Cannot compute XZ table" when they all have the same Z, or there are none.
XzTable ComputeXzTable(const DataSet& dataSet, std::int32_t variable);

}  // namespace Hovar
