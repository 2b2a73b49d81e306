#pragma once

// Paths as the program takes them on every system: both '\\' and '/' separate folders.

#include <string>
#include <string_view>

namespace Hovar {

constexpr bool IsSeparator(char c) noexcept { return c == '/' || c == '\\'; }

/// A path as one text for all its spellings: absolute, '/' between folders, without "." and "..".
/// Symbolic links are not resolved: file_identity.h says when two paths mean one file.
std::string NormalPath(std::string_view path);

/// The part of a path before its last name, which is required: "." when there is none.
std::string ParentOf(std::string_view path);

/// The path without the separators that it ends with.
std::string_view WithoutEnd(std::string_view path);

/// Where a file of this path would be made: what the symbolic links at its end lead to, or the path
/// itself where there is none. Empty when the links lead in a circle.
std::string BehindLinks(const std::string& path);

/// The part of a path after its last separator.
std::string_view LastName(std::string_view path);

/// True for two paths that differ in nothing but the case of ASCII letters.
bool DiffersInCaseOnly(const std::string& one, const std::string& other);

}  // namespace Hovar
