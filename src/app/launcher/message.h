#pragma once

#include <string_view>

namespace Hovar {

/// Writes the line "hovar: " + `text` on standard error. That it cannot be written is not told.
void Say(std::string_view text);

}  // namespace Hovar
