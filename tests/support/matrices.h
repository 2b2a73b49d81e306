#pragma once

// Builders of vectors and matrices for tests. Used by tests that link the linear algebra layer.

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

#include "linalg/matrix.h"
#include "linalg/symmetric_matrix.h"
#include "linalg/vector.h"
#include "support/seeded_random.h"

namespace Testing {

template <typename T>
Vell::GrowableArray<T> MakeArray(std::span<const T> elements) {
  Vell::GrowableArray<T> result(static_cast<std::int32_t>(elements.size()));
  std::ranges::copy(elements, result.begin());
  return result;
}

inline Vell::Vector MakeVector(const std::vector<double>& elements) {
  return MakeArray<double>(elements);
}

inline Vell::IndexVector MakeIndexVector(const std::vector<std::int32_t>& elements) {
  return MakeArray<std::int32_t>(elements);
}

/// The elements as a type that GoogleTest prints and compares.
template <typename T>
std::vector<T> Elements(const Vell::GrowableArray<T>& array) {
  return {array.begin(), array.end()};
}

template <typename T>
std::vector<T> Elements(std::span<const T> elements) {
  return {elements.begin(), elements.end()};
}

/// A matrix whose cells are listed by rows.
inline Vell::Matrix MakeMatrix(std::int32_t rows, std::int32_t columns,
                               const std::vector<double>& cells) {
  Vell::Matrix result(rows, columns);
  std::size_t next = 0;
  for (std::int32_t i = 0; i < rows; ++i) {
    for (double& cell : result.Row(i)) {
      cell = cells.at(next++);
    }
  }
  return result;
}

/// All cells by rows.
inline std::vector<double> Cells(const Vell::Matrix& matrix) {
  std::vector<double> result;
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    const std::span<const double> row = matrix.Row(i);
    result.insert(result.end(), row.begin(), row.end());
  }
  return result;
}

/// A packed matrix whose lower triangle is listed by rows.
inline Vell::SymmetricMatrix MakeSymmetric(std::int32_t order,
                                           const std::vector<double>& triangle) {
  Vell::SymmetricMatrix result(order);
  std::size_t next = 0;
  for (std::int32_t i = 0; i < order; ++i) {
    for (std::int32_t j = 0; j <= i; ++j) {
      result(i, j) = triangle.at(next++);
    }
  }
  return result;
}

/// A vector with elements of [-1, 1).
inline Vell::Vector RandomVector(SeededRandom& random, std::int32_t size) {
  Vell::Vector result(size);
  for (double& element : result) {
    element = random.Real(-1, 1);
  }
  return result;
}

/// A matrix with cells of [-1, 1).
inline Vell::Matrix RandomMatrix(SeededRandom& random, std::int32_t rows, std::int32_t columns) {
  Vell::Matrix result(rows, columns);
  for (std::int32_t i = 0; i < rows; ++i) {
    for (double& cell : result.Row(i)) {
      cell = random.Real(-1, 1);
    }
  }
  return result;
}

/// B * B^T + I with a random B: its eigenvalues are at least 1 and at most 1 + order^2.
inline Vell::SymmetricMatrix RandomPositiveDefinite(SeededRandom& random, std::int32_t order) {
  const Vell::Matrix b = RandomMatrix(random, order, order);
  Vell::SymmetricMatrix result(order);
  for (std::int32_t i = 0; i < order; ++i) {
    for (std::int32_t j = 0; j <= i; ++j) {
      double sum = i == j ? 1 : 0;
      for (std::int32_t k = 0; k < order; ++k) {
        sum += b(i, k) * b(j, k);
      }
      result(i, j) = sum;
    }
  }
  return result;
}

}  // namespace Testing
