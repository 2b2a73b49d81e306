#pragma once

#include <string>

#include "tools/check/definition_checker.h"

namespace Hovar {

struct CheckSettings {
  std::string definition;
  bool isStrict = false;  // warnings count as errors
  Describe describe = Describe::kNothing;
};

/// The command `hovar --check [--strict] [--data] DEFINITION`: reports on standard output what the
/// program would reject in a definition and the files that it names, and what would surprise,
/// without running anything. docs/checking.md describes it.
/// Result: the exit status: 0, or 1 after an error (when strict after a warning too) and when
/// standard output cannot be written.
/// Errors: std::bad_alloc.
int RunCheck(const CheckSettings& settings);

}  // namespace Hovar
