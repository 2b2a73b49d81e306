#include "profiling/quadrature.h"

#include <cmath>

#include "foundation/exponential.h"

namespace Hovar {
namespace {

/// Orthonormal Hermite polynomials of degree n and n - 1 at x, up to a common factor for all n:
/// h_(k+1) = (x h_k - sqrt(k) h_(k-1)) / sqrt(k + 1).
struct Polynomials {
  double last = 1;
  double previous = 0;

  Polynomials(std::size_t degree, double x) noexcept {
    for (std::size_t k = 0; k < degree; ++k) {
      const auto index = static_cast<double>(k);
      const double next = (x * last - std::sqrt(index) * previous) / std::sqrt(index + 1);
      previous = last;
      last = next;
    }
  }
};

/// The root between two points at which the polynomial has different signs.
double RootBetween(std::size_t degree, double left, double right) noexcept {
  const bool isNegativeLeft = Polynomials(degree, left).last < 0;
  constexpr int kHalvings = 60;
  for (int step = 0; step < kHalvings; ++step) {
    const double middle = (left + right) / 2;
    ((Polynomials(degree, middle).last < 0) == isNegativeLeft ? left : right) = middle;
  }
  return (left + right) / 2;
}

}  // namespace

void MakeGaussHermite(std::span<double> nodes, std::span<double> weights,
                      std::span<double> scaledWeights) noexcept {
  // The roots of one degree separate those of the next; all lie within 2 sqrt(n).
  const double bound = 2 * std::sqrt(static_cast<double>(nodes.size()));
  for (std::size_t degree = 1; degree <= nodes.size(); ++degree) {
    double left = -bound;
    for (std::size_t k = 0; k < degree; ++k) {
      const double right = k + 1 < degree ? nodes[k] : bound;
      nodes[k] = RootBetween(degree, left, right);
      left = right;
    }
  }
  const auto n = static_cast<double>(nodes.size());
  for (std::size_t k = 0; k < nodes.size(); ++k) {
    const double previous = Polynomials(nodes.size(), nodes[k]).previous;
    weights[k] = 1 / (n * previous * previous);
    scaledWeights[k] = weights[k] * Vell::Exp(nodes[k] * nodes[k] / 2);
  }
}

}  // namespace Hovar
