#pragma once

// Draws are replaced by the normal scores of their ranks, so that measures that rest on means and
// variances exist for any distribution (A. Vehtari and others, Bayesian Analysis 16, 2021, pages
// 667-718; convergence.h has the whole reference).

#include "diagnostics/draws.h"

namespace Hovar {

/// Each draw as the standard normal quantile of (r - 3/8) / (n + 1/4), where r is its rank among
/// the n draws of all chains, from 1; equal draws share their mean rank. No draw is NaN. The result
/// has the shape of the chains. Cost: that of sorting n draws.
/// Source: G. Blom, Statistical Estimates and Transformed Beta-Variables, 1958.
Chains NormalScores(const Chains& chains);

/// The distances of the draws from the median of all chains, at least one draw: chains of different
/// spread differ in them. Of an even number of draws the median is the mean of the middle two.
Chains DistancesFromMedian(const Chains& chains);

}  // namespace Hovar
