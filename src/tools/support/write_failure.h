#pragma once

#include <string_view>

namespace Hovar {

/// Why the last call of the system failed, if it created, wrote or renamed a file: a text of
/// kWriteReasons.
std::string_view LastWriteReason() noexcept;

}  // namespace Hovar
