#pragma once

// What a terminal would take for a command.

#include <string>
#include <string_view>

namespace Testing {

/// The control characters of a text other than line feeds and tabs, each as its number: C0 and DEL;
/// of the characters of UTF-8, C1 and those that change the direction of writing. A byte that fits
/// no character and that a terminal of one byte a character would take for C1 counts too.
std::string ControlCharactersIn(std::string_view text);

}  // namespace Testing
