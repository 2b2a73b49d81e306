#pragma once

#include <string>
#include <vector>

#include "data/data_set.h"
#include "tools/check/columns.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// The description that --data gives of a data set as it was read.
std::string DescribeDataSet(const DefinitionFile& definition, const DataSet& dataSet);

/// The part of it on variables; for an Analysis after CheckColumns.
std::string DescribeVariables(const DefinitionFile& definition,
                              const std::vector<VariableCounts>& variables);

}  // namespace Hovar
