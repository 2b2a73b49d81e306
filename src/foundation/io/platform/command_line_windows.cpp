#include "foundation/io/platform/command_line_windows.h"

#include <cwchar>

namespace Vell::IO::Platform {

CommandLine::CommandLine(const char* const* arguments) noexcept {
  for (const char* const* argument = arguments; *argument != nullptr; ++argument) {
    WideBuffer wide;
    if (ToWide(*argument, wide.data(), kMostWideCharacters) == 0) {
      fits_ = false;
      return;
    }
    if (argument == arguments) {
      AppendName(wide.data());
    } else {
      Append(L' ');
      AppendArgument(wide.data());
    }
  }
  Append(L'\0');
}

void CommandLine::Append(wchar_t character) noexcept {
  fits_ = fits_ && length_ < text_.size();
  if (fits_) {
    text_[length_++] = character;
  }
}

void CommandLine::Append(std::size_t count, wchar_t character) noexcept {
  for (; count > 0; --count) {
    Append(character);
  }
}

/// The program's name has rules of its own, which are not the same everywhere where a backslash
/// stands before a double quote. So there are quotes only where a blank asks for them; no file
/// has one in its name.
void CommandLine::AppendName(const wchar_t* name) noexcept {
  const bool isQuoted = *name == L'\0' || std::wcspbrk(name, L" \t\r\n") != nullptr;
  fits_ = fits_ && std::wcschr(name, L'"') == nullptr;
  Append(isQuoted ? 1 : 0, L'"');
  for (; *name != L'\0'; ++name) {
    Append(*name);
  }
  Append(isQuoted ? 1 : 0, L'"');
}

void CommandLine::AppendArgument(const wchar_t* argument) noexcept {
  Append(L'"');
  std::size_t backslashes = 0;
  for (; *argument != L'\0'; ++argument) {
    if (*argument == L'"') {
      Append(backslashes + 1, L'\\');
    }
    backslashes = *argument == L'\\' ? backslashes + 1 : 0;
    Append(*argument);
  }
  Append(backslashes, L'\\');
  Append(L'"');
}

}  // namespace Vell::IO::Platform
