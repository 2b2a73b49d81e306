#pragma once

// The C-statistic by its definition, pair by pair: the reference for the counted form.

#include <cstdint>
#include <vector>

namespace Testing {

/// 2 for every pair of an event and another record in which the event's prediction is larger, 1 for
/// every pair of equal ones. Cost: the product of both counts.
std::int64_t PairwiseScore(const std::vector<double>& events, const std::vector<double>& others);

/// The score over twice the number of pairs, or -1.0 when there are none.
double PairwiseStatistic(const std::vector<double>& events, const std::vector<double>& others);

}  // namespace Testing
