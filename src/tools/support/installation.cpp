#include "tools/support/installation.h"

#include <array>
#include <string_view>

#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/platform.h"
#include "program_names.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

Vell::String InstallationFolder() {
  std::array<char, 4096> file;
  if (!Platform::ProgramFile(file.data(), file.size())) {
    return Vell::String();
  }
  Vell::String folder(file.data());
  for (int level = 0; level < 2; ++level) {
    const std::int32_t separator = folder.FindLast('/');
    if (separator < 0) {
      return Vell::String();
    }
    folder.Truncate(separator);
    if (Platform::KindOf(ProgramFileIn(folder).CStr()) == Platform::PathKind::kFile) {
      break;
    }
  }
  return folder;
}

Vell::String ProgramFileIn(const Vell::String& root) {
  return Vell::Concatenate(root, kProgramFile);
}

Vell::String ProgramNameIn(const Vell::String& root) {
  return Vell::Concatenate(root, kProgramName);
}

}  // namespace Hovar
