#pragma once

// The draws of one quantity in one chain or in several, and the sums of them on which the measures
// of convergence rest. Draws are held in standard containers, as all of this folder is: it works
// for the tools, which read chains from files, and not within a run. Nothing here raises an error
// of its own or keeps its arguments; running out of memory is std::bad_alloc.

#include <cstddef>
#include <limits>
#include <vector>

namespace Hovar {

/// Draws of one chain, in their order.
using Draws = std::vector<double>;
/// Chains of the same length.
using Chains = std::vector<Draws>;

/// The value of a measure that the draws do not determine.
inline constexpr double kNotAvailable = std::numeric_limits<double>::quiet_NaN();

/// The mean of at least one draw.
double Mean(const Draws& draws);

/// The variance of n >= 2 draws, with the divisor n - 1; NaN for one draw.
double Variance(const Draws& draws);

/// The mean of each chain; none is empty.
Draws ChainMeans(const Chains& chains);

/// The draws of all chains, one chain after the other.
Draws Pooled(const Chains& chains);

/// The quantile of at least one draw, in ascending order, at 0 <= probability <= 1, by linear
/// interpolation.
/// Source: R. J. Hyndman, Y. Fan, The American Statistician 50 (1996), pages 361-365 (type 7).
double Quantile(const Draws& ascending, double probability);

/// The halves of each chain, the first one of a chain before its second; of an odd number of draws
/// the middle one is left out.
Chains SplitIntoHalves(const Chains& chains);

/// True when the draws determine no measure: one is not finite, or all are equal, which they count
/// as when they lie within 2.2e-16 of each other. The chains hold at least one draw.
bool AreDegenerate(const Chains& chains);

}  // namespace Hovar
