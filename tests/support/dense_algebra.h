#pragma once

// Slow linear algebra by definition, for comparison: long doubles in nested vectors, nothing shared
// with the code under test.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "linalg/matrix.h"
#include "linalg/symmetric_matrix.h"
#include "linalg/vector.h"

namespace Testing {

using DenseVector = std::vector<long double>;
using DenseMatrix = std::vector<DenseVector>;

inline DenseMatrix DenseZero(std::size_t rows, std::size_t columns) {
  return DenseMatrix(rows, DenseVector(columns));
}

inline DenseMatrix DenseIdentity(std::size_t order) {
  DenseMatrix result = DenseZero(order, order);
  for (std::size_t i = 0; i < order; ++i) {
    result[i][i] = 1;
  }
  return result;
}

inline DenseVector ToDense(const Vell::Vector& vector) { return {vector.begin(), vector.end()}; }

inline DenseMatrix ToDense(const Vell::Matrix& matrix) {
  DenseMatrix result;
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    const auto row = matrix.Row(i);
    result.emplace_back(row.begin(), row.end());
  }
  return result;
}

/// A packed factor: zeros above the diagonal.
inline DenseMatrix ToDenseLower(const Vell::SymmetricMatrix& packed) {
  const auto order = static_cast<std::size_t>(packed.Order());
  DenseMatrix result = DenseZero(order, order);
  for (std::int32_t i = 0; i < packed.Order(); ++i) {
    for (std::int32_t j = 0; j <= i; ++j) {
      result[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = packed(i, j);
    }
  }
  return result;
}

/// A packed symmetric matrix.
inline DenseMatrix ToDenseSymmetric(const Vell::SymmetricMatrix& packed) {
  DenseMatrix result = ToDenseLower(packed);
  for (std::size_t i = 0; i < result.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      result[j][i] = result[i][j];
    }
  }
  return result;
}

inline DenseMatrix Transposed(const DenseMatrix& a) {
  DenseMatrix result = DenseZero(a.empty() ? 0 : a[0].size(), a.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = 0; j < a[i].size(); ++j) {
      result[j][i] = a[i][j];
    }
  }
  return result;
}

inline DenseVector Product(const DenseMatrix& a, const DenseVector& x) {
  DenseVector result;
  for (const DenseVector& row : a) {
    long double sum = 0;
    for (std::size_t j = 0; j < x.size(); ++j) {
      sum += row[j] * x[j];
    }
    result.push_back(sum);
  }
  return result;
}

inline DenseMatrix Product(const DenseMatrix& a, const DenseMatrix& b) {
  DenseMatrix result;
  const DenseMatrix columns = Transposed(b);
  for (const DenseVector& row : a) {
    result.push_back(Product(columns, row));
  }
  return result;
}

/// The absolute values of all elements.
inline DenseMatrix Absolute(DenseMatrix a) {
  for (DenseVector& row : a) {
    for (long double& cell : row) {
      cell = std::fabs(cell);
    }
  }
  return a;
}

/// The largest absolute difference of two elements in the same place; infinite when one is NaN.
inline long double MaximumDifference(const DenseVector& a, const DenseVector& b) {
  long double result = a.size() == b.size() ? 0 : HUGE_VALL;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const long double difference = std::fabs(a[i] - b[i]);
    result = std::isnan(difference) ? HUGE_VALL : std::max(result, difference);
  }
  return result;
}

inline long double MaximumDifference(const DenseMatrix& a, const DenseMatrix& b) {
  long double result = a.size() == b.size() ? 0 : HUGE_VALL;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    result = std::max(result, MaximumDifference(a[i], b[i]));
  }
  return result;
}

/// X with A * X = B by Gauss-Jordan elimination with row exchanges; A is regular.
inline DenseMatrix SolveDense(DenseMatrix a, DenseMatrix b) {
  const std::size_t order = a.size();
  for (std::size_t s = 0; s < order; ++s) {
    std::size_t pivot = s;
    for (std::size_t i = s + 1; i < order; ++i) {
      pivot = std::fabs(a[i][s]) > std::fabs(a[pivot][s]) ? i : pivot;
    }
    std::swap(a[s], a[pivot]);
    std::swap(b[s], b[pivot]);
    for (std::size_t i = 0; i < order; ++i) {
      const long double factor = i == s ? 0 : a[i][s] / a[s][s];
      for (std::size_t j = 0; j < order; ++j) {
        a[i][j] -= factor * a[s][j];
      }
      for (std::size_t j = 0; j < b[i].size(); ++j) {
        b[i][j] -= factor * b[s][j];
      }
    }
  }
  for (std::size_t i = 0; i < order; ++i) {
    for (long double& cell : b[i]) {
      cell /= a[i][i];
    }
  }
  return b;
}

/// The exact rank of a small matrix of small integers, by elimination without fractions: a row is
/// multiplied by the pivot instead of divided by it.
inline std::int32_t IntegerRank(const Vell::Matrix& matrix) {
  std::vector<std::vector<std::int64_t>> rows;
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    std::vector<std::int64_t>& row = rows.emplace_back();
    for (const double cell : matrix.Row(i)) {
      row.push_back(static_cast<std::int64_t>(cell));
    }
  }
  std::size_t rank = 0;
  for (std::size_t column = 0; column < static_cast<std::size_t>(matrix.Columns()); ++column) {
    const auto pivot = std::find_if(rows.begin() + static_cast<std::ptrdiff_t>(rank), rows.end(),
                                    [&](const auto& row) { return row[column] != 0; });
    if (pivot == rows.end()) {
      continue;
    }
    std::iter_swap(rows.begin() + static_cast<std::ptrdiff_t>(rank), pivot);
    for (std::size_t i = rank + 1; i < rows.size(); ++i) {
      const std::int64_t factor = rows[i][column];
      for (std::size_t j = 0; j < rows[i].size(); ++j) {
        rows[i][j] = rows[i][j] * rows[rank][column] - rows[rank][j] * factor;
      }
    }
    ++rank;
  }
  return static_cast<std::int32_t>(rank);
}

}  // namespace Testing
