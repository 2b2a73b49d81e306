#pragma once

// The records of a fit, arranged for passes over them: what a fit does once.
//
//   * The columns are numbered anew, the frequent ones first. A pass adds to the triangle of pairs
//     k <= j once for each set cell of column j, so that the many cells of frequent columns then
//     stand in its short rows.
//   * The records are cut into blocks whose arrays stay in the second-level cache. The set cells of
//     a block are turned into one list of record numbers for each column.
//   * On the way, while the block's cells lie there as one row of bits a column, it is counted how
//     often two columns are set together. The first pass needs no more: where all coefficients are
//     0 every weight is 1/4.

#include <array>
#include <cstdint>
#include <vector>

#include "raw_array.h"

namespace Hovar::Floor {

inline constexpr std::size_t kMaxColumns = 64;

/// The records of a fit, without those that do not take part. The words may stand elsewhere.
struct Design {
  std::size_t records = 0;
  std::size_t columns = 0;
  const std::uint64_t* words = nullptr;  // a record each, column j as bit j; bit 0 is always set
  RawArray<std::uint64_t> ownWords;
  std::vector<std::uint8_t> responses;      // 0 or 1
  std::vector<std::int32_t> hospitalStart;  // and the number of records after the last
};

class ArrangedDesign {
 public:
  static constexpr std::size_t kBlock = 8192;

  /// The design must outlive the arrangement.
  explicit ArrangedDesign(const Design& design);

  const Design& Source() const noexcept { return design_; }
  /// The design's column that stands at a position; the first position is that of column 0.
  std::size_t ColumnAt(std::size_t position) const noexcept { return order_[position]; }
  /// The records' words with the columns at their positions, and zeros up to a multiple of 64.
  const std::uint64_t* Words() const noexcept { return words_.begin(); }
  /// The numbers, from a block's beginning, of its records in which the column is set.
  const std::uint16_t* ListBegin(std::size_t block, std::size_t position) const noexcept {
    return numbers_.begin() + listStart_[block * kMaxColumns + position];
  }
  std::size_t ListSize(std::size_t block, std::size_t position) const noexcept {
    const std::size_t i = block * kMaxColumns + position;
    return listStart_[i + 1] - listStart_[i];
  }
  /// How many records have both columns set, for k <= j.
  std::uint64_t Together(std::size_t j, std::size_t k) const noexcept { return together_[j][k]; }
  /// How many records with response 1 have the column set.
  std::uint64_t WithResponse(std::size_t j) const noexcept { return withResponse_[j]; }

 private:
  struct BlockBits;

  void ChooseOrder();
  void ArrangeBlock(BlockBits& bits, std::size_t first, std::size_t count);
  void Count(const BlockBits& bits) noexcept;
  void List(const BlockBits& bits, std::size_t block, std::size_t count);

  const Design& design_;
  std::array<std::size_t, kMaxColumns> order_{};
  RawArray<std::uint64_t> words_;
  RawArray<std::uint16_t> numbers_;
  std::vector<std::size_t> listStart_;
  std::array<std::array<std::uint64_t, kMaxColumns>, kMaxColumns> together_{};
  std::array<std::uint64_t, kMaxColumns> withResponse_{};
};

}  // namespace Hovar::Floor
