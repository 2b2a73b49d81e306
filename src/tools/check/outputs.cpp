#include "tools/check/outputs.h"

#include <algorithm>
#include <vector>

#include "foundation/io/platform/platform.h"
#include "tools/check/finding_messages.h"
#include "tools/check/output_inputs.h"
#include "tools/check/output_messages.h"
#include "tools/plan/file_nouns.h"
#include "tools/support/message.h"
#include "tools/support/paths.h"
#include "tools/support/shown_path.h"
#include "tools/support/text.h"

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

/// Of a pipe only a warning is said: to open it is to wait for its reader.
bool WarnedOfPipe(Findings& findings, const DefinitionFile& definition, const PlannedFile& output) {
  const bool isPipe = Platform::IsNamedPipe(output.path.c_str());
  if (isPipe) {
    findings.AddWarning(definition.path, definition.PlaceOfValue(output.element),
                        Filled(kOutputMessages.isPipe, Subject(output)), Weight::kFiles);
  }
  return isPipe;
}

/// That an output is an earlier one; `run` is the number of the run that is checked.
std::string CollisionText(const PlannedFile& output, const WrittenFile& earlier, int run) {
  const std::string subject = Subject(output);
  const std::string_view noun = NounOf(earlier.role);
  const std::string other = Quoted(earlier.definition);
  if (earlier.role == FileRole::kLog) {
    return earlier.run == run ? Filled(kOutputMessages.logOfThisRun, subject, noun)
                              : Filled(kOutputMessages.logOfOtherRun, subject, noun, other);
  }
  return earlier.run == run ? Filled(kOutputMessages.outputOfThisRun, subject, noun)
                            : Filled(kOutputMessages.outputOfOtherRun, subject, noun, other);
}

}  // namespace

bool OutputCheck::LogEmpties(const DefinitionFile& definition, const std::string& input) {
  return IsSameFile(definition.outputs.front().path, input);
}

/// True where ".." follows a folder that is not there by then, which ends the system's way. Windows
/// takes it back in the text.
bool OutputCheck::LeadsThroughNothing(const std::string& path) const {
  if (Platform::FolderSeparator() != '/') {
    return false;
  }
  const std::string_view text = path;
  for (std::size_t i = text.find(".."); i != std::string_view::npos; i = text.find("..", i + 1)) {
    const std::string before(WithoutEnd(text.substr(0, i)));
    const bool isName = i + 2 == text.size() || IsSeparator(text[i + 2]);
    if (isName && !before.empty() && before.size() < i && KindOf(before) != PathKind::kFolder) {
      return true;
    }
  }
  return false;
}

PathKind OutputCheck::KindOf(const std::string& path) const {
  if (LeadsThroughNothing(path)) {
    return PathKind::kMissing;
  }
  if (Written(path) != nullptr) {
    return PathKind::kFile;
  }
  if (folders_.contains(NormalPath(path))) {
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
                             const std::string& path, Element element) {
  const std::string name = element == Element::kFolder ? path : ShownPath(path);  // put together
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(element), text);
    return false;
  };
  const PathKind kind = KindOf(path);
  if (kind == PathKind::kFolder) {
    return true;
  }
  // A file with a separator behind its name is missing for the system.
  const std::string bare(WithoutEnd(path));
  if (kind != PathKind::kMissing || KindOf(bare) != PathKind::kMissing) {
    return addError(Filled(kOutputMessages.folderIsFile, Quoted(name)));
  }
  if (BehindLinks(bare) != bare) {
    return addError(Filled(kOutputMessages.folderIsLink, Quoted(name)));
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
                          const PlannedFile& output) const {
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(output.element), text);
    return false;
  };
  const PathKind kind = KindOf(output.path);
  if (kind != PathKind::kFolder && IsSeparator(output.path.back())) {
    return addError(Filled(kOutputMessages.endsWithSeparator, Subject(output)));
  }
  switch (kind) {
    case PathKind::kFolder:
      return addError(Filled(kOutputMessages.isFolder, Subject(output)));
    case PathKind::kFile:
      return Written(output.path) != nullptr || IsWritable(OnDisk(output.path)) ||
             addError(Filled(kOutputMessages.cannotWrite, Subject(output)));
    case PathKind::kOther:
      return WarnedOfPipe(findings, definition, output) || IsWritable(OnDisk(output.path)) ||
             addError(Filled(kOutputMessages.cannotWriteDevice, Subject(output)));
    case PathKind::kMissing:
      break;
  }
  return CanMakeMissing(findings, definition, output);
}

bool OutputCheck::CanMakeMissing(Findings& findings, const DefinitionFile& definition,
                                 const PlannedFile& output) const {
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(output.element), text);
    return false;
  };
  const std::string parent = ParentOf(output.path);
  if (KindOf(parent) != PathKind::kFolder) {
    return addError(Filled(kOutputMessages.parent, Subject(output), Quoted(ShownPath(parent))));
  }
  if (!MayWriteIn(parent)) {
    return addError(
        Filled(kOutputMessages.notWritable, Subject(output), Quoted(ShownPath(parent))));
  }
  if (LastName(output.path).size() > kLongestName) {
    return addError(Filled(kOutputMessages.nameTooLong, Subject(output)));
  }
  const std::string target = BehindLinks(output.path);
  return target == output.path ||
         (!target.empty() && KindOf(ParentOf(target)) == PathKind::kFolder &&
          MayWriteIn(ParentOf(target))) ||
         addError(Filled(kOutputMessages.isLink, Subject(output)));
}

/// Names that meet those of earlier outputs, of this run or of others.
void OutputCheck::WarnOfCollision(Findings& findings, const DefinitionFile& definition,
                                  const PlannedFile& output, bool isInput) {
  const Place place = definition.PlaceOfValue(output.element);
  if (const WrittenFile* const earlier = Written(output.path)) {
    findings.AddWarning(definition.path, place, CollisionText(output, *earlier, run_),
                        Weight::kFiles);
    return;
  }
  // Of an input all is said, and --keep refuses to move it.
  if (!isInput && Platform::KindOf(OnDisk(output.path).c_str()) == PathKind::kFile) {
    findings.NoteFile(definition.path);
    overwritten_.push_back({output, definition.folder, definition.path, place});
  }
  // Its own spelling is not there yet, or it would be an earlier output.
  if (const auto other = spellings_.find(LowerCase(NormalPath(output.path)));
      other != spellings_.end()) {
    findings.AddWarning(
        definition.path, place,
        Filled(kOutputMessages.caseOfOutput, Subject(output), Quoted(ShownPath(other->second))),
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
                           const PlannedFile& output) {
  if (!CanMake(findings, definition, output)) {
    return;
  }
  const bool isInput = WarnOfInputs(findings, definition, output);
  WarnOfCollision(findings, definition, output, isInput);
  files_.Set(output.path, WrittenFile{output.path, output.role, definition.path, run_});
  spellings_.emplace(LowerCase(NormalPath(output.path)), output.path);
}

void OutputCheck::Check(Findings& findings, const DefinitionFile& definition) {
  ++run_;
  if (definition.folder.empty()) {
    findings.AddWarning(definition.path, definition.PlaceOfValue(Element::kFolder),
                        Filled(kOutputMessages.folderIsRoot), Weight::kFiles);
  } else if (!MakeFolder(findings, definition, definition.folder, Element::kFolder)) {
    return;
  }
  bool hasChainFolder = false;
  bool isMade = true;
  for (const PlannedFile& output : definition.outputs) {
    const bool isInChainFolder = output.element == Element::kMcmcSubFolder;
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
