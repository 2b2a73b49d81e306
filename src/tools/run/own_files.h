#pragma once

// The files that a watched run writes beside the program's own: the record and the program's lines.

#include <optional>
#include <string>

#include "tools/plan/run_plan.h"
#include "tools/run/capture.h"
#include "tools/run/supervised_run.h"
#include "tools/support/output_file.h"
#include "tools/support/protected_files.h"

namespace Hovar {

struct OwnFiles {
  /// What the record must not meet: files of the runs, and a kept capture.
  ProtectedFiles protectedFiles;
};

/// Chooses what a watched run writes. Nothing, and a line on standard error, when record or capture
/// would take the place of a file of the run, or the record that of a file that is none.
std::optional<OwnFiles> ChooseOwnFiles(const RunSettings& settings, const RunPlan& plan);

/// Begins the record. A folder that it lies in and that the first run is going to make is made. False,
/// with a line on standard error, when it cannot be written.
bool OpenRecord(OutputFile& record, const std::string& name, const RunPlan& plan);

/// The name of the capture: beside the log of the first run, whose folder is made as the program would
/// make it. Without a log to be beside, it is beside the definition.
std::string CaptureFor(const RunPlan& plan);

}  // namespace Hovar
