#pragma once

// What --chains writes beside the program's own outputs, and whether it may.

#include <string>

#include "tools/chains/chain_definitions.h"

namespace Hovar {

/// The report on the chains of a set.
std::string ReportOf(const ChainSet& set);

/// False, with a line on standard error, when the definition of a chain, the file of its lines or the
/// report would be written over a file that the definition at `path`, or that of a chain, reads or
/// writes.
bool MayWriteChainFiles(const std::string& path, const ChainSet& set);

}  // namespace Hovar
