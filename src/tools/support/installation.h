#pragma once

// Where the parts of the system are, as seen from the launcher's own file: the launcher is
// ROOT/bin/hovar in an installed or built tree and ROOT/hovar in an archive that was unpacked
// somewhere; ROOT/libexec/hovar/hovar is the program, ROOT/share/hovar holds the rest.

#include "foundation/string.h"

namespace Hovar {

/// ROOT: the launcher's own folder if the program is found there, else the one above; the empty
/// text when it cannot be determined.
Vell::String InstallationFolder();

/// The program's file below ROOT.
Vell::String ProgramFileIn(const Vell::String& root);

/// The same file under the name that the program must see as its own: with a backslash.
Vell::String ProgramNameIn(const Vell::String& root);

}  // namespace Hovar
