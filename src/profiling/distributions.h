#pragma once

// Distribution functions that are the same on every machine: they use the exponential function and
// the logarithm of our own.

namespace Hovar {

/// P(Z <= x) of a standard normal variable, to about 15 digits; its error relative to the smaller tail
/// is below 1e-13 as far as |x| < 37.
/// Source: G. West, Better approximations to cumulative normal functions, Wilmott Magazine (2005),
/// pages 70-76, after J. F. Hart and others, Computer Approximations (1968).
double NormalDistribution(double x) noexcept;

/// P(|T| > t) of Student's distribution with `degrees` of freedom, above 0, for t >= 0. From a million
/// on the normal distribution takes its place, which differs by less than 1e-6.
/// Source: W. H. Press and others, Numerical Recipes, 3rd ed. (2007), section 6.14, by the continued
/// fraction of the incomplete beta function.
double StudentTwoSided(double t, double degrees) noexcept;

/// The t > 0 with P(|T| > t) = p, 0 < p < 1.
double StudentQuantile(double p, double degrees) noexcept;

}  // namespace Hovar
