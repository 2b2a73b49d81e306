#pragma once

// Seeds for several chains of one definition.
//
// The random generator has two words, each a multiply-with-carry generator: a step takes the word x
// to a (x mod 2^16) + (x div 2^16), which is a x modulo m = a 2^16 - 1. m is prime, and the words
// of each of the two generators run in circles of (m - 1) / 2 steps, a prime number too. So the
// state after k steps is known without making them: a^k x modulo m.
//
// Chain 1 has the definition's own seed. Chain K begins (K - 1) strides further on the circle of
// each word. A stride is the golden section of the circle, (m - 1) / 2 times 0.618..., rounded: its
// multiples fall into the largest gaps, so that any number of chains are spread nearly evenly and
// stay apart for as long as possible. With 4 chains the first word, which makes the high bits of
// every draw, repeats in another chain after 177 million draws at the earliest.

#include <cstdint>

namespace Vell {

/// The two words that a seed gives the random generator, which takes 0 for 1.
struct SeedWords {
  std::uint32_t z = 1;
  std::uint32_t w = 1;

  bool operator==(const SeedWords&) const = default;
};

/// True when the generator with this multiplier a comes to a standstill from this word. A step
/// takes a word x to a x modulo m = a 2^16 - 1, so m is a word that every step leaves as it is, and
/// a multiple of m comes to it with the first step. (0 would stay too, but the generator takes it
/// for 1.) Of a seed these are
///
///   first word   2422800383                           36969 2^16 - 1
///   second word  1179647999, 2359295998, 3538943997   18000 2^16 - 1, and twice and three times it
///
/// With such a first word a random number keeps its high 16 bits, which are all ones: the polar
/// method looks for a point within the unit circle for ever, and uniform numbers lie within 2^-16
/// of 1. With such a second word it keeps its low 16 bits: uniform numbers have 2^16 values.
bool StandsStill(std::uint32_t word, std::uint32_t multiplier) noexcept;

/// The seed of a chain, counted from 1 (0 counts as 1), of a definition whose seed has these words:
/// for chain 1 the words themselves. Cost: about 64 multiplications a word. Neither of them may be
/// one at which the generator stands still: all chains would have it.
SeedWords SeedOfChain(const SeedWords& definition, std::uint32_t chain) noexcept;

/// A word of the generator with this multiplier after so many steps. A word above m, which only a
/// seed can be, counts as the one on the circle that its steps lead to.
std::uint32_t WordAfterSteps(std::uint32_t word, std::uint32_t multiplier,
                             std::uint64_t steps) noexcept;

/// Steps between the beginnings of two chains that follow each other, for the first and the second
/// word.
inline constexpr std::uint64_t kStrideZ = 748'686'492;
inline constexpr std::uint64_t kStrideW = 364'531'279;

}  // namespace Vell
