#pragma once

// Paths as the launcher shows them. The program joins folder and name with a backslash on every
// system and accepts one as a separator; other programs of a system may not.

#include <string>
#include <string_view>

namespace Hovar {

/// A path that was put together, as this system's programs write it: where they separate folders
/// with a slash, with slashes. What a user or a definition wrote as a whole is shown as it is.
std::string ShownPath(std::string_view path);

/// The same as one word of a command line, to be pasted into a shell: in quotes where it holds
/// anything with a special meaning there, and as $'...' where it holds what is not printable.
std::string PastablePath(std::string_view path);

/// A text as one word of a command line, its bytes as they are.
std::string ShellWord(std::string_view text);

}  // namespace Hovar
