#pragma once

// Uniform numbers that depend on what they are for, not on what was drawn before: draw k of hospital
// h in study m is the same whichever process draws it.
//
// Source: the finaliser of SplitMix64 (G. L. Steele, D. Lea, C. H. Flood, Fast splittable
// pseudorandom number generators, OOPSLA 2014), applied to the seed and one number after the other.

#include <cstdint>

#include "foundation/random/chain_seeds.h"

namespace Hovar {

class CounterRandom {
 public:
  explicit CounterRandom(const Vell::SeedWords& seed) noexcept
      : state_(Mix((std::uint64_t{seed.z} << 32) | seed.w)) {}

  /// The numbers that belong to one more index.
  CounterRandom At(std::uint64_t index) const noexcept {
    CounterRandom next = *this;
    next.state_ = Mix(state_ ^ Mix(index + 1));
    return next;
  }

  /// A number in (0, 1).
  double Uniform() const noexcept { return (static_cast<double>(state_ >> 11) + 0.5) * 0x1p-53; }

 private:
  static constexpr std::uint64_t Mix(std::uint64_t x) noexcept {
    x += 0x9E3779B97F4A7C15;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
    return x ^ (x >> 31);
  }

  std::uint64_t state_;
};

}  // namespace Hovar
