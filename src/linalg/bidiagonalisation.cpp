#include "linalg/bidiagonalisation.h"

#include <algorithm>
#include <cmath>

namespace Vell {
namespace {

/// The reflection that turns a vector into a multiple of its first element: the scale by which the
/// vector was divided (0 for the zero vector, which needs no reflection), the element that is left,
/// in the same scale, and the divisor for applying it.
struct Reflection {
  double scale = 0;
  double g = 0;
  double h = 0;
};

/// Turns the elements `first` to below `end` of a vector, which `at` gives by reference, into the
/// scaled vector of their reflection.
template <typename At>
Reflection MakeReflection(std::int32_t first, std::int32_t end, At at) {
  Reflection reflection;
  for (std::int32_t k = first; k < end; ++k) {
    reflection.scale += std::fabs(at(k));
  }
  if (reflection.scale == 0) {
    return reflection;
  }
  double s = 0;
  for (std::int32_t k = first; k < end; ++k) {
    at(k) /= reflection.scale;
    s += at(k) * at(k);
  }
  const double f = at(first);
  reflection.g = -WithSignOf(std::sqrt(s), f);
  reflection.h = f * reflection.g - s;
  at(first) = f - reflection.g;
  return reflection;
}

class Bidiagonalisation {
 public:
  Bidiagonalisation(Matrix& u, Vector& diagonal, Vector& superdiagonal, Matrix& v)
      : m_(u.Rows()), n_(u.Columns()), u_(u), w_(diagonal), superdiagonal_(superdiagonal), v_(v) {}

  void Run() {
    Reflect();
    AccumulateRight();
    AccumulateLeft();
  }

 private:
  /// Reflections from the left zero column i below the diagonal, those from the right row i beyond
  /// the superdiagonal. The reflection vectors stay in u for the accumulations.
  void Reflect() {
    double previous = 0;
    for (std::int32_t i = 0; i < n_; ++i) {
      superdiagonal_[i] = previous;
      w_[i] = i < m_ ? ReflectColumn(i) : 0;
      previous = i < m_ && i != n_ - 1 ? ReflectRow(i) : 0;
    }
  }

  double ReflectColumn(std::int32_t i) {
    const auto [scale, g, h] =
        MakeReflection(i, m_, [&](std::int32_t k) -> double& { return u_(k, i); });
    if (scale == 0) {
      return 0;
    }
    for (std::int32_t j = i + 1; j < n_; ++j) {
      double product = 0;
      for (std::int32_t k = i; k < m_; ++k) {
        product += u_(k, i) * u_(k, j);
      }
      const double factor = product / h;
      for (std::int32_t k = i; k < m_; ++k) {
        u_(k, j) += factor * u_(k, i);
      }
    }
    for (std::int32_t k = i; k < m_; ++k) {
      u_(k, i) *= scale;
    }
    return scale * g;
  }

  double ReflectRow(std::int32_t i) {
    const std::int32_t first = i + 1;
    const auto [scale, g, h] =
        MakeReflection(first, n_, [&](std::int32_t k) -> double& { return u_(i, k); });
    if (scale == 0) {
      return 0;
    }
    for (std::int32_t j = first; j < m_; ++j) {
      double product = 0;
      for (std::int32_t k = first; k < n_; ++k) {
        product += u_(j, k) * u_(i, k);
      }
      for (std::int32_t k = first; k < n_; ++k) {
        u_(j, k) += product * (u_(i, k) / h);
      }
    }
    for (std::int32_t k = first; k < n_; ++k) {
      u_(i, k) *= scale;
    }
    return scale * g;
  }

  void AccumulateRight() {
    for (std::int32_t i = n_ - 1; i >= 0; --i) {
      const std::int32_t first = i + 1;
      if (first < n_) {
        if (superdiagonal_[first] != 0) {
          AccumulateRowReflection(i);
        }
        for (std::int32_t j = first; j < n_; ++j) {
          v_(i, j) = v_(j, i) = 0;
        }
      }
      v_(i, i) = 1;
    }
  }

  /// Applies the reflection that zeroed row i to the columns of v after it.
  void AccumulateRowReflection(std::int32_t i) {
    const std::int32_t first = i + 1;
    for (std::int32_t j = first; j < n_; ++j) {
      // Two divisions, lest the product of the divisors underflow.
      v_(j, i) = u_(i, j) / u_(i, first) / superdiagonal_[first];
    }
    for (std::int32_t j = first; j < n_; ++j) {
      double product = 0;
      for (std::int32_t k = first; k < n_; ++k) {
        product += u_(i, k) * v_(k, j);
      }
      for (std::int32_t k = first; k < n_; ++k) {
        v_(k, j) += product * v_(k, i);
      }
    }
  }

  void AccumulateLeft() {
    for (std::int32_t i = std::min(m_, n_) - 1; i >= 0; --i) {
      const std::int32_t first = i + 1;
      for (std::int32_t j = first; j < n_; ++j) {
        u_(i, j) = 0;
      }
      if (w_[i] == 0) {
        for (std::int32_t k = i; k < m_; ++k) {
          u_(k, i) = 0;
        }
      } else {
        const double inverse = 1 / w_[i];
        for (std::int32_t j = first; j < n_; ++j) {
          double product = 0;
          for (std::int32_t k = first; k < m_; ++k) {
            product += u_(k, i) * u_(k, j);
          }
          const double factor = product / u_(i, i) * inverse;
          for (std::int32_t k = i; k < m_; ++k) {
            u_(k, j) += factor * u_(k, i);
          }
        }
        for (std::int32_t k = i; k < m_; ++k) {
          u_(k, i) *= inverse;
        }
      }
      u_(i, i) += 1;
    }
  }

  std::int32_t m_;
  std::int32_t n_;
  Matrix& u_;
  Vector& w_;
  Vector& superdiagonal_;
  Matrix& v_;
};

}  // namespace

void Bidiagonalise(Matrix& u, Vector& diagonal, Vector& superdiagonal, Matrix& v) {
  Bidiagonalisation(u, diagonal, superdiagonal, v).Run();
}

}  // namespace Vell
