#pragma once

// Vectors of numbers: what a fit solves for, a line of a matrix, a list of columns. The functions
// work element by element in ascending order, so equal input gives equal bits.

#include <cstdint>

#include "foundation/growable_array.h"

namespace Vell {

/// Doubles, zero when sized.
using Vector = GrowableArray<double>;
/// Indices or counts.
using IndexVector = GrowableArray<std::int32_t>;

/// a[i] += b[i] for all i; both must have the same size.
void AddInPlace(Vector& a, const Vector& b);

/// Smallest and largest element; 0.0 for an empty vector. A NaN after the first element is never
/// chosen; one that is the first stays the result.
double Minimum(const Vector& vector);
double Maximum(const Vector& vector);

/// The largest absolute value, starting from 0.0: a NaN is never larger, so it counts as 0.
double MaximumNorm(const Vector& vector);

}  // namespace Vell
