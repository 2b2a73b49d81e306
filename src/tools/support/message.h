#pragma once

#include <string_view>

namespace Hovar {

/// Writes the line "hovar: " + `text` on standard error. That it cannot be written is not told.
void Say(std::string_view text);

/// Writes a text on standard output. False when that fails, which a line on standard error says.
bool Print(std::string_view text);

}  // namespace Hovar
