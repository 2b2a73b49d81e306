#pragma once

// Symmetric matrices and lower triangular factors: the information of a fit, its Cholesky factor
// and the covariances. Half of a matrix is stored, so a design of 65535 columns still has one.

#include <cassert>
#include <cstdint>

#include "linalg/matrix.h"
#include "linalg/vector.h"

namespace Vell {

/// Where row i of a packed lower triangle begins: i * (i + 1) / 2. From row 46341 on the product
/// needs 64 bits before it is halved; the start itself fits up to row 65535.
constexpr std::int32_t PackedRowStart(std::int32_t row) noexcept {
  return static_cast<std::int32_t>(std::int64_t{row} * (row + 1) / 2);
}

/// Number of elements of a packed triangle of an order: order * (order + 1) / 2, for orders up to
/// 65535. Orders from 92682 on must be refused before: the product is formed in 32 bits, so it can
/// come out too small.
/// Errors: "Invalid argument" for a negative order; "Integer overflow" for 65536 to 92681.
std::int32_t PackedTriangleSize(std::int32_t order);

/// A symmetric matrix of which the lower triangle is stored by rows: element (i, j) with j <= i at
/// i * (i + 1) / 2 + j. The same layout holds a lower triangular factor, whose other elements are
/// 0.
class SymmetricMatrix {
 public:
  /// Order 0.
  SymmetricMatrix() = default;
  /// Zero-filled.
  /// Errors: as PackedTriangleSize; "Out of memory".
  explicit SymmetricMatrix(std::int32_t order);

  std::int32_t Order() const noexcept { return order_; }

  /// Element (row, column) with 0 <= column <= row < Order(); the mirrored one is not looked up.
  double& operator()(std::int32_t row, std::int32_t column) noexcept {
    assert(column <= row);
    return elements_[PackedRowStart(row) + column];
  }
  double operator()(std::int32_t row, std::int32_t column) const noexcept {
    assert(column <= row);
    return elements_[PackedRowStart(row) + column];
  }

  /// The elements (row, 0) .. (row, row), one after the other; valid as long as the matrix and not
  /// assigned to.
  double* Row(std::int32_t row) noexcept { return elements_.begin() + PackedRowStart(row); }
  const double* Row(std::int32_t row) const noexcept {
    return elements_.begin() + PackedRowStart(row);
  }

  /// All elements in their packed order.
  Vector& Elements() noexcept { return elements_; }
  const Vector& Elements() const noexcept { return elements_; }

 private:
  Vector elements_;
  std::int32_t order_ = 0;
};

/// The order x order matrix with both triangles filled. Its cells are counted in 32 bits, so the
/// order can be at most 46340.
/// Errors: "Invalid argument" for a higher order; "Out of memory".
Matrix ToFullMatrix(const SymmetricMatrix& packed);

}  // namespace Vell
