#include "tools/run/own_files.h"

#include <algorithm>
#include <array>
#include <utility>

#include "foundation/io/platform/folders.h"
#include "tools/run/messages.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/paths.h"
#include "tools/support/replacement.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

std::string BesideLog(const RunPlan& plan) {
  return CaptureOf(plan.runs.empty() ? plan.definition : plan.runs.front().logFile);
}

}  // namespace

std::optional<OwnFiles> ChooseOwnFiles(const RunSettings& settings, const RunPlan& plan) {
  OwnFiles files;
  files.protectedFiles = FilesOf(plan);
  if (settings.showProgress) {
    const std::array<std::string, 2> captures{BesideLog(plan), CaptureOf(plan.definition)};
    for (const std::string& capture : captures) {
      if (files.protectedFiles.Find(capture) != nullptr) {
        Say(kRunMessages.linesAreOfRun, PastablePath(capture));
        return std::nullopt;
      }
    }
    std::for_each(captures.begin(), captures.end(),
                  [&files](const std::string& capture) { files.protectedFiles.Add(capture); });
  }
  const std::string& record = settings.recordFile;
  if (!record.empty() && files.protectedFiles.Find(record) != nullptr) {
    Say(kRunMessages.recordIsOfRun, record);
    return std::nullopt;
  }
  const bool mayRecord =
      record.empty() || settings.keepOutputs || MayReplace(record, OwnOutput::kRecord);
  return mayRecord ? std::optional(std::move(files)) : std::nullopt;
}

bool OpenRecord(OutputFile& record, const std::string& name, const RunPlan& plan) {
  bool isOpen = record.Open();
  if (!isOpen && !plan.runs.empty() && IsSameFile(ParentOf(name), plan.runs.front().folder)) {
    Platform::CreateFolder(plan.runs.front().folder.c_str());
    isOpen = record.Open();
  }
  if (!isOpen) {
    Say(kToolMessages.cannotWriteBecause, PastablePath(name), record.Reason());
  }
  return isOpen;
}

std::string CaptureFor(const RunPlan& plan) {
  if (!plan.runs.empty()) {
    const std::string& folder = plan.runs.front().folder;
    Platform::CreateFolder(folder.c_str());
    if (Platform::FolderIsWritable(folder.c_str())) {
      return BesideLog(plan);
    }
  }
  return CaptureOf(plan.definition);
}

}  // namespace Hovar
