#include "ranks_and_digits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

#include "raw_array.h"

namespace Hovar::Floor {

namespace {

constexpr int kDigitBits = 11;
constexpr std::size_t kDigits = std::size_t{1} << kDigitBits;
using DigitCounts = std::array<std::uint32_t, kDigits>;

/// A prediction with its record's response. A number that is not below 0 sorts as its bits do; the
/// free sign bit makes room for the response.
std::uint64_t KeyOf(double prediction, double response) noexcept {
  return std::bit_cast<std::uint64_t>(prediction) << 1 | (response != 0 ? 1 : 0);
}

/// Cuts the range of the predictions into kDigits^2 equal steps. A larger prediction never has a
/// lower step.
class Steps {
 public:
  explicit Steps(std::span<const double> predictions) noexcept {
    std::array<double, 16> low{};
    std::array<double, 16> high{};
    low.fill(predictions[0]);
    high.fill(predictions[0]);
    std::size_t i = 0;
    for (; i + low.size() <= predictions.size(); i += low.size()) {
      for (std::size_t lane = 0; lane < low.size(); ++lane) {
        const double value = predictions[i + lane];
        low[lane] = value < low[lane] ? value : low[lane];
        high[lane] = value > high[lane] ? value : high[lane];
      }
    }
    for (; i < predictions.size(); ++i) {
      low[0] = std::min(low[0], predictions[i]);
      high[0] = std::max(high[0], predictions[i]);
    }
    lowest_ = *std::min_element(low.begin(), low.end());
    const double range = *std::max_element(high.begin(), high.end()) - lowest_;
    scale_ = range > 0 ? (kDigits * kDigits - 1) / range : 0;
  }

  std::uint32_t Of(double prediction) const noexcept {
    return static_cast<std::uint32_t>((prediction - lowest_) * scale_);
  }
  std::uint32_t Of(std::uint64_t key) const noexcept { return Of(std::bit_cast<double>(key >> 1)); }

 private:
  double lowest_ = 0;
  double scale_ = 0;
};

void TurnIntoPlaces(DigitCounts& counts) noexcept {
  std::uint32_t next = 0;
  for (std::uint32_t& entry : counts) {
    next += std::exchange(entry, next);
  }
}

/// Sorts keys of which few neighbours stand the wrong way round.
void InsertInOrder(std::uint64_t* keys, std::size_t count) noexcept {
  for (std::size_t i = 1; i < count; ++i) {
    const std::uint64_t key = keys[i];
    std::size_t place = i;
    while (place > 0 && keys[place - 1] > key) {
      keys[place] = keys[place - 1];
      --place;
    }
    keys[place] = key;
  }
}

/// The keys in ascending order: sorted by step with two digits, the lower one first, and then,
/// within the few that share a step, by insertion. Slow, not wrong, where most predictions fall
/// into few steps without being equal.
RawArray<std::uint64_t> SortedKeys(std::span<const double> predictions,
                                   std::span<const double> responses) {
  const std::size_t count = predictions.size();
  RawArray<std::uint64_t> byLower(count);
  RawArray<std::uint64_t> keys(count);
  static DigitCounts lower;
  static DigitCounts upper;
  lower.fill(0);
  upper.fill(0);
  const Steps steps(predictions);
  for (const double prediction : predictions) {
    const std::uint32_t step = steps.Of(prediction);
    ++lower[step % kDigits];
    ++upper[step / kDigits];
  }
  TurnIntoPlaces(lower);
  TurnIntoPlaces(upper);
  for (std::size_t i = 0; i < count; ++i) {
    byLower[lower[steps.Of(predictions[i]) % kDigits]++] = KeyOf(predictions[i], responses[i]);
  }
  for (std::size_t i = 0; i < count; ++i) {
    keys[upper[steps.Of(byLower[i]) / kDigits]++] = byLower[i];
  }
  InsertInOrder(keys.begin(), count);
  return keys;
}

constexpr std::array<char, 4000> ThreeDigitNumbers() {
  std::array<char, 4000> text{};
  for (std::size_t i = 0; i < 1000; ++i) {
    text[4 * i] = static_cast<char>('0' + i / 100);
    text[4 * i + 1] = static_cast<char>('0' + i / 10 % 10);
    text[4 * i + 2] = static_cast<char>('0' + i % 10);
  }
  return text;
}

constexpr std::array<char, 4000> kThreeDigits = ThreeDigitNumbers();

// 10^5 / 10^e for a number with the decimal exponent e, from 5 down to -5. All are exact.
constexpr std::array<double, 11> kScale = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};

}  // namespace

double Concordance(std::span<const double> predictions, std::span<const double> responses) {
  const std::size_t count = predictions.size();
  const RawArray<std::uint64_t> sorted = SortedKeys(predictions, responses);
  std::uint64_t score = 0;
  std::uint64_t othersBelow = 0;
  std::uint64_t events = 0;
  for (std::size_t i = 0; i < count;) {
    const std::uint64_t key = sorted[i] >> 1;
    std::uint64_t tiedEvents = 0;
    std::uint64_t tied = 0;
    for (; i < count && sorted[i] >> 1 == key; ++i, ++tied) {
      tiedEvents += sorted[i] & 1;
    }
    score += tiedEvents * (2 * othersBelow + (tied - tiedEvents));
    othersBelow += tied - tiedEvents;
    events += tiedEvents;
  }
  return static_cast<double>(score) /
         (static_cast<double>(othersBelow) * static_cast<double>(events) * 2.0);
}

char* WriteSixDigits(char* place, double value) noexcept {
  const auto fallBack = [&] {
    return std::to_chars(place, place + 32, value, std::chars_format::general, 6).ptr;
  };
  if (!(value >= 1e-5 && value < 1e6)) {
    return fallBack();
  }
  // The decimal exponent, from the binary one and, where that leaves two, from a comparison.
  int exponent =
      ((static_cast<int>(std::bit_cast<std::uint64_t>(value) >> 52) - 1023) * 1233) >> 12;
  double scaled = value * kScale[static_cast<std::size_t>(5 - exponent)];
  if (scaled >= 1e6) {
    ++exponent;
  }
  const double scale = kScale[static_cast<std::size_t>(5 - exponent)];
  scaled = value * scale;
  const double error = std::fma(value, scale, -scaled);
  double rounded = std::nearbyint(scaled);
  const double rest = (scaled - rounded) + error;
  if (std::fabs(std::fabs(rest) - 0.5) < 1e-9) {
    return fallBack();
  }
  if (rest > 0.5) {
    rounded += 1;
  } else if (rest < -0.5) {
    rounded -= 1;
  }
  auto digits = static_cast<std::uint32_t>(rounded);
  if (digits >= 1000000) {
    digits /= 10;
    ++exponent;
  }
  if (digits < 100000 || exponent > 5 || exponent < -4) {
    return fallBack();  // exponents with an "e"
  }
  char six[8];
  const std::size_t firstThree = digits / 1000;
  const std::size_t lastThree = digits % 1000;
  std::memcpy(six, &kThreeDigits[4 * firstThree], 4);
  std::memcpy(six + 3, &kThreeDigits[4 * lastThree], 4);
  int significant = 6;
  while (significant > 1 && six[significant - 1] == '0') {
    --significant;
  }
  if (exponent < 0) {
    constexpr char kZeros[6] = {'0', '.', '0', '0', '0', '0'};
    std::memcpy(place, kZeros, sizeof kZeros);
    place += 1 - exponent;
    std::memcpy(place, six, 6);
    return place + significant;
  }
  const int whole = exponent + 1;
  std::memcpy(place, six, 6);
  if (significant <= whole) {
    return place + whole;
  }
  std::memmove(place + whole + 1, six + whole, static_cast<std::size_t>(6 - whole));
  place[whole] = '.';
  return place + significant + 1;
}

}  // namespace Hovar::Floor
