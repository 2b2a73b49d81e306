#include "app/launcher/check/outputs.h"

#include <algorithm>
#include <array>
#include <vector>

#include "foundation/io/platform/platform.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;
using Platform::PathKind;

constexpr std::size_t kLongestName = 255;  // bytes, of the usual file systems

bool IsSeparator(char c) noexcept { return c == '/' || c == '\\'; }

/// What stands before the last name of a path, which must have one: "." where nothing does.
std::string ParentOf(std::string_view path) {
  path = path.substr(0, path.find_last_not_of("/\\") + 1);
  const std::size_t separator = path.find_last_of("/\\");
  if (separator == std::string_view::npos) {
    return ".";
  }
  return std::string(path.substr(0, std::max<std::size_t>(separator, 1)));
}

std::string_view LastName(std::string_view path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

std::string SmallLetters(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

/// True for a path that begins with a drive: "C:\\data".
bool HasDrive(std::string_view path) noexcept { return path.size() >= 2 && path[1] == ':'; }

bool IsAbsolute(std::string_view path) noexcept {
  return (!path.empty() && IsSeparator(path[0])) || HasDrive(path);
}

std::string CurrentFolder() {
  std::array<char, 4096> folder;
  return Platform::CurrentFolder(folder.data(), folder.size()) ? folder.data() : "";
}

bool IsSameFile(const std::string& one, const std::string& other) {
  return NormalPath(one) == NormalPath(other) || Platform::SameFile(one.c_str(), other.c_str());
}

bool DiffersInCaseOnly(const std::string& one, const std::string& other) {
  const std::string a = NormalPath(one);
  const std::string b = NormalPath(other);
  return a != b && SmallLetters(a) == SmallLetters(b);
}

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
  return "The " + output.what + ' ' + Quoted(output.path);
}

/// Outputs that are or would on Windows be one of the run's own inputs.
void WarnOfInputs(Findings& findings, const DefinitionFile& definition,
                  const PlannedOutput& output) {
  const bool isLog = &output == &definition.outputs.front();
  for (const Input& input : InputsOf(definition)) {
    const Place place = definition.PlaceOfValue(output.element);
    if (IsSameFile(output.path, input.path)) {
      const std::string text = Subject(output) + " is the " + input.what + " of this run";
      if (isLog && input.path != definition.path) {
        findings.AddError(definition.path, place,
                          text + ", which is emptied before it is read. Give it another name.");
      } else {
        findings.AddWarning(definition.path, place,
                            text + ", which would be overwritten. Give it another name.");
      }
    } else if (DiffersInCaseOnly(output.path, input.path)) {
      findings.AddWarning(definition.path, place,
                          Subject(output) + " differs from the " + input.what +
                              " in capital letters alone: on Windows they are one file. Give it "
                              "another name.");
    }
  }
}

}  // namespace

std::string NormalPath(std::string_view path) {
  std::string whole(path);
  if (!IsAbsolute(path)) {
    whole = CurrentFolder() + '/' + whole;
  }
  std::vector<std::string_view> names;
  std::string_view rest = whole;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find_first_of("/\\"), rest.size());
    const std::string_view name = rest.substr(0, end);
    if (name == ".." && !names.empty()) {
      names.pop_back();
    } else if (!name.empty() && name != "." && name != "..") {
      names.push_back(name);
    }
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  std::string normal;
  for (const std::string_view name : names) {
    normal += normal.empty() && HasDrive(whole) ? "" : "/";
    normal += name;
  }
  return normal.empty() ? "/" : normal;
}

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
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(element),
                      "The folder " + Quoted(path) + text);
    return false;
  };
  switch (KindOf(path)) {
    case PathKind::kFolder:
      return true;
    case PathKind::kFile:
    case PathKind::kOther:
      return addError(" is a file. Give the folder another name.");
    case PathKind::kMissing:
      break;
  }
  const std::string parent = ParentOf(path);
  if (KindOf(parent) != PathKind::kFolder) {
    return addError(" cannot be made: " + Quoted(parent) +
                    " is no folder. Make it first; only the last folder of a path is made.");
  }
  if (!MayWriteIn(parent)) {
    return addError(" cannot be made: nothing may be written in " + Quoted(parent) +
                    ". Choose another folder.");
  }
  if (LastName(path).size() > kLongestName) {
    return addError(" has too long a name. Shorten it.");
  }
  folders_.emplace(NormalPath(path), true);
  return true;
}

bool OutputCheck::CanMake(Findings& findings, const DefinitionFile& definition,
                          const PlannedOutput& output) const {
  const auto addError = [&](const std::string& text) {
    findings.AddError(definition.path, definition.PlaceOfValue(output.element),
                      Subject(output) + text);
    return false;
  };
  switch (KindOf(output.path)) {
    case PathKind::kFolder:
      return addError(" is a folder. Give the file a name of its own.");
    case PathKind::kFile:
      return files_.contains(NormalPath(output.path)) || IsWritable(OnDisk(output.path)) ||
             addError(" cannot be written. Ask for the right to write it.");
    case PathKind::kOther:
      return true;
    case PathKind::kMissing:
      break;
  }
  const std::string parent = ParentOf(output.path);
  if (KindOf(parent) != PathKind::kFolder) {
    return addError(" cannot be made: " + Quoted(parent) +
                    " is no folder. Make it first, or name a file in the output folder.");
  }
  if (!MayWriteIn(parent)) {
    return addError(" cannot be made: nothing may be written in " + Quoted(parent) +
                    ". Choose another folder.");
  }
  return LastName(output.path).size() <= kLongestName ||
         addError(" has too long a name. Shorten it.");
}

/// Names that meet those of earlier outputs, of this run or of others.
void OutputCheck::WarnOfMeeting(Findings& findings, const DefinitionFile& definition,
                                const PlannedOutput& output) const {
  const Place place = definition.PlaceOfValue(output.element);
  if (const WrittenFile* const earlier = Written(output.path)) {
    const bool isLog = earlier->what == "log file";
    findings.AddWarning(
        definition.path, place,
        Subject(output) + " is also the " + earlier->what + " of " +
            (earlier->run == run_ ? std::string("this run") : Quoted(earlier->definition)) +
            (isLog ? ", which goes on writing at its old place in it"
                   : ", which would be overwritten") +
            ". Give each file a name of its own.");
    return;
  }
  if (Platform::KindOf(OnDisk(output.path).c_str()) == PathKind::kFile) {
    findings.AddWarning(definition.path, place,
                        Subject(output) +
                            " exists and would be overwritten. Move it away if it is still "
                            "needed.");
  }
  // Its own spelling is not there yet, or it would be an earlier output.
  if (const auto other = spellings_.find(SmallLetters(NormalPath(output.path)));
      other != spellings_.end()) {
    findings.AddWarning(definition.path, place,
                        Subject(output) + " differs from " + Quoted(files_.at(other->second).path) +
                            " in capital letters alone: on Windows they are one file. Give each "
                            "file a name of its own.");
  }
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
    findings.AddWarning(
        definition.path, definition.PlaceOfValue("Output/Folder"),
        "The output folder is empty, which means the root of the file system. Write "
        "a point for the folder that you start in.");
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
