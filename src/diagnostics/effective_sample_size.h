#pragma once

// How many independent draws several chains are worth: the number of draws, divided by the
// integrated autocorrelation time.
//
// The correlations of all chains are combined, and cut off where the sums of neighbouring pairs,
// made to fall, are no longer positive (the initial monotone sequence). Draws that alternate can be
// worth more than independent ones; N of them count for N log10(N) at most.
//
// Sources: C. J. Geyer, Practical Markov chain Monte Carlo, Statistical Science 7 (1992), pages
// 473-483; A. Vehtari and others, Bayesian Analysis 16 (2021), pages 667-718 (convergence.h has the
// whole reference), for the combination of chains and the tails.

#include "diagnostics/draws.h"

namespace Hovar {

/// The autocovariances of at least two draws at the lags 0, 1, ..., each divided by the number of
/// draws; all 0 when the draws are equal.
Draws Autocovariances(const Draws& draws);

/// The effective sample size of the mean of at least two chains, which are usually halves of chains.
/// Result: not a number for fewer than 3 draws per chain, or where AreDegenerate.
double EffectiveSampleSize(const Chains& chains);

/// The smaller of the effective sample sizes of the 5 % and the 95 % quantile: those of the
/// indicators of the draws that are not above it, in halves of the chains, at least one.
/// Result: not a number where either is none.
double TailEffectiveSampleSize(const Chains& chains);

}  // namespace Hovar
