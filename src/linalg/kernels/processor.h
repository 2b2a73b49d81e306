#pragma once

namespace Vell {

/// The vector instructions that a kernel may use. Every form of a kernel does the same IEEE
/// operations in the same order on every element, so all give the same bits.
enum class VectorWidth { kPortable, kAvx2, kAvx512 };

/// Whether kernels have forms of their own for VectorWidth::kAvx512 (and the bit operations that
/// all such processors have).
#if defined(__x86_64__)
inline constexpr bool kHasAvx512Forms = true;
#else
inline constexpr bool kHasAvx512Forms = false;
#endif

/// The widest that this processor has and that this build and LimitVectorWidth allow. Nothing that
/// a user sets takes part.
VectorWidth BestVectorWidth() noexcept;

/// Limits the width from now on. For tests and benchmarks.
void LimitVectorWidth(VectorWidth width) noexcept;

}  // namespace Vell
