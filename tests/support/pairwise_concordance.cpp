#include "support/pairwise_concordance.h"

namespace Testing {

std::int64_t PairwiseScore(const std::vector<double>& events, const std::vector<double>& others) {
  std::int64_t score = 0;
  for (const double event : events) {
    for (const double other : others) {
      score += event > other ? 2 : event == other ? 1 : 0;
    }
  }
  return score;
}

double PairwiseStatistic(const std::vector<double>& events, const std::vector<double>& others) {
  const double pairs =
      static_cast<double>(others.size()) * static_cast<double>(events.size()) * 2.0;
  return pairs > 0 ? static_cast<double>(PairwiseScore(events, others)) / pairs : -1.0;
}

}  // namespace Testing
