#include "tools/check/outputs.h"

#include <algorithm>
#include <vector>

#include "foundation/io/platform/platform.h"
#include "tools/check/output_inputs.h"
#include "tools/plan/file_nouns.h"
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

void WarnOfPipe(Findings& findings, const DefinitionFile& definition, const PlannedFile& output) {
  if (Platform::IsNamedPipe(output.path.c_str())) {
    findings.AddWarning(definition.path, definition.PlaceOfValue(output.element),
                        Subject(output) +
                            " is a named pipe: the run waits there until another program reads it. "
                            "Start that one too, or name a regular file.",
                        Weight::kFiles);
  }
}

}  // namespace

const WrittenFile* OutputCheck::Written(std::string_view path) const {
  const auto found = files_.find(NormalPath(path));
  return found != files_.end() ? &found->second : nullptr;
}

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
                             const std::string& path, Element element) {
  const std::string name = element == Element::kFolder ? path : ShownPath(path);  // put together
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(element),
                      "The folder " + Quoted(name) + text);
    return false;
  };
  const PathKind kind = KindOf(path);
  if (kind == PathKind::kFolder) {
    return true;
  }
  // A file with a separator behind its name is missing for the system.
  const std::string bare(WithoutEnd(path));
  if (kind != PathKind::kMissing || KindOf(bare) != PathKind::kMissing) {
    return addError(" is a file. Give the folder another name.");
  }
  if (BehindLinks(bare) != bare) {
    return addError(" is a symbolic link that leads nowhere. Remove the link, or make its target.");
  }
  const std::string parent = ParentOf(path);
  if (KindOf(parent) != PathKind::kFolder) {
    return addError(" cannot be made: " + Quoted(ParentOf(name)) +
                    " is no folder. Make it first; only the last folder of a path is made.");
  }
  if (!MayWriteIn(parent)) {
    return addError(" cannot be made: nothing may be written in " + Quoted(ParentOf(name)) +
                    ". Choose another folder.");
  }
  if (LastName(name).size() > kLongestName) {
    return addError(" has too long a name. Shorten it.");
  }
  folders_.emplace(NormalPath(path), true);
  return true;
}

bool OutputCheck::CanMake(Findings& findings, const DefinitionFile& definition,
                          const PlannedFile& output) const {
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(output.element),
                      Subject(output) + text);
    return false;
  };
  const PathKind kind = KindOf(output.path);
  if (kind != PathKind::kFolder && IsSeparator(output.path.back())) {
    return addError(" ends with a separator of folders. Give the file a name.");
  }
  switch (kind) {
    case PathKind::kFolder:
      return addError(" is a folder. Give the file a name of its own.");
    case PathKind::kFile:
      return files_.contains(NormalPath(output.path)) || IsWritable(OnDisk(output.path)) ||
             addError(" cannot be written. Ask for the right to write it.");
    case PathKind::kOther:
      WarnOfPipe(findings, definition, output);
      return true;
    case PathKind::kMissing:
      break;
  }
  return CanMakeMissing(findings, definition, output);
}

bool OutputCheck::CanMakeMissing(Findings& findings, const DefinitionFile& definition,
                                 const PlannedFile& output) const {
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(output.element),
                      Subject(output) + text);
    return false;
  };
  const std::string parent = ParentOf(output.path);
  if (KindOf(parent) != PathKind::kFolder) {
    return addError(" cannot be made: " + Quoted(ShownPath(parent)) +
                    " is no folder. Make it first, or name a file in the output folder.");
  }
  if (!MayWriteIn(parent)) {
    return addError(" cannot be made: nothing may be written in " + Quoted(ShownPath(parent)) +
                    ". Choose another folder.");
  }
  if (LastName(output.path).size() > kLongestName) {
    return addError(" has too long a name. Shorten it.");
  }
  const std::string target = BehindLinks(output.path);
  return target == output.path ||
         (!target.empty() && KindOf(ParentOf(target)) == PathKind::kFolder &&
          MayWriteIn(ParentOf(target))) ||
         addError(" is a symbolic link to a file that cannot be made. Remove the link.");
}

/// Names that meet those of earlier outputs, of this run or of others.
void OutputCheck::WarnOfCollision(Findings& findings, const DefinitionFile& definition,
                                  const PlannedFile& output, bool isInput) {
  const Place place = definition.PlaceOfValue(output.element);
  if (const WrittenFile* const earlier = Written(output.path)) {
    const bool isLog = earlier->role == FileRole::kLog;
    findings.AddWarning(
        definition.path, place,
        Subject(output) + " is also the " + std::string(NounOf(earlier->role)) + " of " +
            (earlier->run == run_ ? std::string("this run") : Quoted(earlier->definition)) +
            (isLog ? ", which goes on writing at its old place in it"
                   : ", which would be overwritten") +
            ". Give each file a name of its own.",
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
    findings.AddWarning(definition.path, place,
                        Subject(output) + " differs from " +
                            Quoted(ShownPath(files_.at(other->second).path)) +
                            " in capital letters alone: on Windows they are one file. Give each "
                            "file a name of its own.",
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
    findings.AddWarning(
        first.definition, first.place,
        Subject(first.output) + " exists and would be overwritten. Use --keep to move it aside.",
        Weight::kFiles);
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
  findings.AddWarning(first.definition, first.place,
                      Counted(static_cast<std::int64_t>(overwritten_.size()), "file") +
                          " of an earlier run would be overwritten" +
                          (isOneFolder ? " in " + Quoted(first.folder) : "") + ": " + names +
                          (left > 0 ? " and " + std::to_string(left) + " more" : "") +
                          ". Use --keep to move them aside.",
                      Weight::kFiles);
}

void OutputCheck::MakeFile(Findings& findings, const DefinitionFile& definition,
                           const PlannedFile& output) {
  if (!CanMake(findings, definition, output)) {
    return;
  }
  const bool isInput = WarnOfInputs(findings, definition, output);
  WarnOfCollision(findings, definition, output, isInput);
  const std::string normal = NormalPath(output.path);
  files_.insert_or_assign(normal, WrittenFile{output.path, output.role, definition.path, run_});
  spellings_.emplace(LowerCase(normal), normal);
}

void OutputCheck::Check(Findings& findings, const DefinitionFile& definition) {
  ++run_;
  if (definition.folder.empty()) {
    findings.AddWarning(
        definition.path, definition.PlaceOfValue(Element::kFolder),
        "The output folder is empty, which means the root of the file system. Write "
        "a point for the folder that you start in.",
        Weight::kFiles);
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
