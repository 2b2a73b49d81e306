#pragma once

// The functions of the log-odds that a pass of Newton's method evaluates, several records at a
// time.

#include "regression/newton.h"

namespace Hovar {

// The terms of a block's records, from its linear predictors and responses. With u = e^eta and d =
// e^-eta the weight is w = 1 / (u + 2 + d), which is mu (1 - mu) and 0, not a NaN, beyond the range
// of the exponential function. All forms for different processors give the same bits. Entries after
// the block's count may be overwritten and mean nothing.

/// Weight, and residual: 1 / (1 + u) where y = 1, -1 / (1 + d) where y = 0.
void EvaluateIndependentTerms(RecordBlock& block) noexcept;

/// What correlated records need besides: s and r.
struct PearsonBlock {
  RecordBlock::Values deviation{};  // s = sqrt(w)
  RecordBlock::Values pearson{};    // r = (y - mu) / s
};

/// Weight, residual y - 1 / (1 + d), deviation and Pearson residual.
void EvaluateExchangeableTerms(RecordBlock& block, PearsonBlock& pearson) noexcept;

}  // namespace Hovar
