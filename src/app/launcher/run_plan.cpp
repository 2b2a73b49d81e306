#include "app/launcher/run_plan.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "app/launcher/files.h"

namespace Hovar {
namespace {

// Beyond these a list of batches is taken for one that does not end.
constexpr std::size_t kMostFiles = 10'000;
constexpr std::size_t kDeepestNesting = 64;

std::optional<RunKind> KindOfRoot(std::string_view root) {
  for (const RunKind kind : {RunKind::kAnalysis, RunKind::kPrediction, RunKind::kValidation}) {
    if (root == NameOf(kind)) {
      return kind;
    }
  }
  return std::nullopt;
}

void AddSeed(PlannedRun& run, const DefinitionText& definition) {
  for (const DefinitionElement& element : definition.Elements()) {
    if (element.path == "Mcmc/Seed") {
      run.seedType = element.type;
    } else if (element.path == "Mcmc/Seed/Seed/Element") {
      run.seedWords.push_back(element.value);
    }
  }
}

void AddFiles(PlannedRun& run, const DefinitionText& definition) {
  for (const char* name :
       {"Input/Data", "Input/RegressionCoefficients", "Input/IndividualPredictions"}) {
    if (definition.Find(name) != nullptr) {
      run.inputs.push_back(definition.Value(name));
    }
  }
  for (const char* name :
       {"Output/LogFile", "Output/RegressionCoefficients", "Output/IndividualPredictions",
        "Output/HospitalPredictions", "Output/CStatistics"}) {
    if (definition.Find(name) != nullptr) {
      run.outputs.push_back(JoinPath(run.folder, definition.Value(name)));
    }
  }
  if (run.kind == RunKind::kAnalysis) {
    const std::string folder = JoinPath(run.folder, definition.Value("Output/McmcSubFolder"));
    run.outputs.push_back(JoinPath(folder, "Chain.csv"));
    run.outputs.push_back(JoinPath(folder, "Summary.csv"));
  }
}

void Follow(RunPlan& plan, const std::string& path, std::vector<std::string>& batches);

void FollowBatch(RunPlan& plan, const std::string& path, const DefinitionText& definition,
                 std::vector<std::string>& batches) {
  const bool isCircle = std::find(batches.begin(), batches.end(), path) != batches.end();
  if (isCircle || batches.size() >= kDeepestNesting) {
    return;
  }
  batches.push_back(path);
  for (const DefinitionElement& element : definition.Elements()) {
    if (element.path == "Simulations/Simulation" && plan.filesFollowed < kMostFiles) {
      Follow(plan, element.value, batches);
    }
  }
  batches.pop_back();
}

void Follow(RunPlan& plan, const std::string& path, std::vector<std::string>& batches) {
  ++plan.filesFollowed;
  std::optional<std::string> bytes = ReadSmallFile(path);
  if (!bytes) {
    return;
  }
  const DefinitionText definition(std::move(*bytes));
  if (batches.empty()) {
    plan.root = definition.Root();
    plan.definitionBytes = definition.Bytes();
  }
  if (definition.Root() == "Batch") {
    FollowBatch(plan, path, definition, batches);
  } else if (std::optional<PlannedRun> run = PlanRun(path, definition)) {
    plan.runs.push_back(std::move(*run));
  }
}

}  // namespace

std::string_view NameOf(RunKind kind) noexcept {
  switch (kind) {
    case RunKind::kAnalysis:
      return "Analysis";
    case RunKind::kPrediction:
      return "Prediction";
    case RunKind::kValidation:
      return "Validation";
  }
  return "";
}

std::optional<PlannedRun> PlanRun(const std::string& path, const DefinitionText& definition) {
  const std::optional<RunKind> kind = KindOfRoot(definition.Root());
  if (!kind || !definition.IsComplete()) {
    return std::nullopt;
  }
  PlannedRun run;
  run.kind = *kind;
  run.definition = path;
  run.definitionBytes = definition.Bytes();
  run.data = definition.Value("Input/Data");
  run.burnin = std::max(definition.Integer("Mcmc/Burnin"), 0);
  run.steps = std::max(definition.Integer("Mcmc/Steps"), 0);
  run.folder = definition.Value("Output/Folder");
  run.logFile = JoinPath(run.folder, definition.Value("Output/LogFile"));
  AddSeed(run, definition);
  AddFiles(run, definition);
  return run;
}

RunPlan MakeRunPlan(const std::string& definition) {
  RunPlan plan;
  plan.definition = definition;
  std::vector<std::string> batches;
  Follow(plan, definition, batches);
  return plan;
}

}  // namespace Hovar
