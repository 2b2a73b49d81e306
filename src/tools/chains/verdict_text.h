#pragma once

#include <string>
#include <vector>

#include "diagnostics/chain_verdict.h"

namespace Hovar {

/// Says in sentences whether chains of one definition have converged, which coefficients have not,
/// and what to do. Chain i is called chain-(i + 1). `names` are the coefficients' names in the
/// order of the columns; where their number differs, the columns' own names are used, and a
/// sentence says so. There is at least one chain; all have the same columns.
std::string VerdictText(const std::vector<ChainDraws>& chains,
                        const std::vector<std::string>& names, Estimation estimation);

}  // namespace Hovar
