#pragma once

#include <cstdint>
#include <span>

#include "regression/newton.h"

namespace Hovar {

/// Every record is an observation of its own: g_j = sum of (y_i - mu_i) over the records in which
/// column j is set.
class IndependentScore {
 public:
  void Begin() noexcept {}
  void Add(NormalEquations& equations, std::int32_t hospital,
           std::span<const std::int32_t> setColumns, const LogisticTerms& terms, bool response);
  void Assemble(NormalEquations& equations, FitState& state);
};

}  // namespace Hovar
