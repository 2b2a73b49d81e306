#pragma once

#include "tools/chains/chain_definitions.h"

namespace Hovar {

/// True when the definitions with which the chains of a set were run are those that would be written
/// now, comments and blanks between elements apart, and the chains that have a coefficient file have
/// the same fits in it: they do not depend on the seed, so other ones come from other data. Otherwise
/// a line on standard error names the first difference.
bool BelongTogether(const ChainSet& set);

/// Names the chains in the set's folder that an earlier run with more chains left behind on standard
/// error.
void NameEarlierChains(const ChainSet& set);

}  // namespace Hovar
