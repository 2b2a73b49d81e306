#include "tools/support/installation.h"

#include <array>
#include <string_view>

#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/platform.h"
#include "program_names.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;
using Vell::String;

std::optional<Installation> FindInstallation() {
  std::array<char, 4096> file;
  if (!Platform::ProgramFile(file.data(), file.size())) {
    SayWithoutMemory(kToolMessages.noInstallation);
    return std::nullopt;
  }
  String root(file.data());
  for (int level = 0; level < 2; ++level) {
    const std::int32_t separator = root.FindLast('/');
    if (separator < 0) {
      SayWithoutMemory(kToolMessages.noInstallation);
      return std::nullopt;
    }
    root.Truncate(separator);
    if (Platform::IsFileOfSystem(Vell::Concatenate(root, kProgramFile).CStr())) {
      break;
    }
  }
  return Installation{root, Vell::Concatenate(root, kProgramFile),
                      Vell::Concatenate(root, kProgramName)};
}

}  // namespace Hovar
