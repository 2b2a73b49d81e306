#pragma once

// What the columns of a data file hold, and what an Analysis would do with them before its first
// fit: column elimination and the [X|Z] tables.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "data/column_elimination.h"
#include "data/data_set.h"
#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// One variable of the data file, and what its columns hold.
struct VariableCounts {
  std::string zName;
  std::string xName;
  std::int32_t records = 0;  // that were counted
  std::int32_t zOnes = 0;
  std::int32_t xOnes = 0;  // among the known ones
  std::int32_t xMissing = 0;
  std::int32_t zOnesWithKnownX = 0;
  std::int32_t xOnesWithZ = 0;                   // known ones where Z is 1
  std::optional<EliminatedVariable> eliminated;  // by CheckColumns

  /// True when no record has Z = 0 (or 1) and a known X.
  bool IsEmptyWithoutZ() const noexcept { return records - xMissing == zOnesWithKnownX; }
  bool IsEmptyWithZ() const noexcept { return zOnesWithKnownX == 0; }
};

/// How far to count: over all records, or until it is certain that no [X|Z] class is empty.
enum class CountExtent { kAllRecords, kUntilNoClassIsEmpty };

/// Counts all variables but the intercept.
std::vector<VariableCounts> CountVariables(const DataSet& dataSet, CountExtent extent);

/// Removes columns from the data set as the Analysis of the definition does, notes which ones in
/// `variables` (all of them, or empty when they are not needed), and adds an error for one in which
/// the program would end before its first fit.
/// Result: true when column elimination would succeed.
/// Errors: "Out of memory".
bool CheckColumns(Findings& findings, const DefinitionFile& definition, DataSet& dataSet,
                  std::vector<VariableCounts>& variables);

}  // namespace Hovar
