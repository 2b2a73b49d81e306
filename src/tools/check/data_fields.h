#pragma once

// The fields of a data file, for sentences.

#include <cstddef>
#include <cstdint>
#include <string>

#include "tools/plan/definition_file.h"

namespace Hovar {

/// What the field at an index, from 0, is, with its name from the header: "Z, "ZAge80"".
std::string RoleOf(const DefinitionFile& definition, const std::string& header, std::size_t field);

/// True when RoleOf describes a field that may be missing.
bool MayBeMissing(const std::string& role);

/// True when RoleOf tells of a Z.
bool IsZ(const std::string& role);

}  // namespace Hovar
