#include "regression/fit_rows.h"

#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Hovar {

namespace {

/// Makes room in advance, so that a block need not be copied to grow. Room that is not used costs
/// no memory: the system gives a page when it is first written to.
template <typename T>
void ReserveAtLeast(Vell::GrowableArray<T>& array, std::int64_t capacity) {
  if (capacity > array.Capacity()) {
    array.Reserve(Vell::CheckedSize(static_cast<std::uint64_t>(capacity)));
  }
}

}  // namespace

void FitRows::Begin(std::int32_t mostRecords, std::int32_t columnCount,
                    std::int32_t hospitalCount) {
  if (columnCount > kMostColumns) {
    throw Vell::Exceptions::IntegerOverflowException(Messages::kErrors.integerOverflow);
  }
  mostRecords_ = mostRecords;
  columnCount_ = columnCount;
  wordCount_ = Vell::ColumnWordCount(columnCount);
  responses_.Truncate(0);
  words_.Truncate(0);
  ReserveAtLeast(responses_, mostRecords);
  ReserveAtLeast(words_, std::int64_t{mostRecords} * wordCount_);
  places_.Truncate(0);
  listStart_.Truncate(0);
  listStart_.Append(0);
  clusterSize_.Resize(hospitalCount);
  lists_.ChangeSize(columnCount * kBlockSize);
  listSize_.Resize(columnCount);
}

void FitRows::Append(bool response, std::int32_t hospital) {
  const std::uint64_t* const words = words_.end() - wordCount_;
  const auto place = static_cast<Place>(RecordCount() % kBlockSize);
  for (std::int32_t i = 0; i < wordCount_; ++i) {
    Vell::VisitBits(words[i], [&](std::int32_t bit) {
      const std::int32_t column = i * Vell::kColumnsPerWord + bit;
      lists_[column * kBlockSize + listSize_[column]++] = place;
    });
  }
  responses_.Append(response ? 1 : 0);
  ++clusterSize_[hospital];
  if (RecordCount() % kBlockSize == 0) {
    EndBlock();
  }
}

/// Moves the lists of the gathered block together.
void FitRows::EndBlock() {
  if (places_.IsEmpty()) {
    std::int64_t size = 0;
    for (const std::int32_t listSize : listSize_) {
      size += listSize;
    }
    // As if all blocks were like this one, and a sixteenth more.
    const std::int64_t expected = size * mostRecords_ / RecordCount();
    ReserveAtLeast(places_, std::min<std::int64_t>(expected + expected / 16, INT32_MAX));
  }
  for (std::int32_t column = 0; column < columnCount_; ++column) {
    const std::int32_t size = std::exchange(listSize_[column], 0);
    std::copy_n(lists_.begin() + std::int64_t{column} * kBlockSize, size,
                places_.AppendUninitialised(size));
    listStart_.Append(places_.Size());
  }
}

}  // namespace Hovar
