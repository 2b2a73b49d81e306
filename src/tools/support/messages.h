#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What more than one tool says on standard error.
struct ToolMessages {
  Messages::Pattern cannotPrint{"hovar: cannot write to standard output"};
  Messages::Pattern cannotRead{"hovar: cannot read <file>"};
  Messages::Pattern cannotWrite{"hovar: cannot write <file>"};
};

inline constexpr ToolMessages kToolMessages;

}  // namespace Hovar
