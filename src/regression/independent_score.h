#pragma once

#include "regression/newton.h"

namespace Hovar {

/// Every record is an observation of its own: g_j = sum of (y_i - mu_i) over the records in which
/// column j is set. For y = 1 the residual is 1 - mu = 1 / (1 + e^eta), computed in this form so
/// that it keeps its digits where mu is close to 1.
class IndependentScore {
 public:
  static void Begin();
  static void Evaluate(RecordBlock& block) noexcept;
  static void Add(NormalEquations& equations, const RecordBlock& block,
                  const FitRows& rows) noexcept;
  static void Assemble(NormalEquations& equations, FitState& state);
};

}  // namespace Hovar
