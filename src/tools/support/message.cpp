#include "tools/support/message.h"

#include <string>

#include "foundation/io/platform/platform.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

void Say(std::string_view text) {
  std::string line("hovar: ");
  line.append(text);
  line.push_back('\n');
  Platform::WriteFile(Platform::kStandardError, line.data(), line.size());
}

bool Print(std::string_view text) {
  const bool isWritten = Platform::WriteFile(Platform::kStandardOutput, text.data(), text.size());
  if (!isWritten) {
    Say("cannot write to standard output");
  }
  return isWritten;
}

}  // namespace Hovar
