#pragma once

// What a definition is about to do: the runs in their order (a Batch is followed into the
// definitions that it lists) and the files that each reads and writes.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/definition/root_element.h"
#include "tools/plan/definition_file.h"
#include "tools/support/protected_files.h"

namespace Hovar {

struct PlannedRun {
  RunKind kind = RunKind::kAnalysis;
  std::string definition;  // path of the file, as written
  std::string definitionBytes;
  std::string data;
  /// The coefficient file that the run reads; empty for an Analysis.
  std::string coefficients;
  /// Of an Analysis: the flag, and whether its chain draws with estimating equations.
  bool usesEstimatingEquations = false;
  bool hasUnfitDraws = false;
  /// The Seed element: its type and, for fixed words, their texts as written.
  std::string seedType;
  std::vector<std::string> seedWords;
  /// Passes of imputation that the run reports at most.
  std::int64_t burnin = 0;
  std::int64_t steps = 0;
  std::string folder;
  std::string logFile;               // path, inside the folder
  std::vector<std::string> inputs;   // data file first
  std::vector<std::string> outputs;  // log file first
};

struct RunPlan {
  std::string definition;
  std::optional<RunKind> kind;  // of the definition; nothing when the program would refuse it
  std::string definitionBytes;
  /// The runs that the program would start. A definition that it would refuse, or that closes a
  /// circle of batches, adds nothing.
  std::vector<PlannedRun> runs;
  /// Definition files that were looked at, be they there or not, in this order; some several times.
  std::vector<std::string> definitions;
  /// The first definition file that is there but could not be read, or empty. The runs are then not
  /// all that the program may start.
  std::string unreadable;
};

RunPlan MakeRunPlan(const std::string& definition);

/// The same for a definition with these bytes, whatever its file holds.
RunPlan MakeRunPlan(const std::string& definition, std::string bytes);

/// All files and folders that the runs read or write.
ProtectedFiles FilesOf(const RunPlan& plan);

}  // namespace Hovar
