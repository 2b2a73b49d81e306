#include "linalg/cholesky.h"

#include <cassert>
#include <cmath>

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Vell {

SymmetricMatrix Cholesky(const SymmetricMatrix& a) {
  SymmetricMatrix factor(a);
  const std::int32_t order = factor.Order();
  for (std::int32_t j = 0; j < order; ++j) {
    const double* const pivotRow = factor.Row(j);
    for (std::int32_t i = j; i < order; ++i) {
      double* const row = factor.Row(i);
      double s = row[j];
      for (std::int32_t k = 0; k < j; ++k) {
        s -= row[k] * pivotRow[k];
      }
      if (i > j) {
        row[j] = s / pivotRow[j];
        continue;
      }
      if (s <= 0) {
        throw Exceptions::NumericException(Messages::kErrors.notPositive);
      }
      row[j] = std::sqrt(s);
    }
  }
  return factor;
}

namespace {

/// x := the solution of L * x = x, where the elements before `first` are 0.
void SubstituteForward(const SymmetricMatrix& factor, Vector& x, std::int32_t first) {
  for (std::int32_t i = first; i < factor.Order(); ++i) {
    const double* const row = factor.Row(i);
    double s = x[i];
    for (std::int32_t k = first; k < i; ++k) {
      s -= row[k] * x[k];
    }
    x[i] = s / row[i];
  }
}

/// x := the solution of L^T * x = x, down to element `first`.
void SubstituteBack(const SymmetricMatrix& factor, Vector& x, std::int32_t first) {
  for (std::int32_t i = factor.Order() - 1; i >= first; --i) {
    double s = x[i];
    for (std::int32_t k = i + 1; k < factor.Order(); ++k) {
      s -= factor(k, i) * x[k];
    }
    x[i] = s / factor(i, i);
  }
}

}  // namespace

Vector CholeskySolve(const SymmetricMatrix& factor, const Vector& b) {
  assert(b.Size() == factor.Order());
  Vector x(b);
  SubstituteForward(factor, x, 0);
  SubstituteBack(factor, x, 0);
  return x;
}

Vector SolveTransposed(const SymmetricMatrix& factor, const Vector& b) {
  assert(b.Size() == factor.Order());
  Vector x(b);
  SubstituteBack(factor, x, 0);
  return x;
}

SymmetricMatrix CholeskyInverse(const SymmetricMatrix& factor) {
  const std::int32_t order = factor.Order();
  SymmetricMatrix inverse(order);
  Vector column(order);
  for (std::int32_t j = 0; j < order; ++j) {
    for (std::int32_t i = j; i < order; ++i) {
      column[i] = i == j ? 1.0 : 0.0;
    }
    SubstituteForward(factor, column, j);
    SubstituteBack(factor, column, j);
    for (std::int32_t i = j; i < order; ++i) {
      inverse(i, j) = column[i];
    }
  }
  return inverse;
}

}  // namespace Vell
