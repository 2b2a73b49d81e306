#pragma once

// What a chain leaves, read back for the verdict.

#include <optional>
#include <string>
#include <vector>

#include "diagnostics/chain_verdict.h"

namespace Hovar {

/// Reads a Chain.csv; nothing when the file cannot be read or is not a complete one.
std::optional<ChainDraws> ReadChainFile(const std::string& path);

/// The X names of the rows of a coefficient file, in their order.
/// Errors: those of the program's reader.
std::vector<std::string> ReadCoefficientNames(const std::string& path);

}  // namespace Hovar
