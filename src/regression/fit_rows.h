#pragma once

// The records of one fit, gathered once and walked in every pass. Rows are sparse (a few set
// columns out of many), so each block of records is held in two ways:
//
//   by record  the bits of its set columns, 64 columns to a word
//   by column  the list of the block's records in which the column is set, ascending
//
// A walk along a column's list adds what belongs to that column without looking at anything else,
// and the words say which other columns are set in the record. Sums over records always run in the
// order of the data set, so every form of a kernel adds the same numbers in the same order.

#include <algorithm>
#include <cstdint>
#include <span>

#include "foundation/growable_array.h"
#include "linalg/vector.h"
#include "regression/row_source.h"

namespace Hovar {

/// Records, blocks and columns count from 0; records are those that take part, renumbered in their
/// order. Views of the rows are valid until the next Collect. An object without records is valid
/// and has no block. Memory: one bit for each cell of the design and two bytes for each set one.
class FitRows {
 public:
  /// The place of a record within its block.
  using Place = std::uint16_t;

  /// Records of a block; only the last one can have fewer.
  static constexpr std::int32_t kBlockSize = 2048;
  /// The information matrix of a wider design has no valid size.
  static constexpr std::int32_t kMostColumns = 65535;

  /// Gathers the records of `rows` that take part; what was gathered before is replaced, its memory
  /// used again. `hospitalSize` counts the records of each hospital, which stand together.
  /// Errors: "Integer overflow" for 2^31 set cells and more, or more than kMostColumns; "Out of
  ///         memory".
  template <RowSource Rows>
  void Collect(const Rows& rows, const Vell::IndexVector& hospitalSize);

  /// How many records, blocks, columns and set cells were gathered.
  std::int32_t RecordCount() const noexcept { return responses_.Size(); }
  std::int32_t BlockCount() const noexcept { return (RecordCount() + kBlockSize - 1) / kBlockSize; }
  std::int32_t ColumnCount() const noexcept { return columnCount_; }
  std::int32_t SetCellCount() const noexcept { return places_.Size(); }

  /// The first record of a block, and how many it has.
  static std::int32_t FirstRecord(std::int32_t block) noexcept { return block * kBlockSize; }
  std::int32_t BlockSize(std::int32_t block) const noexcept {
    return std::min(kBlockSize, RecordCount() - FirstRecord(block));
  }

  /// 1.0 or 0.0.
  double Response(std::int32_t record) const noexcept { return responses_[record]; }
  /// The records that take part, of each hospital: n_h. Those of a hospital stand together, in the
  /// order of the hospitals.
  const Vell::IndexVector& ClusterSize() const noexcept { return clusterSize_; }

  /// The words of a record, which those of the next one follow.
  std::int32_t WordCount() const noexcept { return wordCount_; }
  const std::uint64_t* Words(std::int32_t block, std::int32_t place) const noexcept {
    return words_.begin() + std::int64_t{FirstRecord(block) + place} * wordCount_;
  }

  /// The places of a block's records in which a column is set, ascending.
  std::span<const Place> Places(std::int32_t block, std::int32_t column) const noexcept {
    const std::int32_t list = block * columnCount_ + column;
    return {places_.begin() + listStart_[list], places_.begin() + listStart_[list + 1]};
  }

 private:
  /// There are at most `mostRecords`.
  void Begin(std::int32_t mostRecords, std::int32_t columnCount, std::int32_t hospitalCount);
  /// Takes a record whose words stand at the end of words_.
  void Append(bool response, std::int32_t hospital);
  void EndBlock();

  std::int32_t mostRecords_ = 0;
  std::int32_t columnCount_ = 0;
  std::int32_t wordCount_ = 0;
  Vell::GrowableArray<std::uint8_t> responses_;
  Vell::GrowableArray<std::uint64_t> words_;
  Vell::GrowableArray<Place> places_;
  Vell::IndexVector listStart_;  // in places_: block by block, column by column, and the end
  Vell::IndexVector clusterSize_;
  // While a block is gathered: room for a whole list of each column, and what is used of it.
  Vell::GrowableArray<Place> lists_;
  Vell::IndexVector listSize_;
};

template <RowSource Rows>
void FitRows::Collect(const Rows& rows, const Vell::IndexVector& hospitalSize) {
  Begin(rows.RecordCount(), rows.ColumnCount(), hospitalSize.Size());
  std::int32_t record = 0;
  for (std::int32_t hospital = 0; hospital < hospitalSize.Size(); ++hospital) {
    for (const std::int32_t end = record + hospitalSize[hospital]; record < end; ++record) {
      if (rows.Includes(record)) {
        for (std::int32_t i = 0; i < wordCount_; ++i) {
          words_.Append(rows.SetColumnWord(record, i));
        }
        Append(rows.Response(record), hospital);
      }
    }
  }
  if (RecordCount() % kBlockSize != 0) {
    EndBlock();
  }
}

}  // namespace Hovar
