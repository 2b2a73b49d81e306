#include "prediction/c_statistic.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>

#include "foundation/exceptions/exceptions.h"

namespace Hovar {
namespace {

/// A number whose unsigned order is the order of the doubles: the sign bit is turned round, and all
/// others of a negative number too. Both zeros become one.
std::uint64_t SortKey(double value) noexcept {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  const std::uint64_t bits = std::bit_cast<std::uint64_t>(value + 0.0);
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

constexpr int kDigitBits = 11;
constexpr int kDigits = 6;  // 6 * 11 >= 64
constexpr std::size_t kBuckets = std::size_t{1} << kDigitBits;

std::size_t DigitOf(double value, int digit) noexcept {
  return SortKey(value) >> (digit * kDigitBits) & (kBuckets - 1);
}

using Histogram = std::array<std::uint32_t, kBuckets>;

/// Sorts numbers, none of them a NaN, ascending: a radix sort by the digits of their keys, least
/// significant first (D. E. Knuth, The Art of Computer Programming 3, 2nd ed. (1998), section
/// 5.2.5). A digit that all numbers share, as with probabilities the leading one, costs no pass.
/// `scratch` has room for as many.
void SortNumbers(std::span<double> numbers, std::span<double> scratch) noexcept {
  std::array<Histogram, kDigits> counts{};
  for (const double value : numbers) {
    for (int digit = 0; digit < kDigits; ++digit) {
      ++counts[static_cast<std::size_t>(digit)][DigitOf(value, digit)];
    }
  }
  std::span<double> from = numbers;
  std::span<double> to = scratch;
  for (int digit = 0; digit < kDigits; ++digit) {
    Histogram& place = counts[static_cast<std::size_t>(digit)];
    if (numbers.empty() || place[DigitOf(numbers[0], digit)] == numbers.size()) {
      continue;
    }
    std::exclusive_scan(place.begin(), place.end(), place.begin(), std::uint32_t{0});
    for (const double value : from) {
      to[place[DigitOf(value, digit)]++] = value;
    }
    std::swap(from, to);
  }
  if (from.data() != numbers.data()) {
    std::ranges::copy(from, numbers.begin());
  }
}

/// Sorts the numbers of a range, ascending, and returns them without the NaNs.
std::span<const double> SortWithoutNans(std::span<double> values,
                                        std::span<double> scratch) noexcept {
  const auto nans =
      std::partition(values.begin(), values.end(), [](double value) { return !std::isnan(value); });
  const std::span<double> numbers(values.begin(), nans);
  // Few numbers are sorted faster by comparing than by counting digits.
  constexpr std::size_t kFew = 2048;
  if (numbers.size() < kFew) {
    std::ranges::sort(numbers);
  } else {
    SortNumbers(numbers, scratch.first(numbers.size()));
  }
  return numbers;
}

}  // namespace

std::int64_t ConcordanceCounter::Score() noexcept {
  const std::span<double> all = predictions_.Span();
  const std::span<const double> events =
      SortWithoutNans(all.first(static_cast<std::size_t>(events_)), scratch_.Span());
  const std::span<const double> others =
      SortWithoutNans(all.last(static_cast<std::size_t>(others_)), scratch_.Span());
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
