#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What more than one tool says on standard error.
struct ToolMessages {
  Messages::Pattern cannotPrint{"hovar: cannot write to standard output"};
  Messages::Pattern cannotRead{"hovar: cannot read <file>"};
  Messages::Pattern cannotWrite{"hovar: cannot write <file>"};
  Messages::Pattern noInstallation{
      "hovar: cannot find its own installation: the system does not say where this command is, "
      "which takes /proc on Linux"};
  Messages::Pattern notRegular{"hovar: <file> is <kind>; a regular file is required"};
};

inline constexpr ToolMessages kToolMessages;

}  // namespace Hovar
