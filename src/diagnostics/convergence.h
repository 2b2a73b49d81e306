#pragma once

// Have several chains of one quantity converged to the same distribution, and how many independent
// draws are they worth?
//
// Each chain is split into halves, so that a chain that drifts disagrees with itself. The draws are
// replaced by the normal scores of their ranks in all chains together, which makes the answers
// exist for any distribution. With n draws in each of m halves, W the mean of the halves' variances
// and B n times the variance of their means,
//
//     R-hat = sqrt((B / W + n - 1) / n).
//
// It is taken of the scores, and again of the scores of the distances from the median, which shows
// halves of different spread; the larger one counts. The effective sample size divides the number
// of draws by the integrated autocorrelation time, with the correlations of all halves combined and
// cut off where the sums of neighbouring pairs, made to fall, are no longer positive (C. J. Geyer,
// Statistical Science 7, 1992, pages 473-483). In the bulk it is that of the scores; in the tails
// the smaller one of the indicators of the draws below the 5 % and the 95 % quantile.
//
// Source: A. Vehtari, A. Gelman, D. Simpson, B. Carpenter, P.-C. Buerkner, Rank-normalization,
// folding, and localization: an improved R-hat for assessing convergence of MCMC, Bayesian Analysis
// 16 (2021), pages 667-718. It recommends to use draws only with R-hat < 1.01 and, with four
// chains, both sample sizes above 400. The results are those of R's package posterior,
// except that an infinite draw leaves nothing to judge.

#include <span>
#include <vector>

namespace Hovar {

inline constexpr double kLargestRhat = 1.01;
inline constexpr double kSmallestSampleSize = 400;

/// NaN stands for what cannot be told: fewer draws than needed, a draw that is not finite, or draws
/// that are all the same.
struct Convergence {
  double rhat = 0;
  double bulkSampleSize = 0;
  double tailSampleSize = 0;

  /// True when all three are numbers.
  bool IsKnown() const noexcept;
  /// True when all three meet the thresholds.
  bool IsGood() const noexcept;
};

/// Judges the draws of one quantity: one chain each, all of the same length.
Convergence JudgeConvergence(const std::vector<std::vector<double>>& chains);

/// The standard normal quantile of 0 < p < 1, to about 16 digits.
/// Source: M. J. Wichura, Algorithm AS 241, Applied Statistics 37 (1988), pages 477-484 (PPND16).
double NormalQuantile(double p) noexcept;

}  // namespace Hovar
