#pragma once

#include "linalg/kernels/dispatch.h"

namespace Testing {

/// Limits the kernels to a vector width, for one scope. A processor that lacks it uses its next
/// best.
class WidthLimit {
 public:
  explicit WidthLimit(Vell::VectorWidth width) { Vell::LimitVectorWidth(width); }
  ~WidthLimit() { Vell::LimitVectorWidth(Vell::VectorWidth::kAvx512); }
  WidthLimit(const WidthLimit&) = delete;
  WidthLimit& operator=(const WidthLimit&) = delete;
};

}  // namespace Testing
