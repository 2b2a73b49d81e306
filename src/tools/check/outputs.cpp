#include "tools/check/outputs.h"

#include <algorithm>
#include <vector>

#include "foundation/io/platform/platform.h"
#include "tools/check/finding_messages.h"
#include "tools/check/output_messages.h"
#include "tools/check/paths.h"
#include "tools/support/message.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;
using Platform::PathKind;

constexpr std::size_t kLongestName = 255;  // bytes, of the usual file systems

/// True when a file that exists could be written.
bool IsWritable(const std::string& path) {
  const Platform::FileHandle file =
      Platform::OpenFile(path.c_str(), Platform::Access::kReadWriteExisting);
  return file != Platform::kNoFile && Platform::CloseFile(file);
}

struct Input {
  std::string what;
  const std::string& path;
};

std::vector<Input> InputsOf(const DefinitionFile& definition) {
  std::vector<Input> inputs = {{"data file", definition.data},
                               {"definition file", definition.path}};
  if (!definition.coefficients.empty()) {
    inputs.push_back({"coefficient file", definition.coefficients});
  }
  if (!definition.individualPredictions.empty()) {
    inputs.push_back({"file of individual predictions", definition.individualPredictions});
  }
  return inputs;
}

std::string Subject(const PlannedOutput& output) {
  return output.what + ' ' + Quoted(ShownPath(output.path));
}

/// Outputs that are or would on Windows be one of the run's own inputs.
void WarnOfInputs(Findings& findings, const DefinitionFile& definition,
                  const PlannedOutput& output) {
  const bool isLog = &output == &definition.outputs.front();
  for (const Input& input : InputsOf(definition)) {
    const Place place = definition.PlaceOfValue(output.element);
    if (IsSameFile(output.path, input.path)) {
      if (isLog && input.path != definition.path) {
        findings.AddError(definition.path, place,
                          Filled(kOutputMessages.emptiesInput, Subject(output), input.what));
      } else {
        findings.AddWarning(definition.path, place,
                            Filled(kOutputMessages.overwritesInput, Subject(output), input.what),
                            Weight::kFiles);
      }
    } else if (DiffersInCaseOnly(output.path, input.path)) {
      findings.AddWarning(definition.path, place,
                          Filled(kOutputMessages.caseOfInput, Subject(output), input.what),
                          Weight::kHarmless);
    }
  }
}

/// That an output is an earlier one; `run` is the number of the run that is checked.
std::string MeetingText(const PlannedOutput& output, const WrittenFile& earlier, int run) {
  const std::string subject = Subject(output);
  const std::string other = Quoted(earlier.definition);
  if (earlier.what == "log file") {
    return earlier.run == run ? Filled(kOutputMessages.logOfThisRun, subject, earlier.what)
                              : Filled(kOutputMessages.logOfOtherRun, subject, earlier.what, other);
  }
  return earlier.run == run
             ? Filled(kOutputMessages.outputOfThisRun, subject, earlier.what)
             : Filled(kOutputMessages.outputOfOtherRun, subject, earlier.what, other);
}

}  // namespace

const WrittenFile* OutputCheck::Written(std::string_view path) const {
  const auto found = files_.find(NormalPath(path));
  return found != files_.end() ? &found->second : nullptr;
}

bool OutputCheck::LogEmpties(const DefinitionFile& definition, const std::string& input) {
  return IsSameFile(definition.outputs.front().path, input);
}

PathKind OutputCheck::KindOf(const std::string& path) const {
  const std::string normal = NormalPath(path);
  if (files_.contains(normal)) {
    return PathKind::kFile;
  }
  if (folders_.contains(normal)) {
    return PathKind::kFolder;
  }
  return Platform::KindOf(OnDisk(path).c_str());
}

/// The path as the system can follow it: a folder that does not exist yet hides from it where ".."
/// leads from there.
std::string OutputCheck::OnDisk(const std::string& path) const {
  const std::string_view text = path;
  for (std::size_t i = text.find(".."); i != std::string_view::npos; i = text.find("..", i + 1)) {
    if (i > 0 && IsSeparator(text[i - 1]) && folders_.contains(NormalPath(text.substr(0, i - 1)))) {
      return NormalPath(path);
    }
  }
  return path;
}

bool OutputCheck::MayWriteIn(const std::string& folder) const {
  return folders_.contains(NormalPath(folder)) ||
         Platform::FolderIsWritable(OnDisk(folder).c_str());
}

/// Makes a folder in memory; false when that gives an error. A folder that cannot be made is none
/// where it exists as something else: then opening a file in it shows the fault.
bool OutputCheck::MakeFolder(Findings& findings, const DefinitionFile& definition,
                             const std::string& path, std::string_view element) {
  const std::string name = element == "Output/Folder" ? path : ShownPath(path);  // put together
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(element), text);
    return false;
  };
  switch (KindOf(path)) {
    case PathKind::kFolder:
      return true;
    case PathKind::kFile:
    case PathKind::kOther:
      return addError(Filled(kOutputMessages.folderIsFile, Quoted(name)));
    case PathKind::kMissing:
      break;
  }
  const std::string parent = ParentOf(path);
  if (KindOf(parent) != PathKind::kFolder) {
    return addError(Filled(kOutputMessages.folderParent, Quoted(name), Quoted(ParentOf(name))));
  }
  if (!MayWriteIn(parent)) {
    return addError(
        Filled(kOutputMessages.folderNotWritable, Quoted(name), Quoted(ParentOf(name))));
  }
  if (LastName(name).size() > kLongestName) {
    return addError(Filled(kOutputMessages.folderNameTooLong, Quoted(name)));
  }
  folders_.emplace(NormalPath(path), true);
  return true;
}

bool OutputCheck::CanMake(Findings& findings, const DefinitionFile& definition,
                          const PlannedOutput& output) const {
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(output.element), text);
    return false;
  };
  switch (KindOf(output.path)) {
    case PathKind::kFolder:
      return addError(Filled(kOutputMessages.isFolder, Subject(output)));
    case PathKind::kFile:
      return files_.contains(NormalPath(output.path)) || IsWritable(OnDisk(output.path)) ||
             addError(Filled(kOutputMessages.cannotWrite, Subject(output)));
    case PathKind::kOther:
      return true;
    case PathKind::kMissing:
      break;
  }
  const std::string parent = ParentOf(output.path);
  if (KindOf(parent) != PathKind::kFolder) {
    return addError(Filled(kOutputMessages.parent, Subject(output), Quoted(ShownPath(parent))));
  }
  if (!MayWriteIn(parent)) {
    return addError(
        Filled(kOutputMessages.notWritable, Subject(output), Quoted(ShownPath(parent))));
  }
  return LastName(output.path).size() <= kLongestName ||
         addError(Filled(kOutputMessages.nameTooLong, Subject(output)));
}

/// Names that meet those of earlier outputs, of this run or of others.
void OutputCheck::WarnOfMeeting(Findings& findings, const DefinitionFile& definition,
                                const PlannedOutput& output) {
  const Place place = definition.PlaceOfValue(output.element);
  if (const WrittenFile* const earlier = Written(output.path)) {
    findings.AddWarning(definition.path, place, MeetingText(output, *earlier, run_),
                        Weight::kFiles);
    return;
  }
  if (Platform::KindOf(OnDisk(output.path).c_str()) == PathKind::kFile) {
    overwritten_.push_back({output, definition.folder, definition.path, place});
  }
  // Its own spelling is not there yet, or it would be an earlier output.
  if (const auto other = spellings_.find(SmallLetters(NormalPath(output.path)));
      other != spellings_.end()) {
    findings.AddWarning(definition.path, place,
                        Filled(kOutputMessages.caseOfOutput, Subject(output),
                               Quoted(ShownPath(files_.at(other->second).path))),
                        Weight::kHarmless);
  }
}

void OutputCheck::WarnOfOverwriting(Findings& findings) const {
  constexpr std::size_t kMostNames = 12;
  if (overwritten_.empty()) {
    return;
  }
  const Overwritten& first = overwritten_.front();
  if (overwritten_.size() == 1) {
    findings.AddWarning(first.definition, first.place,
                        Filled(kOutputMessages.exists, Subject(first.output)), Weight::kFiles);
    return;
  }
  const bool isOneFolder =
      std::all_of(overwritten_.begin(), overwritten_.end(),
                  [&first](const Overwritten& file) { return file.folder == first.folder; });
  std::string names;
  for (std::size_t i = 0; i < std::min(overwritten_.size(), kMostNames); ++i) {
    const std::string& path = overwritten_[i].output.path;
    const std::size_t skipped = isOneFolder ? first.folder.size() + 1 : 0;
    names += (i == 0 ? "" : ", ") + Quoted(ShownPath(path.substr(skipped)));
  }
  const std::size_t left = overwritten_.size() - std::min(overwritten_.size(), kMostNames);
  if (left > 0) {
    names = Filled(kFindingParts.andMore, names, left);
  }
  const std::string files = Counted(overwritten_.size(), "file");
  findings.AddWarning(
      first.definition, first.place,
      isOneFolder ? Filled(kOutputMessages.filesExistInFolder, files, Quoted(first.folder), names)
                  : Filled(kOutputMessages.filesExist, files, names),
      Weight::kFiles);
}

void OutputCheck::MakeFile(Findings& findings, const DefinitionFile& definition,
                           const PlannedOutput& output) {
  if (!CanMake(findings, definition, output)) {
    return;
  }
  WarnOfInputs(findings, definition, output);
  WarnOfMeeting(findings, definition, output);
  const std::string normal = NormalPath(output.path);
  files_.insert_or_assign(normal, WrittenFile{output.path, output.what, definition.path, run_});
  spellings_.emplace(SmallLetters(normal), normal);
}

void OutputCheck::Check(Findings& findings, const DefinitionFile& definition) {
  ++run_;
  if (definition.folder.empty()) {
    findings.AddWarning(definition.path, definition.PlaceOfValue("Output/Folder"),
                        Filled(kOutputMessages.folderIsRoot), Weight::kFiles);
  } else if (!MakeFolder(findings, definition, definition.folder, "Output/Folder")) {
    return;
  }
  bool hasChainFolder = false;
  bool isMade = true;
  for (const PlannedOutput& output : definition.outputs) {
    const bool isInChainFolder = output.element == "Output/McmcSubFolder";
    if (isInChainFolder && !hasChainFolder) {
      hasChainFolder = true;
      isMade = MakeFolder(findings, definition, definition.chainFolder, output.element);
    }
    if (!isInChainFolder || isMade) {
      MakeFile(findings, definition, output);
    }
  }
}

}  // namespace Hovar
