#pragma once

// Have several chains of one quantity converged to the same distribution?
//
// Each chain is split into halves, so that a chain that drifts disagrees with itself. The draws are
// replaced by the normal scores of their ranks in all chains together, so that the measures exist
// for any distribution. With n draws in each of m halves, W the mean of the halves' variances and B
// n times the variance of their means,
//
//     R-hat = sqrt((B / W + n - 1) / n).
//
// It is taken of the scores, and again of the scores of the distances from the median, which shows
// halves of different spread; the larger one counts. The effective sample size in the bulk is that
// of the scores; effective_sample_size.h has that in the tails.
//
// Source: A. Vehtari, A. Gelman, D. Simpson, B. Carpenter, P.-C. Buerkner, Rank-normalization,
// folding, and localization: an improved R-hat for assessing convergence of MCMC, Bayesian Analysis
// 16 (2021), pages 667-718. It recommends to use draws only with R-hat < 1.01 and, with four
// chains, both sample sizes above 400. The results are those of R's package posterior,
// except that an infinite draw leaves nothing to judge.

#include "diagnostics/draws.h"

namespace Hovar {

/// The thresholds that draws must meet to be used: the largest R-hat, which counts as good itself,
/// and the smallest effective sample size in the bulk and in the tails, whatever the number of
/// chains.
inline constexpr double kLargestRhat = 1.01;
inline constexpr double kSmallestSampleSize = 400;

/// The measures of one quantity; NaN where the draws do not determine it: there are too few, one is
/// not finite, or all are equal.
struct Convergence {
  double rhat = 0;
  double bulkSampleSize = 0;
  double tailSampleSize = 0;

  /// True when all three are numbers.
  bool IsKnown() const noexcept;
  /// True when all three meet the thresholds.
  bool IsGood() const noexcept;
};

/// R-hat of at least two chains, which are usually halves of chains, of at least 2 draws each.
/// Result: not a number where AreDegenerate.
double Rhat(const Chains& chains);

/// Judges the draws of one quantity: any number of chains, one included, all of one length. Fewer
/// than 4 draws a chain determine nothing. Cost: that of sorting all draws.
Convergence JudgeConvergence(const Chains& chains);

}  // namespace Hovar
