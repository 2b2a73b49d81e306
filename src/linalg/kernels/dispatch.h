#pragma once

// The one place that knows instruction sets and picks the form of a kernel for the processor. Every
// form of a kernel does the same IEEE operations in the same order on every element, so all give
// the same bits. A kernel has its forms in one of two ways:
//
// - RunVectorForm: a callable type with an always-inlined body, which is compiled once for each
//   instruction set. Nothing but the width of the registers differs between the forms.
// - RunForm: a portable function, and one that is written for an instruction set where that pays.
//
// Another instruction set is a line in each part of this file.

#include <utility>

namespace Vell {

/// The vector instructions that a kernel may use, the widest last.
enum class VectorWidth { kPortable, kAvx2, kAvx512 };

/// The widest that this processor has and that this build and LimitVectorWidth allow. Nothing that
/// a user sets takes part.
VectorWidth BestVectorWidth() noexcept;

/// Limits the width from now on, for the whole process: the best one is then the narrower of
/// `width` and what the processor has. The limit at the start is the build's (HOVAR_VECTOR_WIDTH).
/// For tests and benchmarks.
void LimitVectorWidth(VectorWidth width) noexcept;

#if defined(__x86_64__)

/// Whether forms that are written for VectorWidth::kAvx512 (and the bit operations that all such
/// processors have) are part of this build.
inline constexpr bool kHasAvx512Forms = true;

/// What the processor has, whatever may be used of it.
inline VectorWidth WidestOfProcessor() noexcept {
  const bool hasAvx2 = __builtin_cpu_supports("avx2");
  const bool hasAvx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("bmi2");
  return hasAvx512 ? VectorWidth::kAvx512 : hasAvx2 ? VectorWidth::kAvx2 : VectorWidth::kPortable;
}

/// The forms of 4 and of 8 doubles to a register. To be called by RunVectorForm alone, which knows
/// that the processor has the instructions.
template <typename Kernel>
[[gnu::target("avx2")]] void RunAvx2(const Kernel& kernel) noexcept {
  kernel.template operator()<4>();
}

template <typename Kernel>
[[gnu::target("avx512f,avx512dq")]] void RunAvx512(const Kernel& kernel) noexcept {
  kernel.template operator()<8>();
}

/// Runs a kernel in the widest form. Its operator()<kLanes>(), kLanes the doubles of a register (2,
/// 4 or 8), must be [[gnu::always_inline]], so that it is compiled for the caller's instruction
/// set. It must not raise.
template <typename Kernel>
void RunVectorForm(const Kernel& kernel) noexcept {
  switch (BestVectorWidth()) {
    case VectorWidth::kAvx512:
      return RunAvx512(kernel);
    case VectorWidth::kAvx2:
      return RunAvx2(kernel);
    case VectorWidth::kPortable:
      return kernel.template operator()<2>();
  }
}

#else

inline constexpr bool kHasAvx512Forms = false;

inline VectorWidth WidestOfProcessor() noexcept { return VectorWidth::kPortable; }

template <typename Kernel>
void RunVectorForm(const Kernel& kernel) noexcept {
  kernel.template operator()<2>();
}

#endif

/// Calls the best form of a kernel and returns what it returns. The forms take the same arguments;
/// kAvx512 needs no definition where !kHasAvx512Forms.
template <auto kPortable, auto kAvx512, typename... Arguments>
[[gnu::always_inline]] inline decltype(auto) RunForm(Arguments&&... arguments) {
  if constexpr (kHasAvx512Forms) {
    if (BestVectorWidth() == VectorWidth::kAvx512) {
      return kAvx512(std::forward<Arguments>(arguments)...);
    }
  }
  return kPortable(std::forward<Arguments>(arguments)...);
}

}  // namespace Vell
