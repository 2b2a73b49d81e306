/// Random numbers that are the same on every platform.
///
/// The words come from std::mt19937_64, whose every output the C++ standard fixes (M. Matsumoto, T.
/// Nishimura, "Mersenne Twister", ACM Transactions on Modeling and Computer Simulation 8(1), 1998).
/// The distributions of the standard library differ between implementations, so everything built on
/// the words is made here. Events are decided by comparing a word with an integer threshold: a
/// last-bit difference of a platform's exp or log moves a threshold by a few parts in 2^53, which
/// practically never changes a decision.
#pragma once

#include <cstdint>
#include <random>

namespace Hovar::Simulate {

/// The purposes that draw from sequences of their own, so that asking for one thing (more missing
/// cells, say) leaves everything else in the file as it was.
enum class Purpose : std::uint64_t {
  kVariables = 1,
  kHospitals = 2,
  kRecords = 3,
  kHiding = 4,
  kWarnings = 5
};

/// The threshold below which a random word lies with the given probability: probability * 2^64.
///
/// A probability of 0 or less (or NaN) gives 0, "never". 1 or more gives the largest word, which is
/// "always" but for one word in 2^64.
std::uint64_t Threshold(double probability);

/// One sequence of random numbers, determined by a seed and a purpose.
class RandomSource {
 public:
  RandomSource(std::uint64_t seed, Purpose purpose);

  /// 64 random bits.
  std::uint64_t Word() { return engine_(); }

  /// True with the probability that the threshold stands for. Takes one word in any case.
  bool Event(std::uint64_t threshold) { return Word() < threshold; }

  /// A uniform whole number in [0, count); count > 0. Words that would favour the smaller numbers
  /// are drawn again.
  std::uint64_t Below(std::uint64_t count);

  /// A uniform real number in [low, high) of 53 random bits.
  double Uniform(double low, double high);

  /// A standard normal number, between -13 and 13 as its uniform numbers have 53 bits.
  ///
  /// Polar method; of the pair that it gives only one is used, so that a draw leaves no state
  /// behind. Source: G. Marsaglia, T. A. Bray, SIAM Review 6(3), 1964.
  double Normal();

 private:
  std::mt19937_64 engine_;
};

}  // namespace Hovar::Simulate
