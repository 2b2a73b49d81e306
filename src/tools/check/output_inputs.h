#pragma once

// Outputs of a run that are its own inputs.

#include <string>

#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// "log file "out/analysis.log"", for a message about it.
std::string Subject(const PlannedFile& output);

/// Warns of an output that is, or would on Windows be, one of the run's own inputs; a log file, which
/// is emptied before they are read, is an error. Returns whether the output is an input.
bool WarnOfInputs(Findings& findings, const DefinitionFile& definition, const PlannedFile& output);

}  // namespace Hovar
