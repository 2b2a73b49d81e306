#include "tools/run/program_start.h"

#include <optional>

#include "foundation/exit_status.h"
#include "foundation/growable_array.h"
#include "foundation/io/platform/platform.h"
#include "tools/run/messages.h"
#include "tools/support/installation.h"
#include "tools/support/message.h"
#include "tools/support/unattended_input.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

int ExecuteProgram(std::span<const char* const> arguments) {
  const std::optional<Installation> installation = FindInstallation();
  if (!installation) {
    return kFailure;
  }
  DetachUnattendedInput();
  Vell::GrowableArray<const char*> programArguments;
  programArguments.Append(installation->programName.CStr());
  for (const char* const argument : arguments) {
    programArguments.Append(argument);
  }
  programArguments.Append(nullptr);
  Platform::BecomeProgram(installation->program.CStr(), programArguments.begin(),
                          []() noexcept { SayWithoutMemory(kRunMessages.outlivesCommand); });
  Vell::String line(kRunMessages.cannotStart.Piece(0));
  line.Append(installation->program);
  line.Append('\n');
  Platform::WriteFile(Platform::kStandardError, line.CStr(), line.View().size());
  return kFailure;
}

}  // namespace Hovar
