#include "profiling/effect_evidence.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/exponential.h"
#include "foundation/logarithm.h"

namespace Hovar {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

std::vector<HospitalOutcomes> WithCovariate(std::span<const HospitalOutcomes> hospitals,
                                            std::span<const double> values) {
  std::vector<HospitalOutcomes> changed(hospitals.begin(), hospitals.end());
  const std::vector<double> centred = CentredByCases(values, hospitals);
  for (std::size_t h = 0; h < changed.size(); ++h) {
    changed[h].covariate = centred[h];
  }
  return changed;
}

/// The standard deviation of the covariate over the hospitals with cases.
double SpreadOfCovariate(std::span<const HospitalOutcomes> hospitals) {
  double count = 0;
  double sum = 0;
  double squares = 0;
  for (const HospitalOutcomes& outcomes : hospitals) {
    if (outcomes.curve->Patients() > 0) {
      count += 1;
      sum += outcomes.covariate;
      squares += outcomes.covariate * outcomes.covariate;
    }
  }
  return std::sqrt(std::max(0.0, squares - sum * sum / count) / (count - 1));
}

/// Too little to fit a slope to.
bool HasSlope(std::span<const HospitalOutcomes> hospitals) {
  constexpr double kSmallestSpread = 1e-6;
  constexpr std::size_t kFewest = 4;
  const auto count = std::count_if(hospitals.begin(), hospitals.end(), [](const auto& outcomes) {
    return outcomes.curve->Patients() > 0;
  });
  return static_cast<std::size_t>(count) >= kFewest &&
         SpreadOfCovariate(hospitals) > kSmallestSpread;
}

/// The correlation of x with gamma x + u is gamma s / sqrt(gamma^2 s^2 + tau^2), with the standard
/// deviation s of x; Fisher's z of it is asinh(gamma s / tau).
void AddCorrelation(PooledEstimate& correlation, std::span<const HospitalOutcomes> hospitals,
                    const EffectFit& fit) {
  const double tau = fit.at.tau;
  if (!(tau > 0)) {
    return;
  }
  const double s = SpreadOfCovariate(hospitals);
  const double t = fit.at.gamma * s / tau;
  const double root = std::sqrt(1 + t * t);
  const double z = std::copysign(Vell::Log(std::fabs(t) + root), t);
  const double byGamma = s / (tau * root);
  const double byTau = t / (tau * root);
  correlation.Add(z, byGamma * byGamma * fit.variance[1] + byTau * byTau * fit.variance[2]);
}

/// Ratios of all patients' events under two shifts to those in hospitals drawn from all.
void AddMiddleTwoThirds(EffectEvidence& evidence, std::span<const HospitalOutcomes> hospitals,
                        const EffectParameters& at) {
  constexpr double kTwoThirds = 0.967421566101701;  // normal quantile of 5/6
  const auto& rule = GaussHermite<9>::Rule();
  const auto eventsAt = [&](double eta) {
    double sum = 0;
    for (const HospitalOutcomes& outcomes : hospitals) {
      sum += outcomes.curve->Slope(eta);
    }
    return sum;
  };
  double expected = 0;
  for (std::size_t k = 0; k < rule.nodes.size(); ++k) {
    expected += rule.weights[k] * eventsAt(at.mu + at.tau * rule.nodes[k]);
  }
  evidence.middleLower += eventsAt(at.mu - kTwoThirds * at.tau) / expected;
  evidence.middleUpper += eventsAt(at.mu + kTwoThirds * at.tau) / expected;
}

double InverseFisher(double z) {
  const double e = Vell::Exp(-2 * std::fabs(z));
  return std::copysign((1 - e) / (1 + e), z);
}

}  // namespace

void EffectEvidence::Add(const EffectEvidence& other) noexcept {
  studies += other.studies;
  mu.Add(other.mu);
  gamma.Add(other.gamma);
  tau += other.tau;
  tauSquares += other.tauSquares;
  for (std::size_t j = 0; j < kTauNodes; ++j) {
    tauMass[j] += other.tauMass[j];
  }
  tauTest.Add(other.tauTest);
  volume.Add(other.volume);
  riskCorrelation.Add(other.riskCorrelation);
  tauWithoutFlagged += other.tauWithoutFlagged;
  flagged += other.flagged;
  middleLower += other.middleLower;
  middleUpper += other.middleUpper;
}

EffectSummary SummariseEffects(const EffectEvidence& evidence, const TauGrid& grid) {
  EffectSummary summary;
  const double n = evidence.studies;
  summary.hasModel = n > 0;
  if (!summary.hasModel) {
    return summary;
  }
  constexpr double kTail = 0.025;
  summary.mu = evidence.mu.Mean();
  summary.muLimits95 = evidence.mu.Limits95();
  if (evidence.gamma.studies > 0) {
    summary.gamma = evidence.gamma.Mean();
    summary.gammaLimits95 = evidence.gamma.Limits95();
  }
  summary.tau = evidence.tau / n;
  summary.tauLimits95 = {TauQuantile(grid, evidence.tauMass, kTail),
                         TauQuantile(grid, evidence.tauMass, 1 - kTail)};
  summary.tauError =
      n < 2 ? kNotANumber
            : std::sqrt(std::max(0.0, evidence.tauSquares - evidence.tau * evidence.tau / n) /
                        (n - 1) / n);
  summary.tauP = evidence.tauTest.P(grid);
  summary.middleTwoThirds = {evidence.middleLower / n, evidence.middleUpper / n};
  summary.volumeSlope = evidence.volume.Mean();
  summary.volumeLimits95 = evidence.volume.Limits95();
  summary.volumeP = evidence.volume.P();
  const Interval z = evidence.riskCorrelation.Limits95();
  summary.riskCorrelation = InverseFisher(evidence.riskCorrelation.Mean());
  summary.riskCorrelationLimits95 = {InverseFisher(z.lower), InverseFisher(z.upper)};
  summary.tauWithoutFlagged = evidence.tauWithoutFlagged / n;
  summary.flaggedPerStudy = evidence.flagged / n;
  return summary;
}

std::vector<double> CentredByCases(std::span<const double> values,
                                   std::span<const HospitalOutcomes> hospitals) {
  double sum = 0;
  double cases = 0;
  for (std::size_t h = 0; h < hospitals.size(); ++h) {
    const double n = hospitals[h].curve->Patients();
    if (n > 0) {
      sum += n * values[h];
      cases += n;
    }
  }
  std::vector<double> centred(values.size());
  for (std::size_t h = 0; h < hospitals.size(); ++h) {
    centred[h] = hospitals[h].curve->Patients() > 0 ? values[h] - sum / cases : 0;
  }
  return centred;
}

HyperPosterior AddEffects(EffectEvidence& evidence, std::span<const HospitalOutcomes> hospitals,
                          const TauGrid& grid, const EffectParameters& start, MeanModel meanModel,
                          std::span<const double> logCases, std::span<const double> meanLogOdds) {
  const EffectFit fit = FitEffects(hospitals, start, meanModel);
  const EffectFit none = FitMeans(hospitals, {fit.at.mu, fit.at.gamma, 0}, meanModel);
  HyperPosterior posterior = MakeHyperPosterior(hospitals, grid, fit, meanModel);
  evidence.studies += 1;
  evidence.tau += fit.at.tau;
  evidence.tauSquares += fit.at.tau * fit.at.tau;
  evidence.tauTest.Add(fit, none, posterior, meanModel);
  for (std::size_t j = 0; j < kTauNodes; ++j) {
    evidence.tauMass[j] += posterior.slices[j].mass;
  }
  double mean[2] = {};
  double square[2] = {};
  for (const HyperPoint& point : posterior.points) {
    const double values[2] = {point.at.mu - fit.at.mu, point.at.gamma - fit.at.gamma};
    for (const int k : {0, 1}) {
      mean[k] += point.weight * values[k];
      square[k] += point.weight * values[k] * values[k];
    }
  }
  evidence.mu.Add(fit.at.mu + mean[0], square[0] - mean[0] * mean[0]);
  if (meanModel == MeanModel::kByCovariate) {
    evidence.gamma.Add(fit.at.gamma + mean[1], square[1] - mean[1] * mean[1]);
  }
  AddMiddleTwoThirds(evidence, hospitals, fit.at);

  const auto fitSlope = [&](std::span<const HospitalOutcomes> changed) {
    return FitEffects(changed, {fit.at.mu, 0, fit.at.tau}, MeanModel::kByCovariate);
  };
  const std::vector<HospitalOutcomes> byVolume = WithCovariate(hospitals, logCases);
  if (HasSlope(byVolume)) {
    const EffectFit slope = fitSlope(byVolume);
    evidence.volume.Add(slope.at.gamma, slope.variance[1]);
  }
  const std::vector<HospitalOutcomes> byRisk = WithCovariate(hospitals, meanLogOdds);
  if (HasSlope(byRisk)) {
    AddCorrelation(evidence.riskCorrelation, byRisk, fitSlope(byRisk));
  }
  return posterior;
}

void AddTauWithoutFlagged(EffectEvidence& evidence, std::span<const HospitalOutcomes> hospitals,
                          std::span<const double> aboveOne, const EffectFit& fit,
                          MeanModel meanModel) {
  constexpr double kOutside = 0.001;
  std::vector<HospitalOutcomes> inside;
  for (std::size_t h = 0; h < hospitals.size(); ++h) {
    const bool isOutside = aboveOne[h] < kOutside || aboveOne[h] > 1 - kOutside;
    evidence.flagged += isOutside ? 1 : 0;
    if (!isOutside) {
      inside.push_back(hospitals[h]);
    }
  }
  if (inside.size() == hospitals.size()) {
    evidence.tauWithoutFlagged += fit.at.tau;
  } else if (HasEffectModel(inside)) {
    evidence.tauWithoutFlagged += FitEffects(inside, fit.at, meanModel).at.tau;
  }
}

}  // namespace Hovar
