#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Testing {

/// A source of random test inputs that gives the same numbers for a seed on every platform. Tests
/// put Text() into their trace, so that a failure names the seed.
class SeededRandom {
 public:
  explicit SeededRandom(std::uint64_t seed) : seed_(seed), engine_(seed) {}

  std::string Text() const { return "seed " + std::to_string(seed_); }

  std::uint64_t Word() { return engine_(); }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(engine_() >> 56); }
  bool Bit() { return engine_() >> 63 != 0; }

  /// True with this probability.
  bool Chance(double probability) { return Real(0, 1) < probability; }

  /// A number of [low, high).
  double Real(double low, double high) {
    return low + (high - low) * static_cast<double>(engine_() >> 11) * 0x1p-53;
  }

  /// A number of low .. high, both included.
  std::int32_t Integer(std::int32_t low, std::int32_t high) {
    const auto count = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
    return static_cast<std::int32_t>(low + static_cast<std::int64_t>(engine_() % count));
  }

  /// `count` different numbers of 0 .. limit - 1 in random order.
  std::vector<std::int32_t> Choose(std::int32_t count, std::int32_t limit) {
    std::vector<std::int32_t> numbers(static_cast<std::size_t>(limit));
    for (std::int32_t i = 0; i < limit; ++i) {
      numbers[static_cast<std::size_t>(i)] = i;
    }
    for (std::int32_t i = 0; i < count; ++i) {
      std::swap(numbers[static_cast<std::size_t>(i)],
                numbers[static_cast<std::size_t>(Integer(i, limit - 1))]);
    }
    numbers.resize(static_cast<std::size_t>(count));
    return numbers;
  }

 private:
  std::uint64_t seed_;
  std::mt19937_64 engine_;
};

}  // namespace Testing
