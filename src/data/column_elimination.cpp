#include "data/column_elimination.h"

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

void RemoveZeroColumns(DataSet& dataSet, const Vell::IndexVector& columns) {
  if (!columns.IsEmpty()) {
    RemoveColumns(dataSet, columns);
  }
}

/// `count` gives the cross counts of the data set as it is when it is called.
template <typename Count>
void RemoveDependentColumns(DataSet& dataSet, double tolerance, Count count) {
  const Vell::IndexVector columns = FindDependentColumns(count(dataSet), tolerance);
  if (columns.IsEmpty()) {
    return;
  }
  RemoveColumns(dataSet, columns);
  Vell::IO::StandardOutput().WriteMessage(Messages::kLines.checkRank);
  if (!IsFullRank(count(dataSet), tolerance)) {
    throw Exception(Messages::kErrors.rankNotMaximal);
  }
}

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

void EliminateColumns(DataSet& dataSet, double tolerance) {
  Log().WriteMessage(Messages::kLines.eliminatingZeroZ);
  RemoveZeroColumns(dataSet, FindZeroColumns(dataSet.z));

  Log().WriteMessage(Messages::kLines.eliminatingZeroX);
  RemoveZeroColumns(dataSet, FindZeroColumns(dataSet.x, dataSet.recordHasMissing));

  Log().WriteMessage(Messages::kLines.eliminatingDependentZ);
  RemoveDependentColumns(dataSet, tolerance,
                         [](const DataSet& data) { return Vell::CrossCounts(data.z); });

  Log().WriteMessage(Messages::kLines.eliminatingDependentX);
  RemoveDependentColumns(dataSet, tolerance, [](const DataSet& data) {
    return Vell::CrossCounts(
        data.x, [&data](std::int32_t record) { return data.IsCompleteWithoutP(record); });
  });
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
