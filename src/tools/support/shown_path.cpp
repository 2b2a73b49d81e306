#include "tools/support/shown_path.h"

#include <algorithm>

#include "foundation/io/platform/platform.h"
#include "tools/support/sentence_parts.h"

namespace Hovar {
namespace {

constexpr char kSlash = '/';

bool IsSlashSystem() noexcept { return Vell::IO::Platform::FolderSeparator() == kSlash; }

/// True for bytes without a special meaning in the system's command lines.
bool IsPlain(char c) noexcept {
  constexpr std::string_view kPlain = "/._-+,:@%=";
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         static_cast<unsigned char>(c) >= 0x80 || (c == '\\' && !IsSlashSystem()) ||
         kPlain.find(c) != std::string_view::npos;
}

/// What stands between $' and ' in a shell for a text; the escapes of Printable are those of shells.
std::string EscapedForShell(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    escaped += c == '\\' || c == '\'' ? std::string{'\\', c} : std::string(1, c);
  }
  return Printable(escaped);
}

}  // namespace

std::string ShownPath(std::string_view path) {
  std::string shown(path);
  if (IsSlashSystem()) {
    std::replace(shown.begin(), shown.end(), '\\', kSlash);
  }
  return shown;
}

std::string PastablePath(std::string_view path) { return ShellWord(ShownPath(path)); }

std::string ShellWord(std::string_view text) {
  std::string shown(text);
  if (!shown.empty() && IsPrintable(shown) && std::all_of(shown.begin(), shown.end(), IsPlain)) {
    return shown;
  }
  if (!IsSlashSystem()) {
    return '"' + shown + '"';  // a name holds no double quote there
  }
  if (!IsPrintable(shown)) {
    return "$'" + EscapedForShell(shown) + '\'';
  }
  std::string word = "'";
  for (const char c : shown) {
    word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return word + '\'';
}

}  // namespace Hovar
