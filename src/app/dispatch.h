#pragma once

// From a definition file to the runner that does what it says.

#include "app/runner.h"
#include "foundation/string.h"

namespace Hovar {

/// Opens a definition file, lets its root element choose the runner (Analysis, Prediction,
/// Validation or Batch), builds it from the element's content and checks the root's end tag. By
/// then the output folder and the empty log file of a single run exist, and the random generator is
/// seeded. What follows the root element is not read. The file is closed when this returns.
/// Errors: FileOpenException; Exception "Invalid definition file" for any other root; those of
///         reading the definition.
RunnerHandle DispatchDefinition(const Vell::String& path);

}  // namespace Hovar
