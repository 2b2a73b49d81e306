#pragma once

// The likelihood of a hospital's outcomes when its shift eta is drawn from a normal distribution
// with the mean m and the standard deviation tau, integrated over eta = m + tau z:
//
//     L(m, tau) = integral of exp(l(m + tau z)) phi(z) dz,      l(eta) = O eta - K(eta).
//
// The quadrature is adaptive: nodes lie about the mode of the integrand, as far apart as its
// curvature there says (J. C. Pinheiro, D. M. Bates, Approximations to the log-likelihood function
// in the nonlinear mixed-effects model, Journal of Computational and Graphical Statistics 4, 1995,
// pages 12-35). In z the integrand is well behaved down to tau = 0, where it is phi(z) itself.

#include <array>
#include <cstddef>

#include "profiling/cumulants.h"
#include "profiling/quadrature.h"

namespace Hovar {

inline constexpr std::size_t kQuadratureNodes = 15;

/// A hospital's outcomes in a completed study. The curve must outlive it.
struct HospitalOutcomes {
  const CumulantCurve* curve = nullptr;
  double observed = 0;
  /// What the mean of its shift may depend on, less its case-weighted mean over all hospitals.
  double covariate = 0;

  /// l(eta) and its derivatives.
  Derivatives LogLikelihood(double eta) const noexcept {
    const Derivatives k = curve->At(eta);
    return {observed * eta - k.value, observed - k.slope, -k.curvature};
  }
};

/// Where the integrand is largest, and the standard deviation of the normal density that is shaped
/// like it there.
struct Mode {
  double z = 0;
  double sd = 1;
};
Mode ConditionalMode(const HospitalOutcomes& outcomes, double mean, double tau) noexcept;

/// log L and its derivatives by the mean (or what the mean is linear in) and tau.
struct MarginalLikelihood {
  double value = 0;
  double byMean = 0;
  double byTau = 0;
  double byMeanMean = 0;
  double byMeanTau = 0;
  double byTauTau = 0;
};

/// log L with all derivatives, as posterior means over z: with s = l'(eta), those of s and s z, and
/// of l'' + s^2 and so on less their products (T. A. Louis, Journal of the Royal Statistical
/// Society B 44, 1982, pages 226-233). tau may be 0 and is taken for |tau|.
MarginalLikelihood Marginal(const HospitalOutcomes& outcomes, double mean, double tau) noexcept;

/// log L alone, with the mode as starting point; `mode` becomes the one found.
double LogMarginal(const HospitalOutcomes& outcomes, double mean, double tau, Mode& mode) noexcept;

}  // namespace Hovar
