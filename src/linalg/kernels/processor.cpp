#include "linalg/kernels/processor.h"

#include <algorithm>

#include "built_width.h"

namespace Vell {
namespace {

VectorWidth WidestOfProcessor() noexcept {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("bmi2")) {
    return VectorWidth::kAvx512;
  }
  if (__builtin_cpu_supports("avx2")) {
    return VectorWidth::kAvx2;
  }
#endif
  return VectorWidth::kPortable;
}

VectorWidth limit = kBuiltWidth;

}  // namespace

VectorWidth BestVectorWidth() noexcept {
  static const VectorWidth widest = WidestOfProcessor();
  return std::min(widest, limit);
}

void LimitVectorWidth(VectorWidth width) noexcept { limit = width; }

}  // namespace Vell
