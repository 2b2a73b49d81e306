#include "prediction/c_statistic.h"

#include <algorithm>
#include <cmath>

#include "foundation/exceptions/exceptions.h"

namespace Hovar {
namespace {

/// Sorts the numbers of a range, ascending, and returns them without the NaNs.
std::span<double> SortNumbers(std::span<double> values) noexcept {
  const auto nans =
      std::partition(values.begin(), values.end(), [](double value) { return !std::isnan(value); });
  const std::span<double> numbers(values.begin(), nans);
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

}  // namespace

std::int64_t ConcordanceCounter::Score() noexcept {
  const std::span<double> all = predictions_.Span();
  const std::span<const double> events = SortNumbers(all.first(static_cast<std::size_t>(events_)));
  const std::span<const double> others = SortNumbers(all.last(static_cast<std::size_t>(others_)));
  std::int64_t score = 0;
  std::size_t below = 0;     // others with a smaller prediction than the current event's
  std::size_t notAbove = 0;  // others with a smaller or an equal one
  for (const double prediction : events) {
    while (below < others.size() && others[below] < prediction) {
      ++below;
    }
    notAbove = std::max(notAbove, below);
    while (notAbove < others.size() && others[notAbove] == prediction) {
      ++notAbove;
    }
    score += static_cast<std::int64_t>(below + notAbove);
  }
  return score;
}

double ConcordanceCounter::Statistic() noexcept {
  const double weightedPairs = static_cast<double>(others_) * static_cast<double>(events_) * 2.0;
  if (!(weightedPairs > 0)) {
    return -1.0;
  }
  return static_cast<double>(Score()) / weightedPairs;
}

void RequirePredictions(const Vell::Vector& predictions, std::int32_t records) {
  if (predictions.Size() < records) {
    throw Vell::Exceptions::InvalidArgumentException("Index out of range");
  }
}

}  // namespace Hovar
