#include "linalg/svd.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "foundation/exceptions/exceptions.h"
#include "linalg/bidiagonalisation.h"
#include "messages/error_texts.h"

namespace Vell {
namespace {

constexpr int kMaxIterations = 30;

/// sqrt(a^2 + b^2) without overflow in between.
double Hypotenuse(double a, double b) noexcept {
  const double x = std::fabs(a);
  const double y = std::fabs(b);
  if (x > y) {
    const double ratio = y / x;
    return x * std::sqrt(1 + ratio * ratio);
  }
  if (y == 0) {
    return 0;
  }
  const double ratio = x / y;
  return y * std::sqrt(1 + ratio * ratio);
}

/// Turns columns a and b of a matrix by the angle with cosine c and sine s.
void RotateColumns(Matrix& matrix, std::int32_t a, std::int32_t b, double c, double s) noexcept {
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    const double x = matrix(i, a);
    const double z = matrix(i, b);
    matrix(i, a) = x * c + z * s;
    matrix(i, b) = z * c - x * s;
  }
}

/// The QR steps of one decomposition, on a bidiagonal form and its factors.
class Diagonalisation {
 public:
  Diagonalisation(Matrix& u, Vector& w, Matrix& v, Vector& superdiagonal)
      : n_(u.Columns()), u_(u), w_(w), v_(v), superdiagonal_(superdiagonal) {
    for (std::int32_t i = 0; i < n_; ++i) {
      norm_ = std::max(norm_, std::fabs(w_[i]) + std::fabs(superdiagonal_[i]));
    }
  }

  void Run() {
    for (std::int32_t k = n_ - 1; k >= 0; --k) {
      Diagonalise(k);
    }
  }

 private:
  bool IsNegligible(double x) const noexcept { return std::fabs(x) + norm_ == norm_; }

  /// Brings singular value k to convergence, given that those after it have converged.
  void Diagonalise(std::int32_t k) {
    for (int iteration = 0;; ++iteration) {
      const std::int32_t l = Split(k);
      if (l == k) {
        if (w_[k] < 0) {
          w_[k] = -w_[k];
          for (std::int32_t i = 0; i < n_; ++i) {
            v_(i, k) = -v_(i, k);
          }
        }
        return;
      }
      if (iteration == kMaxIterations) {
        throw Exceptions::NumericException(Messages::kErrors.tooManyIterations);
      }
      StepQr(l, k);
    }
  }

  /// The start of the block that ends at k and has no negligible superdiagonal element. Where a
  /// diagonal element is negligible, the superdiagonal element after it is rotated away.
  std::int32_t Split(std::int32_t k) {
    for (std::int32_t l = k; l > 0; --l) {
      if (IsNegligible(superdiagonal_[l])) {
        return l;
      }
      if (IsNegligible(w_[l - 1])) {
        CancelSuperdiagonal(l, k);
        return l;
      }
    }
    return 0;  // there is no superdiagonal element before the first column
  }

  void CancelSuperdiagonal(std::int32_t l, std::int32_t k) {
    double c = 0;
    double s = 1;
    for (std::int32_t i = l; i <= k; ++i) {
      const double f = s * superdiagonal_[i];
      superdiagonal_[i] *= c;
      if (IsNegligible(f)) {
        return;
      }
      const double g = w_[i];
      const double h = Hypotenuse(f, g);
      w_[i] = h;
      c = g / h;
      s = -f / h;
      RotateColumns(u_, l - 1, i, c, s);
    }
  }

  /// One implicit QR step on the block l..k, with the shift from its bottom 2 x 2 minor.
  void StepQr(std::int32_t l, std::int32_t k) {
    double x = w_[l];
    double y = w_[k - 1];
    double z = w_[k];
    double g = superdiagonal_[k - 1];
    double h = superdiagonal_[k];
    double f = ((y - z) * (y + z) + (g - h) * (g + h)) / (2 * h * y);
    g = Hypotenuse(f, 1);
    f = ((x - z) * (x + z) + h * (y / (f + WithSignOf(g, f)) - h)) / x;
    double c = 1;
    double s = 1;
    for (std::int32_t j = l; j < k; ++j) {
      const std::int32_t i = j + 1;
      g = superdiagonal_[i];
      y = w_[i];
      h = s * g;
      g = c * g;
      z = Hypotenuse(f, h);
      superdiagonal_[j] = z;
      c = f / z;
      s = h / z;
      f = x * c + g * s;
      g = g * c - x * s;
      h = y * s;
      y *= c;
      RotateColumns(v_, j, i, c, s);
      z = Hypotenuse(f, h);
      w_[j] = z;
      if (z != 0) {  // otherwise the rotation is arbitrary
        c = f / z;
        s = h / z;
      }
      f = c * g + s * y;
      x = c * y - s * g;
      RotateColumns(u_, j, i, c, s);
    }
    superdiagonal_[l] = 0;
    superdiagonal_[k] = f;
    w_[k] = x;
  }

  std::int32_t n_;
  Matrix& u_;
  Vector& w_;
  Matrix& v_;
  Vector& superdiagonal_;  // element i stands between the diagonal elements i - 1 and i
  double norm_ = 0;        // of the bidiagonal form: the largest sum of a column
};

/// The exponent e for which the largest absolute entry lies in [2^(e-1), 2^e); 0 for a matrix that
/// is zero or not finite.
int LargestExponent(const Matrix& a) noexcept {
  double largest = 0;
  for (std::int32_t i = 0; i < a.Rows(); ++i) {
    for (const double cell : a.Row(i)) {
      largest = std::max(largest, std::fabs(cell));
    }
  }
  int exponent = 0;
  if (std::isfinite(largest)) {
    std::frexp(largest, &exponent);
  }
  return exponent;
}

void MultiplyByPowerOfTwo(std::span<double> values, int exponent) noexcept {
  for (double& value : values) {
    value = std::ldexp(value, exponent);
  }
}

}  // namespace

std::int32_t SvdResult::Rank() const noexcept {
  return static_cast<std::int32_t>(
      std::count_if(w.begin(), w.end(), [this](double value) { return value > threshold; }));
}

void Decompose(SvdResult& result, const Matrix& a) {
  result.u = a;
  result.w.Resize(a.Columns());
  result.v = Matrix(a.Columns(), a.Columns());
  // The shift of a QR step multiplies two elements of the bidiagonal form. They are brought near 1,
  // so that this neither over- nor underflows; a power of two changes nothing but the exponents.
  const int exponent = LargestExponent(a);
  for (std::int32_t i = 0; i < a.Rows(); ++i) {
    MultiplyByPowerOfTwo(result.u.Row(i), -exponent);
  }
  Vector superdiagonal(a.Columns());
  Bidiagonalise(result.u, result.w, superdiagonal, result.v);
  Diagonalisation(result.u, result.w, result.v, superdiagonal).Run();
  MultiplyByPowerOfTwo(result.w.Span(), exponent);
  result.smallestValue = Minimum(result.w);
  if (result.smallestValue < 0) {
    throw Exceptions::NumericException(Messages::kErrors.negativeSingularValues);
  }
  result.largestValue = Maximum(result.w);
  result.threshold = result.largestValue * result.tolerance;
}

}  // namespace Vell
