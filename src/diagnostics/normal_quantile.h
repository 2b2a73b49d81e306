#pragma once

namespace Hovar {

/// The standard normal quantile of 0 < p < 1, to about 16 digits.
/// Source: M. J. Wichura, Algorithm AS 241, Applied Statistics 37 (1988), pages 477-484 (PPND16).
double NormalQuantile(double p) noexcept;

}  // namespace Hovar
