#include "normal_solve.h"

#include <cmath>

namespace Hovar::Floor {

void Factor(SquareMatrix& a, std::size_t p) noexcept {
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = a[i][j];
      for (std::size_t k = 0; k < j; ++k) {
        sum -= a[i][k] * a[j][k];
      }
      a[i][j] = i == j ? std::sqrt(sum) : sum / a[j][j];
    }
  }
}

void Solve(Coefficients& b, const SquareMatrix& factor, std::size_t p) noexcept {
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      b[i] -= factor[i][k] * b[k];
    }
    b[i] /= factor[i][i];
  }
  for (std::size_t i = p; i-- > 0;) {
    b[i] /= factor[i][i];
    for (std::size_t k = 0; k < i; ++k) {
      b[k] -= factor[i][k] * b[i];
    }
  }
}

}  // namespace Hovar::Floor
