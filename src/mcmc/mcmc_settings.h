#pragma once

// What a user chooses about sampling. All definitions but a Batch hold these three numbers.

#include <cstdint>

namespace Hovar {

/// The length of a run, as a definition gives it: any 32-bit numbers, which those who use them
/// check. An Analysis takes all three; Predictions and Validations have no chain to thin.
struct McmcSettings {
  std::int32_t thinning = 0;  // keep every n-th step
  std::int32_t burnin = 0;    // steps, or imputation passes, that are thrown away
  std::int32_t steps = 0;     // steps, or imputation passes, that count
};

}  // namespace Hovar
