#include "prediction/prediction_ranking.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numeric>
#include <span>

#include "foundation/exceptions/exceptions.h"

namespace Hovar {
namespace {

struct RankedPrediction {
  double prediction;
  std::uint32_t record;
};

bool IsBelow(const RankedPrediction& a, const RankedPrediction& b) noexcept {
  return a.prediction < b.prediction;
}

struct Range {
  double lowest = HUGE_VAL;
  double highest = -HUGE_VAL;
};

/// The range of the numbers, NaNs aside.
Range RangeOf(std::span<const double> numbers) noexcept {
  // Four ranges side by side, so that no comparison waits for the one before.
  std::array<Range, 4> ranges;
  std::size_t i = 0;
  for (; i + ranges.size() <= numbers.size(); i += ranges.size()) {
    for (std::size_t lane = 0; lane < ranges.size(); ++lane) {
      const double number = numbers[i + lane];
      ranges[lane].lowest = number < ranges[lane].lowest ? number : ranges[lane].lowest;
      ranges[lane].highest = number > ranges[lane].highest ? number : ranges[lane].highest;
    }
  }
  Range all;
  for (const Range& range : ranges) {
    all.lowest = std::min(all.lowest, range.lowest);
    all.highest = std::max(all.highest, range.highest);
  }
  for (; i < numbers.size(); ++i) {
    all.lowest = std::min(all.lowest, numbers[i]);
    all.highest = std::max(all.highest, numbers[i]);
  }
  return all;
}

/// Maps numbers of a range to steps of equal width, 0 to below `steps`, so that a larger number
/// never has a lower step. A range that is empty, infinite or too wide has one step.
class Steps {
 public:
  Steps(const Range& range, std::uint32_t steps) noexcept
      : lowest_(range.lowest), last_(steps - 1) {
    const double width = range.highest - range.lowest;
    if (std::isfinite(width) && std::isfinite(steps / width)) {
      stepsPerUnit_ = steps / width;
    }
  }

  bool AreOne() const noexcept { return stepsPerUnit_ == 0; }

  std::uint32_t Of(double number) const noexcept {
    return AreOne()
               ? 0
               : std::min(static_cast<std::uint32_t>((number - lowest_) * stepsPerUnit_), last_);
  }

 private:
  double lowest_;
  double stepsPerUnit_ = 0;
  std::uint32_t last_;
};

/// Turns counts into the places of the first element of each step.
template <typename Counts>
void TurnIntoPlaces(Counts& counts) noexcept {
  std::exclusive_scan(std::begin(counts), std::end(counts), std::begin(counts), std::uint32_t{0});
}

/// Sorts what fell into one step: by finer steps, of which each holds a few different numbers, and
/// then by insertion, which passes over equal ones. Where that takes too long, elements are
/// compared with each other.
class StepSorter {
 public:
  /// For steps of at most `most` elements.
  explicit StepSorter(std::int32_t most) : elements_(most), sorted_(most) {}

  void Begin() noexcept { size_ = 0; }
  void Add(const RankedPrediction& element) noexcept { elements_[size_++] = element; }

  std::span<const RankedPrediction> Sort() noexcept {
    const std::span<RankedPrediction> elements(elements_.begin(), static_cast<std::size_t>(size_));
    if (elements.size() >= kFewest && elements.size() <= kMost) {
      SpreadByFinerSteps(elements);
      const std::span<RankedPrediction> spread(sorted_.begin(), elements.size());
      if (!SortByInsertion(spread)) {
        std::sort(spread.begin(), spread.end(), IsBelow);
      }
      return spread;
    }
    // Equal predictions, which no step separates, are in order already.
    if (!std::is_sorted(elements.begin(), elements.end(), IsBelow)) {
      std::sort(elements.begin(), elements.end(), IsBelow);
    }
    return elements;
  }

 private:
  static constexpr std::size_t kFewest = 8;
  static constexpr std::size_t kFinerSteps = 4096;
  static constexpr std::size_t kMost = 8 * kFinerSteps;

  /// Copies the elements to sorted_, in the order of finer steps.
  void SpreadByFinerSteps(std::span<const RankedPrediction> elements) noexcept {
    Range range;
    for (const RankedPrediction& element : elements) {
      range.lowest = std::min(range.lowest, element.prediction);
      range.highest = std::max(range.highest, element.prediction);
    }
    const std::size_t count = std::min(std::bit_ceil(elements.size()), kFinerSteps);
    const Steps steps(range, static_cast<std::uint32_t>(count));
    std::array<std::uint32_t, kFinerSteps> room;
    const std::span<std::uint32_t> places = std::span(room).first(count);
    std::ranges::fill(places, 0U);
    for (const RankedPrediction& element : elements) {
      ++places[steps.Of(element.prediction)];
    }
    TurnIntoPlaces(places);
    for (const RankedPrediction& element : elements) {
      sorted_[static_cast<std::int32_t>(places[steps.Of(element.prediction)]++)] = element;
    }
  }

  /// False, with the elements in some other order, when it would take very many moves.
  static bool SortByInsertion(std::span<RankedPrediction> elements) noexcept {
    std::ptrdiff_t movesLeft = 16 * static_cast<std::ptrdiff_t>(elements.size());
    RankedPrediction* const begin = elements.data();
    for (RankedPrediction* next = begin + 1; next < begin + elements.size(); ++next) {
      const RankedPrediction element = *next;
      RankedPrediction* place = next;
      for (; place != begin && IsBelow(element, place[-1]); --place) {
        *place = place[-1];
      }
      *place = element;
      movesLeft -= next - place;
      if (movesLeft < 0) {
        return false;
      }
    }
    return true;
  }

  Vell::GrowableArray<RankedPrediction> elements_;
  Vell::GrowableArray<RankedPrediction> sorted_;
  std::int32_t size_ = 0;
};

}  // namespace

double Concordance::Statistic() const noexcept {
  const double weightedPairs = static_cast<double>(others) * static_cast<double>(events) * 2.0;
  return weightedPairs > 0 ? static_cast<double>(score) / weightedPairs : -1.0;
}

PredictionRanking::PredictionRanking(const Vell::Vector& predictions, std::int32_t records)
    : order_(records) {
  if (predictions.Size() < records) {
    throw Vell::Exceptions::InvalidArgumentException("Index out of range");
  }
  const std::span<const double> all(predictions.begin(), static_cast<std::size_t>(records));
  // Each prediction goes to its step; within a step the records keep their order. NaNs go to the
  // back.
  constexpr std::size_t kSteps = 2048;
  const Steps steps(RangeOf(all), kSteps);
  std::array<std::uint32_t, kSteps> places{};
  for (const double prediction : all) {
    if (!std::isnan(prediction)) {
      ++places[steps.Of(prediction)];
      ++numbers_;
    }
  }
  const std::uint32_t most = *std::max_element(places.begin(), places.end());
  TurnIntoPlaces(places);
  Vell::Vector values(numbers_);
  std::int32_t nanPlace = numbers_;
  for (std::int32_t i = 0; i < records; ++i) {
    if (std::isnan(predictions[i])) {
      order_[nanPlace++] = static_cast<Entry>(i);
      continue;
    }
    const auto place = static_cast<std::int32_t>(places[steps.Of(predictions[i])]++);
    values[place] = predictions[i];
    order_[place] = static_cast<Entry>(i);
  }

  StepSorter sorter(static_cast<std::int32_t>(most));
  std::int32_t begin = 0;
  for (const std::uint32_t placeOfEnd : places) {
    const auto end = static_cast<std::int32_t>(placeOfEnd);
    sorter.Begin();
    for (std::int32_t i = begin; i < end; ++i) {
      sorter.Add({values[i], order_[i]});
    }
    // Numbers of different steps are different.
    const RankedPrediction* last = nullptr;
    for (const RankedPrediction& element : sorter.Sort()) {
      const bool isTie = last != nullptr && last->prediction == element.prediction;
      order_[begin++] = element.record | (isTie ? kTie : 0);
      last = &element;
    }
  }
}

}  // namespace Hovar
