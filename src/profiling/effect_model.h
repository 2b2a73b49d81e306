#pragma once

// The model of the differences between hospitals: in a completed study the outcomes of hospital h
// follow
//
//     logit P(Y = 1) = logit(p) + mu + gamma x_h + u_h,      u_h normal with mean 0 and SD tau,
//
// where p is the patient's probability under the reference. gamma is 0 unless the mean may depend
// on a covariate x_h. Fitted by maximum likelihood with adaptive quadrature, as lme4::glmer does
// with nAGQ = 15 and logit(p) as offset (D. Bates and others, Journal of Statistical Software 67(1),
// 2015).

#include <array>
#include <span>

#include "profiling/hospital_likelihood.h"

namespace Hovar {

struct EffectParameters {
  double mu = 0;     // log-odds
  double gamma = 0;  // log-odds per unit of the covariate
  double tau = 0;    // log-odds, at least 0

  double Mean(const HospitalOutcomes& outcomes) const noexcept {
    return mu + gamma * outcomes.covariate;
  }
};

/// Whether the mean of the shifts depends on the covariate.
enum class MeanModel { kPlain, kByCovariate };

struct EffectFit {
  EffectParameters at;
  double logLikelihood = 0;
  /// Variances of mu, gamma and tau from the curvature, 0 for what was not fitted and for a tau of 0.
  std::array<double, 3> variance{};
  double covarianceMuGamma = 0;
  bool converged = false;
};

/// Whether the model can be fitted: at least three hospitals with cases (a flat prior of tau has no
/// proper posterior with fewer; A. Gelman, Bayesian Analysis 1, 2006, pages 515-534), and neither
/// no event nor nothing but events, where mu would be infinite.
bool HasEffectModel(std::span<const HospitalOutcomes> hospitals) noexcept;

/// The sum of the hospitals' log L.
double LogLikelihood(std::span<const HospitalOutcomes> hospitals,
                     const EffectParameters& at) noexcept;

/// Maximises the likelihood by Newton's method from `start`, or from what fits without differences
/// where that is better. Where the likelihood falls from tau = 0 on, the fit is there. Requires
/// HasEffectModel.
EffectFit FitEffects(std::span<const HospitalOutcomes> hospitals, const EffectParameters& start,
                     MeanModel meanModel) noexcept;

/// Maximises it over mu, and gamma, with the tau of `start`, which may be 0.
EffectFit FitMeans(std::span<const HospitalOutcomes> hospitals, const EffectParameters& start,
                   MeanModel meanModel) noexcept;

/// One step of Newton's method over mu, and gamma, with the tau of `start`, and the maximum that it
/// predicts: for a start nearby.
EffectFit StepMeans(std::span<const HospitalOutcomes> hospitals, const EffectParameters& start,
                    MeanModel meanModel) noexcept;

}  // namespace Hovar
