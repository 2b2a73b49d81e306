#pragma once

// What the columns of a data file hold, and what an Analysis would do with them before its first
// fit: column elimination and the [X|Z] tables.

#include <cstdint>
#include <string>
#include <vector>

#include "app/launcher/check/findings.h"
#include "app/launcher/definition_file.h"
#include "data/data_set.h"

namespace Hovar {

/// Why an Analysis would leave a variable out.
enum class Removal { kNone, kZeroZ, kZeroX, kDependent };

/// One variable of the data file, counted over all records.
struct VariableCounts {
  std::string zName;
  std::string xName;
  std::int32_t zOnes = 0;
  std::int32_t xOnes = 0;  // among the known ones
  std::int32_t xMissing = 0;
  std::int32_t zOnesWithKnownX = 0;
  Removal removal = Removal::kNone;

  /// True when no record has Z = 0 (or 1) and a known X.
  bool IsEmptyWithoutZ(std::int32_t records) const noexcept {
    return records - xMissing == zOnesWithKnownX;
  }
  bool IsEmptyWithZ() const noexcept { return zOnesWithKnownX == 0; }
};

/// Counts all variables but the intercept.
std::vector<VariableCounts> CountVariables(const DataSet& dataSet);

/// Removes columns from the data set as the Analysis of the definition does, notes which ones in
/// `variables`, and adds an error for what the program ends in before it fits.
void CheckColumns(Findings& findings, const DefinitionFile& definition, DataSet& dataSet,
                  std::vector<VariableCounts>& variables);

/// The description that --data gives of a data set as it was read.
std::string DescribeDataSet(const DefinitionFile& definition, const DataSet& dataSet);

/// The part of it on variables, behind CheckColumns for an Analysis.
std::string DescribeVariables(const DefinitionFile& definition, std::int32_t records,
                              const std::vector<VariableCounts>& variables);

}  // namespace Hovar
