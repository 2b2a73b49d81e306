#include "tools/run/kept_outputs.h"

#include <algorithm>
#include <optional>

#include "foundation/io/platform/folders.h"
#include "tools/run/messages.h"
#include "tools/support/message.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

/// Files by identity, without more to say of them.
using Files = FileMap<bool>;

void AddAll(Files& files, const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    files.Set(path, true);
  }
}

bool IsAmong(const std::string& path, const Files& files) { return files.Find(path) != nullptr; }

/// An input of a run that would be gone when the run starts, or the empty text.
std::string EndangeredInput(const RunPlan& plan, const std::vector<std::string>& outputs) {
  Files moved;
  AddAll(moved, outputs);
  Files written;
  for (const PlannedRun& run : plan.runs) {
    std::vector<std::string> inputs = run.inputs;
    inputs.push_back(run.definition);
    for (const std::string& input : inputs) {
      if (IsAmong(input, moved) && !IsAmong(input, written)) {
        return input;
      }
    }
    AddAll(written, run.outputs);
  }
  return IsAmong(plan.definition, moved) ? plan.definition : std::string();
}

/// Moves a file aside, if it is one.
bool MoveAside(const std::string& path, const ProtectedFiles& files) {
  const std::optional<Platform::PathKind> kind = Platform::LookAt(path.c_str());
  if (kind && *kind != Platform::PathKind::kFile) {
    return true;
  }
  const std::string other =
      kind ? TakeNumberedName(path, files,
                              [&path](const std::string& name) {
                                return Platform::Rename(path.c_str(), name.c_str());
                              })
           : std::string();
  if (other.empty()) {
    Say(kRunMessages.cannotMoveAside, PastablePath(path));
    return false;
  }
  Say(kRunMessages.kept, PastablePath(path), PastablePath(other));
  return true;
}

}  // namespace

bool KeepOutputs(const RunPlan& plan, const ProtectedFiles& files,
                 const std::vector<std::string>& further) {
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
  return std::all_of(outputs.begin(), outputs.end(),
                     [&files](const std::string& output) { return MoveAside(output, files); });
}

}  // namespace Hovar
