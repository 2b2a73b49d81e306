#pragma once

// Cells of one bit: outcomes and the columns that hospitals record (Z), which are never missing.
// packed_matrix.h has what they share with ternary cells.

#include <cstdint>

#include "linalg/packed_matrix.h"

namespace Vell {

/// Bits, eight to a byte, 0 when sized. An index is from 0 to below Size(), which nothing checks.
class BitVector : public PackedVector<1> {
 public:
  using PackedVector::PackedVector;

  bool Get(std::int32_t index) const noexcept { return Bit(index, kFirst); }
  void Set(std::int32_t index, bool value) noexcept { SetBit(index, kFirst, value); }

 private:
  static constexpr std::uint32_t kFirst = 0x80;
};

/// A matrix of bits, 0 when made; rows and columns count from 0, which nothing checks. Its rows are
/// not aligned to bytes.
class BitMatrix : public PackedMatrix<BitVector> {
 public:
  using PackedMatrix::PackedMatrix;

  bool Get(std::int32_t row, std::int32_t column) const noexcept {
    return cells_.Get(IndexOf(row, column));
  }
  void Set(std::int32_t row, std::int32_t column, bool value) noexcept {
    cells_.Set(IndexOf(row, column), value);
  }
};

}  // namespace Vell
