#include "tools/plan/run_plan.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "tools/plan/estimating_equations.h"
#include "tools/support/files.h"
#include "tools/support/paths.h"

namespace Hovar {
namespace {

// Beyond these a list of batches is taken for one that does not end.
constexpr std::size_t kMostFiles = 10'000;
constexpr std::size_t kDeepestNesting = 64;

void AddSeed(PlannedRun& run, const DefinitionFile& definition) {
  for (const DefinedValue& value : definition.values) {
    if (value.element == Element::kSeed) {
      run.seedType = value.type;
    } else if (value.element == Element::kSeedWord) {
      run.seedWords.push_back(value.text);
    }
  }
}

PlannedRun PlanOf(const DefinitionFile& definition) {
  PlannedRun run;
  run.kind = definition.kind;
  run.definition = definition.path;
  run.definitionBytes = *definition.text.Bytes();
  run.data = definition.data;
  run.coefficients = definition.coefficients;
  run.usesEstimatingEquations = UsesEstimatingEquations(definition.analysis);
  run.hasUnfitDraws = DrawsWithEstimatingEquations(definition);
  run.burnin = std::max(definition.mcmc.burnin, 0);
  run.steps = std::max(definition.mcmc.steps, 0);
  run.folder = definition.folder;
  run.logFile = definition.outputs.front().path;
  for (const PlannedFile& input : definition.inputs) {
    if (!input.path.empty()) {
      run.inputs.push_back(input.path);
    }
  }
  for (const PlannedFile& output : definition.outputs) {
    run.outputs.push_back(output.path);
  }
  AddSeed(run, definition);
  return run;
}

void Follow(RunPlan& plan, const std::string& path, std::optional<std::string> bytes,
            std::vector<std::string>& batches);

void FollowBatch(RunPlan& plan, const DefinitionFile& batch, std::vector<std::string>& batches) {
  const bool isCircle = std::find(batches.begin(), batches.end(), batch.path) != batches.end();
  if (isCircle || batches.size() >= kDeepestNesting) {
    return;
  }
  batches.push_back(batch.path);
  for (const std::string& simulation : batch.simulations) {
    if (plan.definitions.size() < kMostFiles) {
      Follow(plan, simulation, ReadSmallFile(simulation), batches);
    }
  }
  batches.pop_back();
}

/// `bytes` is nothing when the file cannot be read.
void Follow(RunPlan& plan, const std::string& path, std::optional<std::string> bytes,
            std::vector<std::string>& batches) {
  plan.definitions.push_back(path);
  if (!bytes) {
    if (plan.unreadable.empty() && IsSmallFile(path)) {
      plan.unreadable = path;
    }
    return;
  }
  const DefinitionReading reading = ReadDefinition({path, std::move(bytes)});
  const std::optional<DefinitionFile>& definition = reading.definition;
  if (batches.empty()) {
    plan.kind = definition ? std::optional(definition->kind) : std::nullopt;
    plan.definitionBytes = *(definition ? definition->text : reading.text).Bytes();
  }
  if (definition && definition->kind == RunKind::kBatch) {
    FollowBatch(plan, *definition, batches);
  } else if (definition) {
    plan.runs.push_back(PlanOf(*definition));
  }
}

}  // namespace

RunPlan MakeRunPlan(const std::string& definition) {
  RunPlan plan;
  plan.definition = definition;
  std::vector<std::string> batches;
  Follow(plan, definition, ReadSmallFile(definition), batches);
  return plan;
}

RunPlan MakeRunPlan(const std::string& definition, std::string bytes) {
  RunPlan plan;
  plan.definition = definition;
  std::vector<std::string> batches;
  Follow(plan, definition, std::move(bytes), batches);
  return plan;
}

ProtectedFiles FilesOf(const RunPlan& plan) {
  std::set<std::string> paths(plan.definitions.begin(), plan.definitions.end());
  for (const PlannedRun& run : plan.runs) {
    paths.insert(run.inputs.begin(), run.inputs.end());
    for (const std::string& output : run.outputs) {
      paths.insert(output);
      paths.insert(ParentOf(output));
    }
  }
  ProtectedFiles files;
  for (const std::string& path : paths) {
    files.Add(path);
  }
  return files;
}

}  // namespace Hovar
