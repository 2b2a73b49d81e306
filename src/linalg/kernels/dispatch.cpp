#include "linalg/kernels/dispatch.h"

#include <algorithm>

#include "built_width.h"

namespace Vell {
namespace {

VectorWidth limit = kBuiltWidth;

}  // namespace

VectorWidth BestVectorWidth() noexcept {
  static const VectorWidth widest = WidestOfProcessor();
  return std::min(widest, limit);
}

void LimitVectorWidth(VectorWidth width) noexcept { limit = width; }

}  // namespace Vell
