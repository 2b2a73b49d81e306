#pragma once

// What completed studies say of the distribution of the hospitals' effects, summed.

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "profiling/hyper_grid.h"
#include "profiling/pooling.h"

namespace Hovar {

struct EffectEvidence {
  double studies = 0;  // to which the model could be fitted
  PooledEstimate mu;   // posterior mean and variance
  PooledEstimate gamma;
  double tau = 0;  // sum of the maximum likelihood estimates
  double tauSquares = 0;
  std::array<double, kTauNodes> tauMass{};
  TauTest tauTest;
  /// The slope of log cases, whether or not the model has it.
  PooledEstimate volume;
  /// Fisher's z of the correlation of a hospital's effect with the mean log-odds of its patients.
  PooledEstimate riskCorrelation;
  /// Of studies in which some hospital was outside with a probability of 0.999.
  double tauWithoutFlagged = 0;
  double flagged = 0;
  /// Ratios of all patients' events in hospitals at the ends of the middle two thirds.
  double middleLower = 0;
  double middleUpper = 0;

  void Add(const EffectEvidence& other) noexcept;
};

struct EffectSummary {
  bool hasModel = false;  // in at least one study; otherwise nothing below is a number
  double mu = 0;          // log-odds
  Interval muLimits95;
  double gamma = 0;  // of the model by volume; 0 without it
  Interval gammaLimits95;
  double tau = 0;  // log-odds, mean of the maximum likelihood estimates
  Interval tauLimits95;
  double tauError = 0;       // Monte Carlo standard error of tau
  double tauP = 1;           // of tau = 0
  Interval middleTwoThirds;  // ratios between which two hospitals in three lie
  double volumeSlope = 0;    // log-odds for e times as many cases
  Interval volumeLimits95;
  double volumeP = 1;
  double riskCorrelation = 0;
  Interval riskCorrelationLimits95;
  double tauWithoutFlagged = 0;
  double flaggedPerStudy = 0;
};

EffectSummary SummariseEffects(const EffectEvidence& evidence, const TauGrid& grid);

/// Fits the model to one study and adds what it says. `logCases` and `meanLogOdds` have one number
/// per hospital; both are used less their case-weighted means. Returns the posterior distribution of mu,
/// gamma and tau. `hospitals` have log cases as covariate with MeanModel::kByCovariate, otherwise 0.
/// Requires HasEffectModel.
/// Errors: std::bad_alloc.
HyperPosterior AddEffects(EffectEvidence& evidence, std::span<const HospitalOutcomes> hospitals,
                          const TauGrid& grid, const EffectParameters& start, MeanModel meanModel,
                          std::span<const double> logCases, std::span<const double> meanLogOdds);

/// Adds tau of the hospitals that are not outside in this study, of which `fit` is that of all: whose probability to exceed 1 is
/// between 0.001 and 0.999.
void AddTauWithoutFlagged(EffectEvidence& evidence, std::span<const HospitalOutcomes> hospitals,
                          std::span<const double> aboveOne, const EffectFit& fit,
                          MeanModel meanModel);

/// Values less their case-weighted mean; 0 for a hospital without cases.
std::vector<double> CentredByCases(std::span<const double> values,
                                   std::span<const HospitalOutcomes> hospitals);

}  // namespace Hovar
