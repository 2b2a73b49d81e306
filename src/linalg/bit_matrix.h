#pragma once

#include <cstdint>

#include "foundation/growable_array.h"
#include "linalg/kernels/set_columns.h"
#include "linalg/vector.h"

namespace Vell {

/// Bits, eight to a byte, the first one in the most significant place. Zero-filled when sized; one
/// spare byte is always allocated: 8 elements occupy 2 bytes, 0 elements 1 byte.
/// Errors: "Invalid argument" for a negative size; "Out of memory".
class BitVector {
 public:
  BitVector() = default;
  explicit BitVector(std::int32_t size) { Resize(size); }

  /// Becomes `size` zeros.
  void Resize(std::int32_t size);
  /// Changes the size and keeps the cells; new ones are zero where the vector only ever grew. The
  /// block stays where there is room, and at least doubles where there is none.
  void ChangeSize(std::int32_t size);

  std::int32_t Size() const noexcept { return size_; }
  std::int32_t ByteCount() const noexcept { return bytes_.Size(); }

  bool Get(std::int32_t index) const noexcept { return (bytes_[index >> 3] & Mask(index)) != 0; }
  void Set(std::int32_t index, bool value) noexcept {
    std::uint8_t& byte = bytes_[index >> 3];
    byte = static_cast<std::uint8_t>(value ? byte | Mask(index) : byte & ~Mask(index));
  }

  std::span<std::uint8_t> Bytes() noexcept { return bytes_.Span(); }
  std::span<const std::uint8_t> Bytes() const noexcept { return bytes_.Span(); }

 private:
  static std::uint32_t Mask(std::int32_t index) noexcept { return 0x80U >> (index & 7); }

  GrowableArray<std::uint8_t> bytes_;
  std::int32_t size_ = 0;
};

/// A matrix of bits; cell (i, j) is element i * columns + j of a BitVector.
/// Errors: "Invalid argument" for a negative count; "Integer overflow" for 2^31 cells and more;
///         "Out of memory".
class BitMatrix {
 public:
  BitMatrix() = default;
  BitMatrix(std::int32_t rows, std::int32_t columns);

  std::int32_t Rows() const noexcept { return rows_; }
  std::int32_t Columns() const noexcept { return columns_; }

  bool Get(std::int32_t row, std::int32_t column) const noexcept {
    return cells_.Get(row * columns_ + column);
  }
  void Set(std::int32_t row, std::int32_t column, bool value) noexcept {
    cells_.Set(row * columns_ + column, value);
  }

  BitRow Row(std::int32_t row) const noexcept {
    const auto bytes = cells_.Bytes();
    return {bytes.data(), bytes.size(),
            static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_), columns_};
  }

  /// The packed cells, for filling them in their order.
  std::span<std::uint8_t> Bytes() noexcept { return cells_.Bytes(); }

  /// As ChangeSize of the cells. Errors: those of construction.
  void ChangeRowCount(std::int32_t rows);

  /// Removes the listed columns, in place and without reallocation; the rest keep their order.
  /// Errors: "Index out of range".
  void RemoveColumns(const IndexVector& columns);

 private:
  BitVector cells_;
  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
};

/// The number of cells of a packed matrix.
/// Errors: "Invalid argument" for a negative count; "Integer overflow" for 2^31 cells and more.
std::int32_t PackedCellCount(std::int32_t rows, std::int32_t columns);

}  // namespace Vell
