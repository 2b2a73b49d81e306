#include "profiling/hospital_likelihood.h"

#include <algorithm>
#include <cmath>

#include "foundation/logarithm.h"
#include "linalg/kernels/exponentials.h"

namespace Hovar {
namespace {

/// Newton's method for the mode of l(mean + tau z) - z^2 / 2, which is concave. Steps are at most
/// some standard deviations long; on the side where l falls like -e^eta they bring it nearer by one
/// log-odds each.
Mode FindMode(const HospitalOutcomes& outcomes, double mean, double tau, double z) noexcept {
  constexpr int kMostSteps = 100;
  constexpr double kLongestStep = 4;
  constexpr double kCloseEnough = 1e-7;
  double sd = 1;
  for (int step = 0; step < kMostSteps; ++step) {
    const Derivatives l = outcomes.LogLikelihood(mean + tau * z);
    const double slope = tau * l.slope - z;
    const double curvature = 1 - tau * tau * l.curvature;
    const double move = std::clamp(slope / curvature, -kLongestStep, kLongestStep);
    z += move;
    sd = 1 / std::sqrt(curvature);
    if (std::fabs(move) < kCloseEnough) {
      break;
    }
  }
  return {z, sd};
}

/// The terms of the quadrature, as shares of their sum, and its logarithm.
struct Terms {
  std::array<double, kQuadratureNodes> z;
  std::array<double, kQuadratureNodes> shares;
  std::array<Derivatives, kQuadratureNodes> l;
  double logSum = 0;

  Terms(const HospitalOutcomes& outcomes, double mean, double tau, const Mode& mode) noexcept {
    const auto& rule = GaussHermite<kQuadratureNodes>::Rule();
    const double atMode = outcomes.LogLikelihood(mean + tau * mode.z).value - mode.z * mode.z / 2;
    for (std::size_t k = 0; k < kQuadratureNodes; ++k) {
      z[k] = mode.z + mode.sd * rule.nodes[k];
      l[k] = outcomes.LogLikelihood(mean + tau * z[k]);
      shares[k] = l[k].value - z[k] * z[k] / 2 - atMode;
    }
    Vell::ReplaceByExponentials(shares);
    double sum = 0;
    for (std::size_t k = 0; k < kQuadratureNodes; ++k) {
      shares[k] *= rule.scaledWeights[k];
      sum += shares[k];
    }
    for (double& share : shares) {
      share /= sum;
    }
    logSum = atMode + Vell::Log(mode.sd * sum);
  }
};

}  // namespace

Mode ConditionalMode(const HospitalOutcomes& outcomes, double mean, double tau) noexcept {
  return FindMode(outcomes, mean, tau, 0);
}

MarginalLikelihood Marginal(const HospitalOutcomes& outcomes, double mean, double tau) noexcept {
  const Terms terms(outcomes, mean, tau, FindMode(outcomes, mean, tau, 0));
  MarginalLikelihood result{terms.logSum};
  for (std::size_t k = 0; k < kQuadratureNodes; ++k) {
    const double share = terms.shares[k];
    const double z = terms.z[k];
    const double slope = terms.l[k].slope;
    const double second = terms.l[k].curvature + slope * slope;
    result.byMean += share * slope;
    result.byTau += share * slope * z;
    result.byMeanMean += share * second;
    result.byMeanTau += share * second * z;
    result.byTauTau += share * second * z * z;
  }
  result.byMeanMean -= result.byMean * result.byMean;
  result.byMeanTau -= result.byMean * result.byTau;
  result.byTauTau -= result.byTau * result.byTau;
  return result;
}

double LogMarginal(const HospitalOutcomes& outcomes, double mean, double tau, Mode& mode) noexcept {
  mode = FindMode(outcomes, mean, tau, mode.z);
  return Terms(outcomes, mean, tau, mode).logSum;
}

}  // namespace Hovar
