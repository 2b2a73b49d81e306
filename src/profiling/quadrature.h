#pragma once

// Gauss-Hermite quadrature for a standard normal variable: sum w_k f(x_k) is the expectation of f
// for every polynomial f of a degree below 2 n. The nodes are the roots of the Hermite polynomial
// He_n.
//
// Source: M. Abramowitz, I. A. Stegun, Handbook of Mathematical Functions (1964), 25.4.46, with
// the variable divided by sqrt(2).

#include <array>
#include <cstddef>
#include <span>

namespace Hovar {

/// Fills nodes, ascending, and weights of the rule with as many nodes, 1 to 32. `scaledWeights` are
/// w_k e^(x_k^2 / 2), which an adaptive rule needs.
void MakeGaussHermite(std::span<double> nodes, std::span<double> weights,
                      std::span<double> scaledWeights) noexcept;

template <std::size_t kSize>
struct GaussHermite {
  std::array<double, kSize> nodes;
  std::array<double, kSize> weights;
  std::array<double, kSize> scaledWeights;

  GaussHermite() noexcept { MakeGaussHermite(nodes, weights, scaledWeights); }

  /// The rule, made at the first use.
  static const GaussHermite& Rule() noexcept {
    static const GaussHermite rule;
    return rule;
  }
};

}  // namespace Hovar
