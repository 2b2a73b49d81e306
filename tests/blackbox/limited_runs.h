#pragma once

// Runs of the program under limits that a shell sets. POSIX only.

#include <string>

#include "runs.h"

namespace Testing {

/// A run under limits of the shell, as `ulimit -v 1000000`. The program is started by a link whose
/// name holds the backslash.
ProcessResult RunLimited(const ScratchFolder& folder, const std::string& limits,
                         const std::string& definition);

#if HOVAR_IS_SANITIZED
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

/// A run that gets no block of a gigabyte. The address sanitizer needs more addresses than any
/// limit of the shell could allow, but has a limit of its own; it writes a warning of its own then.
ProcessResult RunWithLittleMemory(const ScratchFolder& folder, const std::string& definition);

}  // namespace Testing
