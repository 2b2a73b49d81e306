#pragma once

// Where the parts of the system are, as seen from the launcher's own file: the launcher is
// ROOT/bin/hovar in an installed or built tree and ROOT/hovar in an archive that was unpacked
// somewhere; ROOT/libexec/hovar/hovar is the program, ROOT/share/hovar holds the rest.

#include <optional>

#include "foundation/string.h"

namespace Hovar {

struct Installation {
  Vell::String root;     // ROOT
  Vell::String program;  // the program's file below it
  Vell::String
      programName;  // the same under the name that it must see as its own: with a backslash
};

/// Finds the installation: ROOT is the launcher's own folder if the program is found there, else
/// the one above. Nothing, and a line on standard error, when the system does not say where the
/// launcher is. No container of the standard library is used, as in the program itself.
std::optional<Installation> FindInstallation();

}  // namespace Hovar
