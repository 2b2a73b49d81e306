#include "data/column_elimination.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "foundation/integer_size.h"
#include "foundation/io/log.h"
#include "foundation/io/standard_writers.h"
#include "linalg/kernels/cross_counts.h"
#include "linalg/row_echelon.h"
#include "linalg/svd.h"
#include "messages/error_texts.h"
#include "messages/output_lines.h"

namespace Hovar {
namespace {

using Vell::Exceptions::Exception;
using Vell::IO::Log;

/// The columns that are in none of the records that `include` accepts.
template <typename Packed, typename Include>
Vell::IndexVector FindColumnsSetNowhere(const Packed& matrix, Include include) {
  Vell::GrowableArray<bool> isSet(matrix.Columns());
  Vell::IndexVector scratch(matrix.Columns());
  for (std::int32_t i = 0; i < matrix.Rows(); ++i) {
    if (include(i)) {
      for (const std::int32_t j : Vell::SetColumns(matrix.Row(i), scratch.Span())) {
        isSet[j] = true;
      }
    }
  }
  Vell::IndexVector columns;
  for (std::int32_t j = 0; j < matrix.Columns(); ++j) {
    if (!isSet[j]) {
      columns.Append(j);
    }
  }
  return columns;
}

/// The log line that a stage begins with.
std::string_view HeadingOf(EliminationStage stage) noexcept {
  switch (stage) {
    case EliminationStage::kZeroZ:
      return Messages::kLines.eliminatingZeroZ.Text();
    case EliminationStage::kZeroX:
      return Messages::kLines.eliminatingZeroX.Text();
    case EliminationStage::kDependentZ:
      return Messages::kLines.eliminatingDependentZ.Text();
    case EliminationStage::kDependentX:
      return Messages::kLines.eliminatingDependentX.Text();
  }
  return "";
}

/// What the cross counts of a stage show of one column.
struct Evidence {
  EliminationReason reason = EliminationReason::kZero;
  std::int32_t equalColumn = -1;
};

Evidence EvidenceAgainst(std::int32_t column, const Vell::Matrix& counts,
                         const Vell::GrowableArray<bool>& isRemoved) noexcept {
  if (counts(column, column) == 0) {
    return {EliminationReason::kZero};
  }
  if (AreEqualColumns(counts, column, 0)) {
    return {EliminationReason::kConstant};
  }
  for (std::int32_t other = 1; other < counts.Columns(); ++other) {
    if (!isRemoved[other] && AreEqualColumns(counts, column, other)) {
      return {EliminationReason::kEqual, other};
    }
  }
  return {EliminationReason::kDependent};
}

/// Runs the stages on a data set, and records what they remove.
class Eliminator {
 public:
  Eliminator(Vell::GrowableArray<EliminatedVariable>& eliminated, DataSet& dataSet,
             double tolerance)
      : eliminated_(eliminated),
        data_(dataSet),
        tolerance_(tolerance),
        originalColumns_(dataSet.variableCount) {
    for (std::int32_t j = 0; j < dataSet.variableCount; ++j) {
      originalColumns_[j] = j;
    }
  }

  /// `find` gives the columns to remove.
  template <typename Find>
  void RemoveZeroColumns(EliminationStage stage, Find find) {
    Log().WriteLine(HeadingOf(stage));
    const Vell::IndexVector columns = find(data_);
    if (columns.IsEmpty()) {
      return;
    }
    for (const std::int32_t column : columns) {
      Record(stage, column, {});
    }
    Remove(columns);
  }

  /// `count` gives the cross counts of the data set as it is when it is called.
  template <typename Count>
  void RemoveDependentColumns(EliminationStage stage, Count count) {
    Log().WriteLine(HeadingOf(stage));
    const Vell::IndexVector columns = FindAndRecord(stage, count(data_));
    if (columns.IsEmpty()) {
      return;
    }
    Remove(columns);
    Vell::IO::StandardOutput().WriteMessage(Messages::kLines.checkRank);
    if (!IsFullRank(count(data_), tolerance_)) {
      throw Exception(Messages::kErrors.rankNotMaximal);
    }
  }

 private:
  Vell::IndexVector FindAndRecord(EliminationStage stage, const Vell::Matrix& counts) {
    Vell::IndexVector columns = FindDependentColumns(counts, tolerance_);
    Vell::GrowableArray<bool> isRemoved(columns.IsEmpty() ? 0 : counts.Columns());
    for (const std::int32_t column : columns) {
      isRemoved[column] = true;
    }
    for (const std::int32_t column : columns) {
      Record(stage, column, EvidenceAgainst(column, counts, isRemoved));
    }
    return columns;
  }

  void Record(EliminationStage stage, std::int32_t column, const Evidence& evidence) {
    const std::int32_t equalColumn =
        evidence.equalColumn < 0 ? -1 : originalColumns_[evidence.equalColumn];
    eliminated_.Append({stage, evidence.reason, originalColumns_[column], equalColumn,
                        data_.zNames[column], data_.xNames[column]});
  }

  void Remove(const Vell::IndexVector& columns) {
    RemoveColumns(data_, columns);
    constexpr std::int32_t kRemoved = -1;
    for (const std::int32_t column : columns) {
      originalColumns_[column] = kRemoved;
    }
    const std::int32_t* const end =
        std::remove(originalColumns_.begin(), originalColumns_.end(), kRemoved);
    originalColumns_.Truncate(static_cast<std::int32_t>(end - originalColumns_.begin()));
  }

  Vell::GrowableArray<EliminatedVariable>& eliminated_;
  DataSet& data_;
  double tolerance_;
  Vell::IndexVector originalColumns_;  // of the columns that are left
};

Vell::SvdResult DecomposeWith(double tolerance, const Vell::Matrix& matrix) {
  Vell::SvdResult svd;
  svd.tolerance = tolerance;
  Vell::Decompose(svd, matrix);
  return svd;
}

/// The null space of the decomposed matrix, one vector a row, without its first coordinate.
Vell::Matrix NullSpaceRows(const Vell::SvdResult& svd, std::int32_t dimension) {
  const std::int32_t order = svd.w.Size();
  // Smaller than the decomposed matrix, so its size needs no check.
  Vell::Matrix rows(dimension, order - 1);
  std::int32_t row = 0;
  for (std::int32_t j = 0; j < order; ++j) {
    if (!(svd.w[j] > svd.threshold)) {
      for (std::int32_t i = 1; i < order; ++i) {
        rows(row, i - 1) = svd.v(i, j);
      }
      ++row;
    }
  }
  return rows;
}

}  // namespace

void EliminateColumns(Vell::GrowableArray<EliminatedVariable>& eliminated, DataSet& dataSet,
                      double tolerance) {
  eliminated.Clear();
  Eliminator eliminator(eliminated, dataSet, tolerance);
  eliminator.RemoveZeroColumns(EliminationStage::kZeroZ,
                               [](const DataSet& data) { return FindZeroColumns(data.z); });
  eliminator.RemoveZeroColumns(EliminationStage::kZeroX, [](const DataSet& data) {
    return FindZeroColumns(data.x, data.recordHasMissing);
  });
  eliminator.RemoveDependentColumns(EliminationStage::kDependentZ,
                                    [](const DataSet& data) { return Vell::CrossCounts(data.z); });
  eliminator.RemoveDependentColumns(EliminationStage::kDependentX, [](const DataSet& data) {
    return Vell::CrossCounts(
        data.x, [&data](std::int32_t record) { return data.IsCompleteWithoutP(record); });
  });
}

void EliminateColumns(DataSet& dataSet, double tolerance) {
  Vell::GrowableArray<EliminatedVariable> eliminated;
  EliminateColumns(eliminated, dataSet, tolerance);
}

void RemoveColumns(DataSet& dataSet, const Vell::IndexVector& columns) {
  Log().WriteMessage(Messages::kLines.eliminatedColumns);
  for (const std::int32_t column : columns) {
    Log().WriteMessage(Messages::kLines.eliminatedColumn, dataSet.zNames[column],
                       dataSet.xNames[column]);
  }
  dataSet.z.RemoveColumns(columns);
  dataSet.x.RemoveColumns(columns);
  dataSet.zNames.RemoveElements(columns);
  dataSet.xNames.RemoveElements(columns);
  dataSet.variableCount -= columns.Size();
  Log().WriteMessage(Messages::kLines.variableCount, dataSet.variableCount);
  CountNonMissing(dataSet);
}

Vell::IndexVector FindZeroColumns(const Vell::BitMatrix& z) {
  return FindColumnsSetNowhere(z, [](std::int32_t) { return true; });
}

Vell::IndexVector FindZeroColumns(const Vell::TernaryMatrix& x,
                                  const Vell::BitVector& recordHasMissing) {
  return FindColumnsSetNowhere(x,
                               [&](std::int32_t record) { return !recordHasMissing.Get(record); });
}

bool AreEqualColumns(const Vell::Matrix& counts, std::int32_t a, std::int32_t b) noexcept {
  return counts(a, b) == counts(a, a) && counts(a, b) == counts(b, b);
}

Vell::IndexVector FindDependentColumns(const Vell::Matrix& counts, double tolerance) {
  const Vell::SvdResult svd = DecomposeWith(tolerance, counts);
  const std::int32_t dimension = counts.Columns() - svd.Rank();
  if (dimension <= 0) {
    return Vell::IndexVector();
  }
  Vell::Matrix nullSpace = NullSpaceRows(svd, dimension);
  if (DecomposeWith(tolerance, nullSpace).Rank() != dimension) {
    throw Exception(Messages::kErrors.dependentColumns);
  }
  const Vell::RowEchelon echelon = Vell::ReduceToRowEchelon(std::move(nullSpace));
  Vell::IndexVector columns;
  for (std::int32_t s = 0; s < dimension; ++s) {
    columns.Append(echelon.permutation[s] + 1);
  }
  return columns;
}

bool IsFullRank(const Vell::Matrix& counts, double tolerance) {
  return DecomposeWith(tolerance, counts).Rank() == counts.Columns();
}

}  // namespace Hovar
