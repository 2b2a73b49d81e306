#include "tools/support/replacement.h"

#include <array>

#include "foundation/io/platform/device_files.h"
#include "foundation/io/platform/folders.h"
#include "tools/support/files.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/paths.h"
#include "tools/support/shown_path.h"
#include "tools/support/text.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

bool HasEndingOf(const std::string& path, OwnOutput kind) {
  const std::string name = LowerCase(std::string(LastName(path)));
  return kind == OwnOutput::kRecord ? name.ends_with(".json")
                                    : name.ends_with(".html") || name.ends_with(".htm");
}

}  // namespace

bool BeginsOwnOutput(std::string_view head, OwnOutput kind) noexcept {
  if (kind == OwnOutput::kRecord) {
    constexpr std::string_view kBegin = "{\n  \"format\": \"hovar run record\"";
    return head.starts_with(kBegin);
  }
  return head.starts_with("<!DOCTYPE html>") &&
         head.substr(0, kOwnOutputHead).find("<title>Hovar report</title>") !=
             std::string_view::npos;
}

bool IsOwnOutput(const std::string& path, OwnOutput kind) {
  if (Platform::KindOf(path.c_str()) != Platform::PathKind::kFile) {
    return false;
  }
  const InputFile file(path);
  std::array<char, kOwnOutputHead> head;
  const std::int64_t count = file.IsOpen() ? file.Read(head) : -1;
  return count > 0 && BeginsOwnOutput({head.data(), static_cast<std::size_t>(count)}, kind);
}

bool MayReplace(const std::string& path, OwnOutput kind) {
  const bool isRecord = kind == OwnOutput::kRecord;
  const auto isLost = [&] {
    return Platform::KindOf(path.c_str()) == Platform::PathKind::kFile &&
           !HasEndingOf(path, kind) && !IsOwnOutput(path, kind) &&
           !(isRecord && FileSize(path) == 0);
  };
  if (Platform::OwnStreamNamed(path.c_str()) != Platform::kNoFile || !isLost()) {
    return true;
  }
  const std::string file = PastablePath(path);
  SayLine(isRecord ? Filled(kToolMessages.wouldReplaceRecord, file)
                   : Filled(kToolMessages.wouldReplacePage, file));
  return false;
}

}  // namespace Hovar
