#include "random_source.h"

#include <cassert>
#include <cmath>
#include <limits>

namespace Hovar::Simulate {
namespace {

// Mixes seed and purpose so that neighbouring values give unrelated engines: the increment and the
// output function of SplitMix64 (G. L. Steele, D. Lea, C. H. Flood, OOPSLA 2014).
std::uint64_t MixSeed(std::uint64_t seed, Purpose purpose) {
  std::uint64_t word = seed + static_cast<std::uint64_t>(purpose) * 0x9E3779B97F4A7C15ULL;
  word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9ULL;
  word = (word ^ (word >> 27)) * 0x94D049BB133111EBULL;
  return word ^ (word >> 31);
}

}  // namespace

std::uint64_t Threshold(double probability) {
  if (!(probability > 0.0)) {
    return 0;
  }
  if (probability >= 1.0) {
    return std::numeric_limits<std::uint64_t>::max();
  }
  return static_cast<std::uint64_t>(std::ldexp(probability, 64));
}

RandomSource::RandomSource(std::uint64_t seed, Purpose purpose) : engine_(MixSeed(seed, purpose)) {}

std::uint64_t RandomSource::Below(std::uint64_t count) {
  assert(count > 0);
  // 2^64 mod count, in 64 bits: as many of the lowest words are surplus.
  const std::uint64_t surplus = (0 - count) % count;
  std::uint64_t word = Word();
  while (word < surplus) {
    word = Word();
  }
  return word % count;
}

double RandomSource::Uniform(double low, double high) {
  const double unit = std::ldexp(static_cast<double>(Word() >> 11), -53);
  return low + (high - low) * unit;
}

double RandomSource::Normal() {
  while (true) {
    const double u = Uniform(-1.0, 1.0);
    const double v = Uniform(-1.0, 1.0);
    const double s = u * u + v * v;
    if (s > 0.0 && s < 1.0) {
      return u * std::sqrt(-2.0 * std::log(s) / s);
    }
  }
}

}  // namespace Hovar::Simulate
