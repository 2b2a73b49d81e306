#pragma once

// The two small kernels of the floor: a C-statistic by sorting and counting, and numbers as text.

#include <cstdint>
#include <span>

namespace Hovar::Floor {

/// How often, over all pairs of a record with response 1 and one with response 0, the prediction of
/// the former is larger, ties counting one half. Predictions are finite and not below 0.
double Concordance(std::span<const double> predictions, std::span<const double> responses);

/// Writes a number as "%g" does and returns the place after it. Exact: six digits come from one
/// scaling whose rounding error is known, and numbers outside 1e-5 .. 1e6 from std::to_chars.
char* WriteSixDigits(char* place, double value) noexcept;

}  // namespace Hovar::Floor
