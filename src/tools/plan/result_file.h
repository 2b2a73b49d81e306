#pragma once

#include <optional>
#include <string>

#include "regression/regression_results.h"

namespace Hovar {

/// What a coefficient file holds, read as the program reads it but without a word; nothing when it is
/// no regular file or the program would end in an error.
std::optional<RegressionResults> ReadResultFile(const std::string& path);

}  // namespace Hovar
