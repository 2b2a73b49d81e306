#pragma once

#include <cstdint>

namespace Hovar {

/// The length of a run, as a definition gives it.
struct McmcSettings {
  std::int32_t thinning = 0;  // keep every n-th step
  std::int32_t burnin = 0;    // steps, or imputation passes, that are thrown away
  std::int32_t steps = 0;     // steps, or imputation passes, that count
};

}  // namespace Hovar
