#pragma once

#include <string_view>
#include <vector>

namespace Hovar {

/// The command `hovar --check [--strict] [--data] DEFINITION`: tells on standard output what the
/// program would reject in a definition and the files that it names, and what would surprise,
/// without running anything. docs/checking.md describes it. `arguments` are those behind --check.
/// Result: the exit status: 0, or 1 after an error (with --strict a warning too), for a wrong
/// command line, and when standard output cannot be written.
/// Errors: std::bad_alloc.
int RunCheck(const std::vector<std::string_view>& arguments);

}  // namespace Hovar
