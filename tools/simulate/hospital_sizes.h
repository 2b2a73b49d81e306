/// How many records each hospital has.
#pragma once

#include <cstdint>
#include <vector>

#include "random_source.h"

namespace Hovar::Simulate {

/// Shares `records` among `hospitals` in proportion to lognormal weights, a few large hospitals
/// beside many small ones.
///
/// Shape: one size per hospital, in records, each at least 1; together they are `records` exactly.
/// Requires 1 <= hospitals <= records.
/// The weights are rounded to integers before the sharing, so that all that follows is exact.
std::vector<std::int32_t> DrawHospitalSizes(std::int32_t records, std::int32_t hospitals,
                                            RandomSource& random);

}  // namespace Hovar::Simulate
