#pragma once

#include <string>

namespace Hovar {

/// What a supervised run does beside the program's own work.
struct RunSettings {
  std::string definition;
  std::string recordFile;  // of the run record; empty: none is written
  bool keepOutputs = false;
  bool showProgress = false;
};

/// Runs a definition as a child process, with a bar instead of its lines, with a run record, or
/// both. Returns the exit status: the program's, or 1 when the launcher's own part failed.
int RunSupervised(const RunSettings& settings);

}  // namespace Hovar
