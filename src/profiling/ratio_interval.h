#pragma once

// A hospital's ratio of observed to expected events, O/E, with limits and a p-value that hold the
// chance of the outcomes and what is not known of missing P and X and of the coefficients.
//
// Estimated is theta, the ratio of the hospital's true risk to the reference's, for its own
// patients: under a shift eta of the log-odds of all of them theta(eta) = sum K'(eta) / sum E, with
// sums over the completed studies. The tails
//
//     U(eta) = P(at least O events | eta),     L(eta) = P(at most O events | eta)
//
// of the studies are averaged, and the limits are the theta of the shifts at which U, or L, is
// alpha / 2. From five expected events up half of P(S = O) is left out of both (mid-p): limits that
// hold exactly are too wide by the discreteness of the counts (G. Berry, P. Armitage, Mid-P
// confidence intervals: a brief review, The Statistician 44, 1995, pages 417-423). Below, the limits
// are exact in each study.
//
// Averaged tails are the limits of a mixture: what a study would say of theta, were it the
// true one, is averaged over the studies as posterior distributions are. Where studies agree this
// is the interval of any of them; where they differ it is wider.

#include <cstdint>
#include <vector>

#include "profiling/eta_grid.h"
#include "profiling/ratio_tails.h"

namespace Hovar {

/// From so many expected events up limits are mid-p ones.
inline constexpr double kExpectedForMidP = 5;

/// What the completed studies say of one hospital, summed. Of two groups of studies Add gives what
/// both say.
struct RatioEvidence {
  double studies = 0;
  double cases = 0;
  double observed = 0;
  double observedSquares = 0;
  double expected = 0;
  double expectedSquares = 0;
  double studiesWithoutEvents = 0;
  double studiesWithoutSurvivors = 0;  // every case had the event
  ReferenceTails reference{0, 0, 0};
  TailTable tails;    // sums over studies
  EtaValues first{};  // of K', K'' and K'''
  EtaValues second{};
  EtaValues third{};

  /// Adds one study.
  void Add(const CumulantTable& cumulants, const TailTable& studyTails,
           const ReferenceTails& studyReference, double studyCases, double studyObserved,
           double studyExpected) noexcept;
  void Add(const RatioEvidence& other) noexcept;
};

struct Interval {
  double lower = 0;
  double upper = 0;
};

/// Means and standard deviations over the studies; the latter are 0 for one study. What does not
/// exist (a ratio to nothing expected) is not a number.
struct RatioSummary {
  double cases = 0;
  double observed = 0;
  double observedSd = 0;
  double expected = 0;
  double expectedSd = 0;
  double ratio = 0;
  Interval limits95;
  Interval limits998;
  double p = 1;  // two-sided, of theta = 1
};

/// Requires evidence of at least one study.
RatioSummary SummariseRatio(const RatioEvidence& evidence, const EtaGrid& grid);

/// The limits of theta with alpha / 2 = tail on either side, 0 < tail < 1/2. A hospital without an
/// event has a lower limit of 0, one without a survivor the upper limit n / E.
Interval RatioLimits(const RatioEvidence& evidence, const EtaGrid& grid, double tail);

/// The false discovery rates q of the p-values: the smallest rates at which each would be among the
/// discoveries. A p that is not a number has none and does not count.
/// Source: Y. Benjamini, Y. Hochberg, Journal of the Royal Statistical Society B 57 (1995), pages
/// 289-300.
std::vector<double> FalseDiscoveryRates(const std::vector<double>& p);

}  // namespace Hovar
