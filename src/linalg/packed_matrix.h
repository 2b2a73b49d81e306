#pragma once

// What vectors and matrices of packed cells have in common. A cell has one bit or two (BitMatrix,
// TernaryMatrix); linalg/kernels/set_columns.h draws how they lie. Cells, rows and columns count
// from 0, and reading or setting one that does not exist is undefined: callers keep within the
// sizes.

#include <cstdint>
#include <span>

#include "foundation/growable_array.h"
#include "foundation/memory.h"
#include "linalg/kernels/packed_columns.h"
#include "linalg/kernels/set_columns.h"
#include "linalg/vector.h"

namespace Vell {

/// The number of cells of a packed matrix.
/// Errors: "Invalid argument" for a negative count; "Integer overflow" for 2^31 cells and more.
std::int32_t PackedCellCount(std::int32_t rows, std::int32_t columns);

/// Cells of kBits bits (1 or 2), as many to a byte as there is room for, the first one in the most
/// significant place. Zero-filled when sized; one spare byte is always allocated: with one bit a
/// cell, 8 cells occupy 2 bytes and 0 cells 1 byte.
/// Errors: "Invalid argument" for a negative size; "Out of memory".
template <int kBits>
class PackedVector {
 public:
  static constexpr int kBitsPerCell = kBits;

  /// No cells and no byte.
  PackedVector() = default;
  explicit PackedVector(std::int32_t size) { Resize(size); }

  /// Becomes `size` zeros in a block of its own; the old cells are gone, after an error too.
  void Resize(std::int32_t size) {
    size_ = 0;
    RequireNotNegative(size);
    bytes_.Resize(ByteOf(size) + 1);
    size_ = size;
  }

  /// Changes the size and keeps the cells; new ones are zero where the vector only ever grew. The
  /// block stays where there is room, and at least doubles where there is none.
  void ChangeSize(std::int32_t size) {
    RequireNotNegative(size);
    bytes_.ChangeSize(ByteOf(size) + 1);
    size_ = size;
  }

  /// Cells.
  std::int32_t Size() const noexcept { return size_; }
  /// Bytes, the spare one included; 0 before a size was given.
  std::int32_t ByteCount() const noexcept { return bytes_.Size(); }

  /// The packed cells, the spare byte included; valid until the size changes.
  std::span<std::uint8_t> Bytes() noexcept { return bytes_.Span(); }
  std::span<const std::uint8_t> Bytes() const noexcept { return bytes_.Span(); }

 protected:
  // One bit of a cell; `first` is that bit of a byte's first cell. The index is below Size().
  bool Bit(std::int32_t index, std::uint32_t first) const noexcept {
    return (bytes_[ByteOf(index)] & MaskOf(index, first)) != 0;
  }
  void SetBit(std::int32_t index, std::uint32_t first, bool value) noexcept {
    std::uint8_t& byte = bytes_[ByteOf(index)];
    const std::uint32_t mask = MaskOf(index, first);
    byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
  }

 private:
  static_assert(kBits == 1 || kBits == 2);
  static constexpr int kCellsPerByteLog2 = kBits == 1 ? 3 : 2;

  static std::int32_t ByteOf(std::int32_t index) noexcept { return index >> kCellsPerByteLog2; }
  static std::uint32_t MaskOf(std::int32_t index, std::uint32_t first) noexcept {
    return first >> kBits * (index & ((1 << kCellsPerByteLog2) - 1));
  }

  GrowableArray<std::uint8_t> bytes_;
  std::int32_t size_ = 0;
};

/// A matrix of packed cells, row-major: cell (i, j) is element i * columns + j of a vector of the
/// type Cells, which derives from PackedVector.
/// Errors: "Invalid argument" for a negative count; "Integer overflow" for 2^31 cells and more;
///         "Out of memory".
template <typename Cells>
class PackedMatrix {
 public:
  /// No rows and no columns.
  PackedMatrix() = default;
  /// Zero-filled.
  PackedMatrix(std::int32_t rows, std::int32_t columns)
      : cells_(PackedCellCount(rows, columns)), rows_(rows), columns_(columns) {}

  std::int32_t Rows() const noexcept { return rows_; }
  std::int32_t Columns() const noexcept { return columns_; }

  /// A view of a row, for the functions of linalg/kernels/set_columns.h; valid until the matrix
  /// changes its size or is gone.
  PackedRow<Cells::kBitsPerCell> Row(std::int32_t row) const noexcept {
    const std::span<const std::uint8_t> bytes = cells_.Bytes();
    return {
        bytes.data(), bytes.size(),
        Cells::kBitsPerCell * static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_),
        columns_};
  }

  /// The packed cells, for filling them in their order; valid until the number of rows changes.
  std::span<std::uint8_t> Bytes() noexcept { return cells_.Bytes(); }

  /// Truncates, or adds rows, as PackedVector::ChangeSize does with cells.
  /// Errors: those of construction.
  void ChangeRowCount(std::int32_t rows) {
    cells_.ChangeSize(PackedCellCount(rows, columns_));
    rows_ = rows;
  }

  /// Removes the listed columns, which are distinct, in place and without reallocation; the rest
  /// keep their order. Cost: one pass over all cells.
  /// Errors: "Index out of range"; "Out of memory". Nothing has changed then.
  void RemoveColumns(const IndexVector& columns) {
    RemovePackedColumns(cells_.Bytes(), rows_, columns_, Cells::kBitsPerCell, columns);
    columns_ -= columns.Size();
  }

 protected:
  std::int32_t IndexOf(std::int32_t row, std::int32_t column) const noexcept {
    return row * columns_ + column;
  }

  Cells cells_;

 private:
  std::int32_t rows_ = 0;
  std::int32_t columns_ = 0;
};

}  // namespace Vell
