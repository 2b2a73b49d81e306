#pragma once

// The distribution of the number of events among patients of unequal risk, the Poisson-binomial
// distribution: the sum of independent indicators with the probabilities q_1, ..., q_n.
//
// Method: the generating function prod (1 - q_i + q_i s) is multiplied out. Factors are first
// multiplied one after the other into blocks of kBlock factors, then blocks of equal size with each
// other, so that n factors take some n log n steps where the spread grows as sqrt(n). All
// terms are positive and nothing cancels, so rounding leaves every term a relative error of at most
// about n 2^-52. Terms below kNegligible at either end of a product are dropped. What is dropped takes
// at most its own mass from any term of the result, and no more than n log2(n) terms are ever made:
// together below n log2(n) kNegligible, 3e-18 for ten million patients.
//
// Sources: Y. Hong, On computing the distribution function for the Poisson binomial distribution,
// Computational Statistics & Data Analysis 59 (2013), pages 41-51; W. Biscarri, S. D. Zhao, R. J.
// Brunner, A simple and fast method for computing the Poisson binomial distribution function,
// Computational Statistics & Data Analysis 122 (2018), pages 92-100, who multiply the blocks by
// Fourier transforms. Plain products of the short windows that matter here are as fast, and a
// Fourier transform would lose the digits of small terms.

#include <cstdint>
#include <span>
#include <vector>

namespace Hovar {

class PoissonBinomial {
 public:
  /// Terms below this at either end of a window are dropped.
  static constexpr double kNegligible = 1e-26;

  /// Computes the distribution of n indicators, 0 <= q <= 1. With n = 0 the sum is 0.
  /// Errors: std::bad_alloc.
  void Compute(std::span<const double> probabilities);

  /// P(S = k); 0 outside the window that was kept.
  double Mass(std::int64_t k) const noexcept {
    const std::int64_t place = k - First();
    return place < 0 || place >= static_cast<std::int64_t>(Masses().size())
               ? 0
               : Masses()[static_cast<std::size_t>(place)];
  }
  /// The smallest k that was kept, and the masses from there on, at least one.
  std::int64_t First() const noexcept { return stack_.front().first; }
  std::span<const double> Masses() const noexcept { return stack_.front().masses; }

 private:
  static constexpr std::size_t kBlock = 64;

  /// A product of factors: P(S = first + j) is masses[j].
  struct Window {
    std::int64_t first = 0;
    std::vector<double> masses;
    std::int32_t level = 0;  // 2^level blocks were multiplied
  };

  void PushBlock(std::span<const double> probabilities);
  void MultiplyTopTwo();
  Window& Push();
  static void DropNegligible(Window& window);

  std::vector<Window> stack_ = {Window{0, {1.0}, 0}};  // the first used_ count
  std::size_t used_ = 1;
  std::vector<double> scratch_;
};

}  // namespace Hovar
