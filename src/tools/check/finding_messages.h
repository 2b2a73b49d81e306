#pragma once

// What all findings of a check have in common.

#include "messages/pattern.h"

namespace Hovar {

/// The line of a finding, and the last line of a check.
struct FindingLines {
  Messages::Pattern error{"<file>:<line>:<column>: error: <finding>"};
  Messages::Pattern summary{"<errors>, <warnings>"};
  Messages::Pattern warning{"<file>:<line>:<column>: warning: <finding>"};
};

inline constexpr FindingLines kFindingLines;

/// Parts of sentences.
struct FindingParts {
  Messages::Pattern andMore{"<names> and <number> more"};
};

inline constexpr FindingParts kFindingParts;

}  // namespace Hovar
