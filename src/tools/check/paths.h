#pragma once

// Paths as the program takes them on every system: both '\\' and '/' separate folders.

#include <string>
#include <string_view>

namespace Hovar {

constexpr bool IsSeparator(char c) noexcept { return c == '/' || c == '\\'; }

/// A path as one text for all its spellings: absolute, '/' between folders, without "." and "..".
/// Symbolic links are not looked at.
std::string NormalPath(std::string_view path);

/// What stands before the last name of a path, which must have one: "." where nothing does.
std::string ParentOf(std::string_view path);

std::string_view LastName(std::string_view path);

/// The text with the capital letters of ASCII as small ones.
std::string SmallLetters(std::string text);

/// True for two spellings of one path, and for two paths that lead to one file.
bool IsSameFile(const std::string& one, const std::string& other);

bool DiffersInCaseOnly(const std::string& one, const std::string& other);

}  // namespace Hovar
