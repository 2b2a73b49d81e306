#include "tools/run/kept_outputs.h"

#include <algorithm>

#include "foundation/io/platform/folders.h"
#include "tools/run/messages.h"
#include "tools/support/message.h"
#include "tools/support/paths.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

bool IsAmong(const std::string& path, const std::vector<std::string>& paths) {
  return std::any_of(paths.begin(), paths.end(),
                     [&path](const std::string& other) { return IsSameFile(path, other); });
}

/// An input of a run that would be gone when the run starts, or the empty text.
std::string EndangeredInput(const RunPlan& plan, const std::vector<std::string>& outputs) {
  std::vector<std::string> written;
  for (const PlannedRun& run : plan.runs) {
    std::vector<std::string> inputs = run.inputs;
    inputs.push_back(run.definition);
    for (const std::string& input : inputs) {
      if (IsAmong(input, outputs) && !IsAmong(input, written)) {
        return input;
      }
    }
    written.insert(written.end(), run.outputs.begin(), run.outputs.end());
  }
  return IsAmong(plan.definition, outputs) ? plan.definition : std::string();
}

bool MoveAside(const std::string& path) {
  constexpr int kMostNumbers = 1'000'000;
  for (int number = 1; number < kMostNumbers; ++number) {
    std::string other = path;
    other.append(".").append(std::to_string(number));
    if (Platform::KindOf(other.c_str()) != Platform::PathKind::kMissing) {
      continue;
    }
    if (Platform::Rename(path.c_str(), other.c_str())) {
      Say(kRunMessages.kept, PastablePath(path), PastablePath(other));
      return true;
    }
    break;
  }
  Say(kRunMessages.cannotMoveAside, PastablePath(path));
  return false;
}

}  // namespace

bool KeepOutputs(const RunPlan& plan, const std::vector<std::string>& further) {
  std::vector<std::string> outputs;
  for (const PlannedRun& run : plan.runs) {
    outputs.insert(outputs.end(), run.outputs.begin(), run.outputs.end());
  }
  outputs.insert(outputs.end(), further.begin(), further.end());
  const std::string input = EndangeredInput(plan, outputs);
  if (!input.empty()) {
    Say(kRunMessages.wouldMoveInput, input);
    return false;
  }
  return std::all_of(outputs.begin(), outputs.end(), [](const std::string& output) {
    return Platform::KindOf(output.c_str()) != Platform::PathKind::kFile || MoveAside(output);
  });
}

}  // namespace Hovar
