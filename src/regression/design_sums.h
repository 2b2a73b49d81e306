#pragma once

// The sums over the set cells of a design of which every pass of a fit consists. Each runs record
// by record in the order of the data set, so every form gives the same bits.
//
// Shapes: with p columns of the rows, crossproducts have the order p, sums by column and beta p
// entries. `block` is below rows.BlockCount(); of the values of a block the first
// rows.BlockSize(block) are read. Nothing is kept of the arguments.

#include <array>
#include <cstdint>
#include <span>

#include "linalg/symmetric_matrix.h"
#include "linalg/vector.h"
#include "regression/fit_rows.h"

namespace Hovar {

/// Entry i belongs to the i-th record of a block.
using BlockValues = std::array<double, FitRows::kBlockSize>;

/// A square of sums of which only the lower triangle means anything. A row has room for a whole
/// number of groups of kGroup columns.
class TriangleSums {
 public:
  static constexpr std::int32_t kGroup = 8;

  TriangleSums() = default;
  /// Zero-filled; order >= 0.
  /// Errors: "Integer overflow" for 2^31 elements and more; "Out of memory".
  explicit TriangleSums(std::int32_t order);

  std::int32_t Order() const noexcept { return order_; }
  void SetToZero() noexcept;
  /// The elements (row, 0) .. (row, row), then those that mean nothing.
  double* Row(std::int32_t row) noexcept { return sums_.begin() + std::int64_t{row} * stride_; }

  /// Copies the triangle into a packed matrix, which must have the same order.
  void CopyTo(Vell::SymmetricMatrix& matrix) const noexcept;

 private:
  Vell::Vector sums_;
  std::int32_t order_ = 0;
  std::int32_t stride_ = 0;
};

/// Sets values[i] to the sum of beta over the set columns of the block's record i, in ascending
/// order (its log-odds), and the values after the block's records to 0.
void ComputeLinearPredictors(BlockValues& values, const FitRows& rows, std::int32_t block,
                             const Vell::Vector& beta) noexcept;

/// Adds to crossproducts(j, k) the weights of the block's records in which j and k <= j are set,
/// and to columnSums[j] the values of those in which j is set. `columnSums` may be empty.
void AddCrossproducts(TriangleSums& crossproducts, std::span<double> columnSums,
                      const FitRows& rows, std::int32_t block, const BlockValues& weights,
                      const BlockValues& values) noexcept;

/// As AddCrossproducts for a weight of 1/4 of every record and values of 1/2 and -1/2, which is
/// what coefficients of 0 give: the sums are counts, so they are exact in any order. `columnSums`
/// may be empty.
void AddCrossproductsOfQuarters(TriangleSums& crossproducts, std::span<double> columnSums,
                                const FitRows& rows, std::int32_t block,
                                const BlockValues& values) noexcept;

/// Records of a block: those at the places from `begin` to below `end`.
struct BlockPart {
  std::int32_t block;
  std::int32_t begin;
  std::int32_t end;
};

/// What is summed by column: sums[j] += values[i] wherever j is set.
struct ColumnSums {
  std::span<double> sums;  // one element per column
  const BlockValues& values;
};

/// Takes two sums over the same records.
void AddColumnSums(const ColumnSums& first, const ColumnSums& second, const FitRows& rows,
                   const BlockPart& part) noexcept;

}  // namespace Hovar
