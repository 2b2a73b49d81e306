#pragma once

// The inverse of the standard normal distribution function.

namespace Hovar {

/// The standard normal quantile of 0 < p < 1, to about 16 digits. The ends, 0 and 1, are not
/// infinite but NaN, as is what lies beyond them; so callers keep off them.
/// Source: M. J. Wichura, Algorithm AS 241, Applied Statistics 37 (1988), pages 477-484 (PPND16).
double NormalQuantile(double p) noexcept;

}  // namespace Hovar
