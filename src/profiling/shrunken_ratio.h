#pragma once

// The shrunken ratio of a hospital, predicted over expected: predicted are the events of its
// patients under its own shift, expected those of the same patients in a hospital drawn from the
// distribution of all,
//
//     r = K'(eta) / mean over z of K'(mu + tau z),      eta = mu + gamma x + u,
//
// so that 1 is the average hospital whatever mu is. Its posterior distribution is that of eta given
// mu, gamma and tau, mixed over their posterior distribution and over the completed studies (A.
// Gelman and others, Bayesian Data Analysis, 3rd ed., 2013, chapter 18.2: draws of all imputations
// are one sample).
//
// Distribution functions are mixed at fixed values of log r, chosen in the first study so that they
// span what any of them can need; probabilities of passing 1 and the threshold have places of their
// own among them and are exact.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "profiling/hyper_grid.h"
#include "profiling/ratio_interval.h"
#include "profiling/shift_posterior.h"

namespace Hovar {

/// Values of log r, ascending.
inline constexpr std::size_t kRatioNodes = 64;
struct RatioGrid {
  std::array<double, kRatioNodes> node{};
  std::size_t one = 0;        // places of log 1,
  std::size_t threshold = 0;  // of the threshold
  std::size_t inverse = 0;    // and of 1 / threshold
};

/// What completed studies say of r, summed over those in which the hospital has cases.
struct ShrunkenEvidence {
  double studies = 0;
  double mean = 0;
  double meanSquares = 0;
  double aboveOneSquares = 0;
  std::array<double, kRatioNodes> distribution{};
  std::array<double, kRatioNodes> density{};  // by log r
  /// P(S > O) and P(S = O) of a hospital drawn from the distribution of all, and P(S < O).
  ReferenceTails predictive{0, 0, 0};

  void Add(const ShrunkenEvidence& other) noexcept;
};

struct ShrunkenSummary {
  double ratio = 0;  // posterior mean
  Interval limits95;
  double aboveOne = 0;
  double aboveThreshold = 0;
  double belowInverse = 0;
  double ratioError = 0;  // Monte Carlo standard errors, from the spread between studies
  double aboveOneError = 0;
  double predictiveP = 0;        // two-sided, differences between all hospitals allowed for
  bool isPredictedHigh = false;  // on which side that p lies
};

/// Everything about the shrunken ratio is not a number without a study with cases.
/// `midShare` is the part of P(S = O) that belongs to a tail.
ShrunkenSummary SummariseShrunken(const ShrunkenEvidence& evidence, const RatioGrid& grid,
                                  double midShare);

/// The values of log r for a hospital with cases. `uncertainty` widens the range, 1 or more, where
/// studies differ.
RatioGrid MakeRatioGrid(const HospitalOutcomes& outcomes, const HyperPosterior& posterior,
                        double threshold, double uncertainty) noexcept;

/// Values of log r from `first` to `last` at least, 1 and the threshold, above 1, and its inverse among them.
RatioGrid SpanRatioGrid(double first, double last, double threshold) noexcept;

/// A place in the joint draws: the draw belongs to this point of the posterior of mu, gamma and
/// tau.
struct EffectDraws {
  std::span<const std::uint32_t> pointOfDraw;  // ascending, one per draw
  std::span<const double> uniform;             // in (0, 1), one per draw
  std::span<double> effects;                   // filled with eta - mu, one per draw
};

/// The evidence of one study for a hospital with cases, and draws of its effect.
ShrunkenEvidence JudgeShrunken(const HospitalOutcomes& outcomes, const HyperPosterior& posterior,
                               const RatioGrid& grid, const EffectDraws& draws) noexcept;

/// The distribution of the shift of a hospital drawn from the distribution of all, mixed over what is
/// not known of mu and tau; never a hospital's own covariate.
class PredictiveDistribution {
 public:
  /// Errors: std::bad_alloc.
  explicit PredictiveDistribution(const HyperPosterior& posterior);

  double operator()(double eta) const noexcept;

 private:
  double first_ = 0;
  double width_ = 1;
  std::vector<double> values_;  // from first_ on, width_ apart
};

}  // namespace Hovar
