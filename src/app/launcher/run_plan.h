#pragma once

// What a definition is about to do, as far as its text tells: the runs in their order (a Batch is
// followed into the definitions that it lists) and the files that each reads and writes.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/launcher/definition_text.h"

namespace Hovar {

enum class RunKind { kAnalysis, kPrediction, kValidation };

struct PlannedRun {
  RunKind kind = RunKind::kAnalysis;
  std::string definition;  // path of the file, as written
  std::string definitionBytes;
  std::string data;
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
  std::string root;  // name of the root element; empty when the file tells none
  std::string definitionBytes;
  /// The runs that the text tells. A definition that cannot be read, is not complete, or closes a
  /// circle of batches adds nothing.
  std::vector<PlannedRun> runs;
  /// Definition files that were looked at.
  std::size_t filesFollowed = 0;
};

std::string_view NameOf(RunKind kind) noexcept;

RunPlan MakeRunPlan(const std::string& definition);

/// What a definition other than a Batch would run; nothing when the text is not complete or its
/// root is another one.
std::optional<PlannedRun> PlanRun(const std::string& path, const DefinitionText& definition);

}  // namespace Hovar
