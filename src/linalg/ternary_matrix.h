#pragma once

// Cells that can be missing: present on admission (P) and the patient's conditions (X).
// packed_matrix.h has what they share with bits.

#include <cstdint>

#include "linalg/packed_matrix.h"

namespace Vell {

/// Cells that are 0, 1 or missing, four to a byte. A cell has a value bit and, above it, a missing
/// bit; they are independent, so a missing cell also carries a value: the one that was imputed
/// last. A new cell is 0 and not missing. Setting one bit leaves the other. An index is from 0 to
/// below Size(), which nothing checks.
class TernaryVector : public PackedVector<2> {
 public:
  using PackedVector::PackedVector;

  bool Value(std::int32_t index) const noexcept { return Bit(index, kValueBit); }
  bool IsMissing(std::int32_t index) const noexcept { return Bit(index, kMissingBit); }
  void SetValue(std::int32_t index, bool value) noexcept { SetBit(index, kValueBit, value); }
  void SetMissing(std::int32_t index, bool isMissing) noexcept {
    SetBit(index, kMissingBit, isMissing);
  }

 private:
  static constexpr std::uint32_t kValueBit = 0x40;
  static constexpr std::uint32_t kMissingBit = 0x80;
};

/// A matrix of such cells; rows and columns count from 0, which nothing checks. Its rows are not
/// aligned to bytes.
class TernaryMatrix : public PackedMatrix<TernaryVector> {
 public:
  using PackedMatrix::PackedMatrix;

  bool Value(std::int32_t row, std::int32_t column) const noexcept {
    return cells_.Value(IndexOf(row, column));
  }
  bool IsMissing(std::int32_t row, std::int32_t column) const noexcept {
    return cells_.IsMissing(IndexOf(row, column));
  }
  void SetValue(std::int32_t row, std::int32_t column, bool value) noexcept {
    cells_.SetValue(IndexOf(row, column), value);
  }
  void SetMissing(std::int32_t row, std::int32_t column, bool isMissing) noexcept {
    cells_.SetMissing(IndexOf(row, column), isMissing);
  }
};

}  // namespace Vell
