#include "tools/run/program_start.h"

#include "foundation/exit_status.h"
#include "foundation/growable_array.h"
#include "foundation/io/platform/platform.h"
#include "tools/run/messages.h"
#include "tools/support/installation.h"
#include "tools/support/unattended_input.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

int ExecuteProgram(std::span<const char* const> arguments) {
  const Vell::String root = InstallationFolder();
  const Vell::String file = ProgramFileIn(root);
  const Vell::String name = ProgramNameIn(root);
  DetachUnattendedInput();
  Vell::GrowableArray<const char*> programArguments;
  programArguments.Append(name.CStr());
  for (const char* const argument : arguments) {
    programArguments.Append(argument);
  }
  programArguments.Append(nullptr);
  Platform::BecomeProgram(file.CStr(), programArguments.begin());
  Vell::String line(kRunMessages.cannotStart.Piece(0));
  line.Append(file);
  line.Append('\n');
  Platform::WriteFile(Platform::kStandardError, line.CStr(), line.View().size());
  return kFailure;
}

}  // namespace Hovar
