#include "regression/fit_rows.h"

#include <algorithm>
#include <limits>

#include "foundation/exceptions/exceptions.h"

namespace Hovar {

void FitRows::Begin(std::int32_t columnCount, std::int32_t hospitalCount) {
  if (columnCount > std::numeric_limits<Column>::max()) {
    throw Vell::Exceptions::IntegerOverflowException("Integer overflow");
  }
  columnCount_ = columnCount;
  columns_.Truncate(0);
  runs_.Truncate(0);
  blocks_.Truncate(0);
  responses_.Truncate(0);
  hospitals_.Truncate(0);
  clusterSize_.Resize(hospitalCount);
  gathered_.Truncate(0);
  gathered_.Reserve(kBlockSize);
  gatheredColumns_.Truncate(0);
  lengthStart_.Resize(columnCount + 2);
  runStart_.Resize(columnCount + 1);
  scratch_.Resize(columnCount);
}

void FitRows::Append(std::span<const std::int32_t> setColumns, bool response,
                     std::int32_t hospital) {
  if (gathered_.Size() == kBlockSize) {
    EndBlock();
  }
  const auto length = static_cast<std::int32_t>(setColumns.size());
  gathered_.Append({gatheredColumns_.Size(), length, hospital, response});
  std::transform(setColumns.begin(), setColumns.end(), gatheredColumns_.AppendUninitialised(length),
                 [](std::int32_t column) { return static_cast<Column>(column); });
  ++clusterSize_[hospital];
}

/// Moves the gathered records into place: a counting sort by length, which keeps the order of equal
/// ones.
void FitRows::EndBlock() {
  if (gathered_.IsEmpty()) {
    return;
  }
  blocks_.Append({runs_.Size(), columns_.Size()});
  std::fill(lengthStart_.begin(), lengthStart_.end(), 0);
  for (const Gathered& record : gathered_) {
    ++lengthStart_[record.length + 1];
  }
  std::int32_t cell = columns_.Size();
  for (std::int32_t length = 0; length <= columnCount_; ++length) {
    const std::int32_t count = lengthStart_[length + 1];
    if (count > 0) {
      runs_.Append({length, count});
    }
    lengthStart_[length + 1] = lengthStart_[length] + count;
    runStart_[length] = cell;
    cell += length * count;
  }
  const std::int32_t firstRecord = responses_.Size();
  responses_.AppendUninitialised(gathered_.Size());
  hospitals_.AppendUninitialised(gathered_.Size());
  columns_.AppendUninitialised(gatheredColumns_.Size());
  for (const Gathered& record : gathered_) {
    const std::int32_t place = firstRecord + lengthStart_[record.length]++;
    responses_[place] = record.response ? 1 : 0;
    hospitals_[place] = record.hospital;
    std::copy_n(gatheredColumns_.begin() + record.firstCell, record.length,
                columns_.begin() + runStart_[record.length]);
    runStart_[record.length] += record.length;
  }
  gathered_.Truncate(0);
  gatheredColumns_.Truncate(0);
}

}  // namespace Hovar
