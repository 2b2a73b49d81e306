#pragma once

#include <cstdint>

#include "foundation/growable_array.h"
#include "linalg/kernels/set_columns.h"
#include "linalg/vector.h"

namespace Vell {

/// Cells that are 0, 1 or missing, four to a byte, the first one in the most significant places. A
/// cell has a value bit and, above it, a missing bit; they are independent, so a missing cell also
/// carries a value: the one that was imputed last. Zero-filled when sized, with one spare byte.
/// Errors: "Invalid argument" for a negative size; "Out of memory".
class TernaryVector {
 public:
  TernaryVector() = default;
  explicit TernaryVector(std::int32_t size) { Resize(size); }

  /// Becomes `size` zeros that are not missing.
  void Resize(std::int32_t size);
  /// Changes the size and keeps the cells; new ones are zero where the vector only ever grew. The
  /// block stays where there is room, and at least doubles where there is none.
  void ChangeSize(std::int32_t size);

  std::int32_t Size() const noexcept { return size_; }
  std::int32_t ByteCount() const noexcept { return bytes_.Size(); }

  bool Value(std::int32_t index) const noexcept { return Bit(index, kValueBit); }
  bool IsMissing(std::int32_t index) const noexcept { return Bit(index, kMissingBit); }
  void SetValue(std::int32_t index, bool value) noexcept { SetBit(index, kValueBit, value); }
  void SetMissing(std::int32_t index, bool isMissing) noexcept {
    SetBit(index, kMissingBit, isMissing);
  }

  std::span<std::uint8_t> Bytes() noexcept { return bytes_.Span(); }
  std::span<const std::uint8_t> Bytes() const noexcept { return bytes_.Span(); }

 private:
  static constexpr std::uint32_t kValueBit = 0x40;
  static constexpr std::uint32_t kMissingBit = 0x80;

  bool Bit(std::int32_t index, std::uint32_t first) const noexcept {
    return (bytes_[index >> 2] & first >> 2 * (index & 3)) != 0;
  }
  void SetBit(std::int32_t index, std::uint32_t first, bool value) noexcept {
    std::uint8_t& byte = bytes_[index >> 2];
    const std::uint32_t mask = first >> 2 * (index & 3);
    byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
  }

  GrowableArray<std::uint8_t> bytes_;
  std::int32_t size_ = 0;
};

/// A matrix of such cells; cell (i, j) is element i * columns + j of a TernaryVector.
/// Errors: "Invalid argument" for a negative count; "Integer overflow" for 2^31 cells and more;
///         "Out of memory".
class TernaryMatrix {
 public:
  TernaryMatrix() = default;
  TernaryMatrix(std::int32_t rows, std::int32_t columns);

  std::int32_t Rows() const noexcept { return rows_; }
  std::int32_t Columns() const noexcept { return columns_; }

  bool Value(std::int32_t row, std::int32_t column) const noexcept {
    return cells_.Value(row * columns_ + column);
  }
  bool IsMissing(std::int32_t row, std::int32_t column) const noexcept {
    return cells_.IsMissing(row * columns_ + column);
  }
  void SetValue(std::int32_t row, std::int32_t column, bool value) noexcept {
    cells_.SetValue(row * columns_ + column, value);
  }
  void SetMissing(std::int32_t row, std::int32_t column, bool isMissing) noexcept {
    cells_.SetMissing(row * columns_ + column, isMissing);
  }

  TernaryRow Row(std::int32_t row) const noexcept {
    const auto bytes = cells_.Bytes();
    return {bytes.data(), bytes.size(),
            2 * static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_), columns_};
  }

  /// The packed cells, for filling them in their order.
  std::span<std::uint8_t> Bytes() noexcept { return cells_.Bytes(); }

  /// As ChangeSize of the cells. Errors: those of construction.
  void ChangeRowCount(std::int32_t rows);

  /// Removes the listed columns, in place and without reallocation; the rest keep their order.
  /// Errors: "Index out of range".
  void RemoveColumns(const IndexVector& columns);

 private:
  TernaryVector cells_;
  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
};

}  // namespace Vell
