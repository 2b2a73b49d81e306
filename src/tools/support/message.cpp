#include "tools/support/message.h"

#include "foundation/io/platform/platform.h"
#include "tools/support/messages.h"

namespace Hovar {

namespace Platform = Vell::IO::Platform;

void SayLine(std::string_view line) {
  std::string text = Printable(line);
  text.push_back('\n');
  Platform::WriteFile(Platform::kStandardError, text.data(), text.size());
}

void SayWithoutMemory(const Messages::Pattern& message) noexcept {
  Platform::WriteFile(Platform::kStandardError, message.Text().data(), message.Text().size());
  Platform::WriteFile(Platform::kStandardError, "\n", 1);
}

bool Print(std::string_view text) {
  const bool isWritten = Platform::WriteFile(Platform::kStandardOutput, text.data(), text.size());
  if (!isWritten) {
    Say(kToolMessages.cannotPrint);
  }
  return isWritten;
}

}  // namespace Hovar
