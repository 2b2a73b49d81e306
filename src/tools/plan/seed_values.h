#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "tools/plan/definition_file.h"

namespace Hovar {

/// The two values of a seed of the type Vector, or nothing for one from the clock.
std::optional<std::array<const DefinedValue*, 2>> SeedValuesOf(const DefinitionFile& definition);

/// A word of a seed as the program reads it: the number after white space.
std::uint32_t SeedWordOf(const DefinedValue& value);

}  // namespace Hovar
