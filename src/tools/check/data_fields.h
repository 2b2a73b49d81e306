#pragma once

// The fields of a data file, for sentences.

#include <cstddef>
#include <cstdint>
#include <string>

#include "tools/plan/definition_file.h"

namespace Hovar {

/// Fields of a line before the indicators: key, hospital and outcome.
inline constexpr std::int32_t kLeadingFields = 3;

/// What the field at an index is, with its name from the header: "Z, "ZAge80"".
std::string RoleOf(const DefinitionFile& definition, const std::string& header, std::size_t field);

/// True when RoleOf tells of a field that may be missing.
bool MayBeMissing(const std::string& role);

}  // namespace Hovar
