#include "tools/support/unattended_input.h"

#include "foundation/io/platform/platform.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

void DetachUnattendedInput() noexcept {
  if (!Platform::StandardInputIsTerminal()) {
    Platform::DetachStandardInput();
  }
}

}  // namespace Hovar
