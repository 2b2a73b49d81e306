#pragma once

#include <string_view>

namespace Hovar {

/// Writes the line "hovar: " + `text` on standard error. A failure to write it is ignored.
void Say(std::string_view text);

/// Writes a text on standard output. False when that fails, which a line on standard error says.
bool Print(std::string_view text);

}  // namespace Hovar
