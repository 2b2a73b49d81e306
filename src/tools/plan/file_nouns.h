#pragma once

#include <string_view>

#include "app/definition/elements.h"

namespace Hovar {

/// What a file of this role is called in a sentence: "log file". Empty for a folder or no file.
std::string_view NounOf(FileRole role) noexcept;

}  // namespace Hovar
