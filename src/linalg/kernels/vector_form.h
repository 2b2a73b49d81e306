#pragma once

// The one dispatch point of the kernels. A kernel is a callable type with an always-inlined body;
// RunVectorForm compiles that body once for each width and picks one at run time. Nothing but the
// instruction set differs between the forms.

#include "linalg/kernels/processor.h"

namespace Vell {

#if defined(__x86_64__)

template <typename Kernel>
[[gnu::target("avx2")]] void RunAvx2(const Kernel& kernel) noexcept {
  kernel.template operator()<4>();
}

template <typename Kernel>
[[gnu::target("avx512f,avx512dq")]] void RunAvx512(const Kernel& kernel) noexcept {
  kernel.template operator()<8>();
}

#endif

/// Runs a kernel in the widest form. Its operator()<kLanes>() must be [[gnu::always_inline]].
template <typename Kernel>
void RunVectorForm(const Kernel& kernel) noexcept {
#if defined(__x86_64__)
  switch (BestVectorWidth()) {
    case VectorWidth::kAvx512:
      return RunAvx512(kernel);
    case VectorWidth::kAvx2:
      return RunAvx2(kernel);
    case VectorWidth::kPortable:
      break;
  }
#endif
  kernel.template operator()<2>();
}

}  // namespace Vell
