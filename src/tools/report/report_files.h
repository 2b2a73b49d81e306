#pragma once

#include <string>
#include <vector>

#include "tools/support/output_file.h"

namespace Hovar {

/// How many folders deep a report looks, the one that is named included.
inline constexpr int kReportLevels = 4;

/// Adds the files of folders to a report, and at last the list of the folders. Only regular files of
/// these folders themselves are read, as long as they are when they are opened: whatever is left out
/// although it has the name of a file for a report (symbolic links, pipes, what may not be read, names
/// that a path cannot have, chains that an earlier run left behind) is named on standard error.
/// False, with a line on standard error, when one of `folders` cannot be read, or a file not to its
/// end.
bool AddReportFiles(OutputFile& report, const std::vector<std::string>& folders);

}  // namespace Hovar
