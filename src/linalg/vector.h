#pragma once

#include <cstdint>

#include "foundation/growable_array.h"

namespace Vell {

using Vector = GrowableArray<double>;
using IndexVector = GrowableArray<std::int32_t>;

/// a[i] += b[i] for all i; both must have the same size.
void AddInPlace(Vector& a, const Vector& b);

/// Smallest and largest element; 0.0 for an empty vector. A NaN behind the first element is never
/// chosen.
double Minimum(const Vector& vector);
double Maximum(const Vector& vector);

/// The largest absolute value, starting from 0.0: a NaN is never larger, so it counts as 0.
double MaximumNorm(const Vector& vector);

}  // namespace Vell
