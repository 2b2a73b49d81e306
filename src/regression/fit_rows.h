#pragma once

// The records of one fit as lists, gathered once and walked in every pass: for each record that
// takes part, the set columns of its design row, its response and its hospital. Rows are sparse (a
// few set columns out of many), so the lists are shorter than the packed rows are wide, and nothing
// is decoded twice.
//
// Records stand in blocks, and within a block in the order of their list's length. A walk over a
// block therefore meets runs of lists of one length, for which a loop over a list is unrolled
// completely and no branch depends on a record:
//
//     block 0: [2 records of 1 column][5 of 2 columns] ... [1 of 14 columns]
//     block 1: ...
//
// Sums over records run in this order; it depends on the data alone, so every run and every
// platform adds alike.

#include <cstdint>
#include <span>

#include "foundation/growable_array.h"
#include "linalg/vector.h"
#include "regression/row_source.h"

namespace Hovar {

class FitRows {
 public:
  /// A design has fewer columns than this: the information matrix of a wider one has no valid size.
  using Column = std::uint16_t;

  /// Records of a block; only the last one can have fewer.
  static constexpr std::int32_t kBlockSize = 512;

  /// Gathers the records of `rows` that take part; what was gathered before is replaced, its memory
  /// used again. `hospitalSize` counts the records of each hospital, which stand together.
  /// Errors: "Integer overflow" for 2^31 set cells and more, or 65,536 columns; "Out of memory".
  template <RowSource Rows>
  void Collect(const Rows& rows, const Vell::IndexVector& hospitalSize);

  std::int32_t RecordCount() const noexcept { return responses_.Size(); }
  std::int32_t BlockCount() const noexcept { return blocks_.Size(); }
  std::int32_t ColumnCount() const noexcept { return columnCount_; }

  /// 1.0 or 0.0, of a record in the order of the blocks; and the hospital that it belongs to.
  double Response(std::int32_t record) const noexcept { return responses_[record]; }
  std::int32_t Hospital(std::int32_t record) const noexcept { return hospitals_[record]; }
  /// The records that take part, of each hospital: n_h.
  const Vell::IndexVector& ClusterSize() const noexcept { return clusterSize_; }

  /// Calls visit(i, setColumns) for every record of a block; i counts from 0 within the block, and
  /// setColumns is a span of columns, ascending, of fixed extent where the list is short.
  template <typename Visit>
  void VisitLists(std::int32_t block, Visit visit) const;

 private:
  /// Lists of one length that follow each other in a block.
  struct Run {
    std::int32_t length;
    std::int32_t count;
  };
  struct Block {
    std::int32_t firstRun;
    std::int32_t firstCell;  // in columns_
  };

  static constexpr std::size_t kLongestUnrolled = 12;

  void Begin(std::int32_t columnCount, std::int32_t hospitalCount);
  void Append(std::span<const std::int32_t> setColumns, bool response, std::int32_t hospital);
  void EndBlock();

  template <std::size_t kLength, typename Visit>
  static void VisitRun(const Column*& list, std::size_t length, std::int32_t count, std::size_t& i,
                       Visit& visit);

  std::int32_t columnCount_ = 0;
  Vell::GrowableArray<Column> columns_;
  Vell::GrowableArray<Run> runs_;
  Vell::GrowableArray<Block> blocks_;
  Vell::GrowableArray<std::uint8_t> responses_;
  Vell::IndexVector hospitals_;
  Vell::IndexVector clusterSize_;

  // The block that is being gathered, in the order of the records.
  struct Gathered {
    std::int32_t firstCell;
    std::int32_t length;
    std::int32_t hospital;
    bool response;
  };
  Vell::GrowableArray<Gathered> gathered_;
  Vell::GrowableArray<Column> gatheredColumns_;
  Vell::IndexVector lengthStart_;  // by length: place of the next record with such a list
  Vell::IndexVector runStart_;     // by length: place of its cells
  Vell::IndexVector scratch_;
};

template <RowSource Rows>
void FitRows::Collect(const Rows& rows, const Vell::IndexVector& hospitalSize) {
  Begin(rows.ColumnCount(), hospitalSize.Size());
  std::int32_t record = 0;
  for (std::int32_t hospital = 0; hospital < hospitalSize.Size(); ++hospital) {
    for (const std::int32_t end = record + hospitalSize[hospital]; record < end; ++record) {
      if (rows.Includes(record)) {
        Append(rows.SetColumns(record, scratch_.Span()), rows.Response(record), hospital);
      }
    }
  }
  EndBlock();
}

template <std::size_t kLength, typename Visit>
void FitRows::VisitRun(const Column*& list, std::size_t length, std::int32_t count, std::size_t& i,
                       Visit& visit) {
  if (length != kLength && kLength != std::dynamic_extent) {
    // Try the next length; the last one serves all lists that are longer.
    constexpr std::size_t kNext = kLength < kLongestUnrolled ? kLength + 1 : std::dynamic_extent;
    VisitRun<kNext>(list, length, count, i, visit);
    return;
  }
  for (; count > 0; --count, ++i, list += length) {
    visit(i, std::span<const Column, kLength>(list, length));
  }
}

template <typename Visit>
void FitRows::VisitLists(std::int32_t block, Visit visit) const {
  const std::int32_t lastRun =
      block + 1 < blocks_.Size() ? blocks_[block + 1].firstRun : runs_.Size();
  const Column* list = columns_.begin() + blocks_[block].firstCell;
  std::size_t i = 0;
  for (std::int32_t run = blocks_[block].firstRun; run < lastRun; ++run) {
    VisitRun<0>(list, static_cast<std::size_t>(runs_[run].length), runs_[run].count, i, visit);
  }
}

}  // namespace Hovar
