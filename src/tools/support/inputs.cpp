#include "tools/support/inputs.h"

#include <string_view>

#include "foundation/io/platform/folders.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

/// What a path leads to, for a sentence; empty for a regular file and for nothing.
std::string_view IrregularKind(const char* path) noexcept {
  switch (Platform::SpecialKindOf(path)) {
    case Platform::SpecialKind::kNamedPipe:
      return "a named pipe";
    case Platform::SpecialKind::kSocket:
      return "a socket";
    case Platform::SpecialKind::kDevice:
      return "a device";
    case Platform::SpecialKind::kNone:
      break;
  }
  return Platform::KindOf(path) == Platform::PathKind::kFolder ? "a folder" : "";
}

}  // namespace

bool RefuseIrregular(const std::string& path) {
  const std::string_view kind = IrregularKind(path.c_str());
  if (!kind.empty()) {
    Say(kToolMessages.notRegular, PastablePath(path), kind);
  }
  return !kind.empty();
}

}  // namespace Hovar
