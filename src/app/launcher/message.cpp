#include "app/launcher/message.h"

#include <string>

#include "foundation/io/platform/platform.h"

namespace Hovar {

void Say(std::string_view text) {
  std::string line("hovar: ");
  line.append(text);
  line.push_back('\n');
  Vell::IO::Platform::WriteFile(Vell::IO::Platform::kStandardError, line.data(), line.size());
}

}  // namespace Hovar
