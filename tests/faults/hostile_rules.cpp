#include "faults/hostile_rules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <sstream>

#include "blackbox/control_characters.h"
#include "blackbox/launcher_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

constexpr int kSignalStatus = 128;
// Beyond it no number and no ending of a derived name fits.
constexpr std::size_t kLongName = 240;

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

bool Has(const HostileCell& cell, const std::string& option) {
  const std::vector<std::string>& arguments = cell.place->arguments;
  return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
}

bool IsRun(Task task) {
  return task == Task::kPlainRun || task == Task::kEchoedRun || task == Task::kWatchedRun;
}

/// One run and the rules.
class Judge {
 public:
  Judge(const HostileCell& cell, const HostileEnd& run, const HostileEnd& alone)
      : cell_(cell), run_(run), alone_(alone), result_(run.Result()) {}

  std::vector<std::string> Judged() {
    JudgeEnd();
    JudgeStatus();
    JudgeResults();
    JudgeOtherFiles();
    JudgeTexts();
    return std::move(broken_);
  }

 private:
  void Require(bool isTrue, const std::string& rule) {
    if (!isTrue) {
      broken_.push_back(rule);
    }
  }

  Task KindOfTask() const { return cell_.place->task; }
  HostileKind Kind() const { return cell_.kind.kind; }
  bool IsPlainFile() const {
    return Kind() == HostileKind::kRegular || Kind() == HostileKind::kMissing;
  }
  /// True when both runs came to their own ends and these can be compared.
  bool IsComparable() const {
    return !run_.end.wasAsked && !alone_.end.wasAsked && !Varies(Kind());
  }
  /// True where a name leaves no room for what the tools put behind it.
  bool IsTooLong() const { return cell_.name.name.size() > kLongName; }

  void JudgeEnd() {
    Require(!run_.end.hangs, "it ends, when asked to at the latest");
    Require(!run_.end.wasAsked || IsEndless(Kind()) || alone_.end.wasAsked,
            "it ends by itself as the program does");
    Require(run_.end.orphans == 0, "no process is left");
    const bool isAsked = run_.end.wasAsked && (result_.signal == SIGTERM || run_.end.hangs);
    Require(result_.signal == 0 || isAsked, "no signal ends it: " + std::to_string(result_.signal));
    for (const char* report : {"Sanitizer", "runtime error:", "terminate called", "Assertion"}) {
      Require(!Holds(result_.error, report), "no report of a fault");
    }
  }

  void JudgeStatus() {
    if (result_.signal != 0) {
      return;
    }
    const int status = result_.exitStatus;
    Require(status == 0 || status == 1 || (run_.end.wasAsked && status == kSignalStatus + SIGTERM),
            "the exit status is 0 or 1: " + std::to_string(status));
    if (KindOfTask() == Task::kCheck) {
      Require((status == 0) != Holds(result_.output, ": error: ") || Has(cell_, "--strict") ||
                  !result_.error.empty(),
              "errors and exit status go together");
    } else {
      Require(status == 0 || run_.end.wasAsked || !result_.error.empty(), "a failure says why");
    }
    if (cell_.place->IsOfTheTool() && KindOfTask() == Task::kEchoedRun && IsPlainFile() &&
        !Has(cell_, "--keep") && !cell_.name.name.starts_with("-")) {
      // What is there and is no record, by its contents or its name, is not replaced.
      const bool isRefused = run_.before.contains(cell_.File()) && !Has(cell_, "--keep") &&
                             !cell_.File().ends_with(".json") &&
                             Holds(result_.error, "is no record of a run");
      Require(status == 0 || isRefused, "a record can have each name that a file can have");
    }
    if (cell_.place->IsOfTheTool() || KindOfTask() == Task::kReport || !IsComparable()) {
      return;
    }
    JudgeStatusBesideProgram(alone_.Result().exitStatus);
  }

  /// True where --keep moves out of the way what the program cannot write.
  bool IsMadeRoomFor() const { return Has(cell_, "--keep") && cell_.place->isOutput; }

  void JudgeStatusBesideProgram(int expected) {
    const int status = result_.exitStatus;
    const bool isOption = cell_.Definition().starts_with("-");
    const bool isMoved = Has(cell_, "--keep") || KindOfTask() == Task::kWatchedRun;
    const bool mayRefuse = isOption || (IsTooLong() && isMoved);
    if (IsRun(KindOfTask())) {
      Require(status == expected || (mayRefuse && status == 1) || (IsMadeRoomFor() && status == 0),
              "it ends as the program does");
    } else if (KindOfTask() == Task::kCheck) {
      const bool isUnseen = Kind() == HostileKind::kFullDevice && cell_.place->isOutput;
      Require((Has(cell_, "--strict") ? expected == 0 || status == 1 : status == expected) ||
                  isUnseen || isOption,
              "check and program agree");
    } else if (!cell_.place->isOutput && !cell_.place->hasChains) {
      const bool isAnalysis =
          Holds(cell_.place->definition, "<Analysis>") || cell_.place->definitionName == "@";
      const bool isTooLarge = Kind() == HostileKind::kSparse && cell_.place->definitionName == "@";
      Require(status == (isAnalysis ? expected : 1) || isOption || (isTooLarge && status == 1),
              "the chains end as the program does");
    }
  }

  /// The bytes of what `path` leads to, as far as it is in the study.
  static std::string BytesAt(const FileTree& tree, const std::string& path) {
    const auto found = tree.find(path);
    if (found != tree.end() && found->second.starts_with("link to ")) {
      const auto target = tree.find("elsewhere/target");
      return target != tree.end() ? target->second : "";
    }
    return found != tree.end() ? found->second : "";
  }

  void JudgeResults() {
    if (IsRun(KindOfTask()) && IsComparable() && result_.exitStatus == alone_.Result().exitStatus &&
        !cell_.place->IsOfTheTool()) {
      for (const auto& [path, content] : alone_.after) {
        const bool isMovedLink = IsMadeRoomFor() && path.starts_with("elsewhere/");
        Require(!alone_.IsChanged(path) || content == "folder" || isMovedLink ||
                    BytesAt(run_.after, path) == BytesAt(alone_.after, path),
                "the outputs are those of the program: " + path);
      }
    }
    if (result_.exitStatus != 0) {
      return;
    }
    if (Has(cell_, "--json")) {
      JudgeRecord();
    }
    if (KindOfTask() == Task::kChains && IsComparable() && !cell_.place->hasChains &&
        (!cell_.place->isOutput || IsPlainFile())) {
      JudgeChains();
    }
    if (KindOfTask() == Task::kReport || (KindOfTask() == Task::kChains && !Has(cell_, "--only"))) {
      JudgeReport();
    }
  }

  void JudgeRecord() {
    const auto option =
        std::find(cell_.place->arguments.begin(), cell_.place->arguments.end(), "--json");
    const std::string file = WithName(*(option + 1), cell_.name.name);
    Require(!cell_.place->isOutput || *(option + 1) != "@" || Kind() != HostileKind::kFullDevice,
            "a full device takes no record");
    const std::string record = BytesAt(run_.after, file);
    if (Kind() == HostileKind::kGrowing) {
      return;  // what grows it writes into the record too
    }
    if (record.starts_with(RegularFile(""))) {
      Require(record.starts_with(RegularFile("{\n  \"format\": \"hovar run record\"")) &&
                  record.ends_with("\n}\n"),
              "the record is whole");
      Require(Holds(record, "\"exitStatus\": 0,"), "the record has the exit status");
    } else {
      Require(file.starts_with("/dev/") || record == "special" || !IsPlainFile(),
              "there is a record");
    }
  }

  void JudgeChains() {
    const std::string folder = cell_.OutputFolder();
    for (const auto& [path, content] : alone_.after) {
      if (alone_.IsChanged(path) && path.starts_with(folder + "/") && content != "folder") {
        const std::string chain = folder + "/chain-1" + path.substr(folder.size());
        Require(BytesAt(run_.after, chain) == content,
                "chain 1 has the results of the program: " + chain);
      }
    }
  }

  void JudgeReport() {
    const std::string name =
        Has(cell_, "--output") ? WithName(cell_.place->arguments.back(), cell_.name.name)
        : KindOfTask() == Task::kReport
            ? WithName(cell_.place->arguments[1], cell_.name.name) + "/report.html"
            : cell_.OutputFolder() + "/report.html";
    const std::string page = BytesAt(run_.after, name);
    if (Kind() == HostileKind::kGrowing && cell_.place->isOutput) {
      return;
    }
    if (page.starts_with(RegularFile(""))) {
      Require(page.starts_with(RegularFile(std::string(kPageHead))) &&
                  page.ends_with(std::string(kPageTail)),
              "the page is whole");
      Require(IsChosenLink() || !Holds(DecodedFiles(page), kForeignBytes),
              "the page holds no foreign file");
    } else {
      Require(!IsPlainFile(), "there is a page: " + name);
      Require(Kind() != HostileKind::kFullDevice, "a full device takes no page");
    }
  }

  /// True for a link in place of a folder that a report was asked for: it is followed.
  bool IsChosenLink() const {
    const bool isChosen = (KindOfTask() == Task::kReport && cell_.place->file == "@") ||
                          cell_.place->file == "out/chain-1";
    return Kind() == HostileKind::kLinkToFolder && isChosen;
  }

  /// The bytes of the files that stand in a page.
  static std::string DecodedFiles(const std::string& page) {
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::string open = "<script type=\"text/hovar\"";
    std::string bytes;
    for (std::size_t at = page.find(open); at != std::string::npos; at = page.find(open, at + 1)) {
      unsigned bits = 0;
      int count = 0;
      for (std::size_t next = page.find('>', at) + 1;
           next < page.size() && digits.find(page[next]) != std::string::npos; ++next) {
        bits = bits << 6U | static_cast<unsigned>(digits.find(page[next]));
        count += 6;
        if (count >= 8) {
          count -= 8;
          bytes += static_cast<char>(bits >> static_cast<unsigned>(count) & 0xFFU);
        }
      }
      bytes += '\n';
    }
    return bytes;
  }

  /// True for what the command may write besides the program's outputs.
  bool MayWrite(const std::string& path) const {
    const std::string folder = cell_.OutputFolder();
    const bool isOfChain = path.starts_with(folder + "/chain-1") ||
                           path.starts_with(folder + "/chain-2") || path == folder;
    const bool isOwnOutput =
        cell_.place->isOutput &&
        (path == cell_.File() || path == "elsewhere/target" || path == "elsewhere/none");
    switch (KindOfTask()) {
      case Task::kPlainRun:
      case Task::kCheck:
        return false;
      case Task::kEchoedRun:
        return path == "r.json" || (isOwnOutput && cell_.place->IsOfTheTool()) ||
               (IsMadeRoomFor() && path.starts_with(folder));
      case Task::kWatchedRun:
        return path == "r.json" || (IsMadeRoomFor() && path.starts_with(folder)) ||
               path.ends_with(".output.txt") || path == folder ||
               (isOwnOutput && cell_.place->IsOfTheTool());
      case Task::kChains:
        return isOfChain || (IsChosenLink() && path.starts_with("elsewhere/")) ||
               path == folder + "/report.html" || path == folder + "/chains.json" ||
               (isOwnOutput && cell_.place->IsOfTheTool());
      case Task::kReport:
        return isOwnOutput || (!Has(cell_, "--output") && path.ends_with("/report.html"));
    }
    return false;
  }

  /// True for an earlier file that stands under another name now.
  bool IsKept(const std::string& path) const {
    const std::size_t dot = path.rfind('.');
    const auto earlier = run_.before.find(path.substr(0, dot));
    return Has(cell_, "--keep") && earlier != run_.before.end() &&
           earlier->second == run_.after.at(path);
  }

  void JudgeOtherFiles() {
    if (Kind() == HostileKind::kGrowing) {
      return;
    }
    for (const auto& [path, content] : run_.before) {
      const bool isResult = alone_.IsChanged(path) || MayWrite(path);
      Require(!run_.IsChanged(path) || isResult || IsMovedAside(path),
              "a file that was there stays as it is: " + path);
    }
    // What the program writes after a tool has asked it to end is not known.
    for (const auto& [path, content] : run_.after) {
      if (!run_.before.contains(path) && !alone_.after.contains(path) && !MayWrite(path) &&
          !IsKept(path)) {
        Require(false, "nothing else is left: " + path);
      }
      Require(
          !Holds(path, ".part") || run_.before.contains(path) || Holds(cell_.name.name, ".part"),
          "no temporary file is left: " + path);
    }
  }

  bool IsMovedAside(const std::string& path) const {
    return std::any_of(run_.after.begin(), run_.after.end(), [&](const auto& entry) {
      return entry.first.starts_with(path + ".") && IsKept(entry.first);
    });
  }

  /// What the tools print themselves, as far as the program's lines can be told from it.
  std::string TextOfTheTool() const {
    if (KindOfTask() == Task::kPlainRun) {
      return "";
    }
    if (KindOfTask() != Task::kEchoedRun) {
      return result_.output + result_.error;
    }
    std::string text = result_.error;
    const std::string& lines = alone_.Result().error;
    const std::size_t place = lines.empty() ? std::string::npos : text.find(lines);
    if (place != std::string::npos) {
      text.erase(place, lines.size());
    }
    return Varies(Kind()) ? "" : text;
  }

  void JudgeTexts() {
    const std::string text = TextOfTheTool();
    const std::string controls = ControlCharactersIn(text);
    Require(controls.empty(), "no control characters are shown: " + controls);
    Require(!("\n" + text).starts_with(std::string("\n") + kForgedLine) &&
                !Holds(text, std::string("\n") + kForgedLine),
            "no line begins within a name");
    if (KindOfTask() == Task::kEchoedRun && IsComparable() &&
        result_.exitStatus == alone_.Result().exitStatus && !cell_.place->IsOfTheTool() &&
        !Holds(cell_.name.name, "\n")) {  // the rest of an error line is told from no other line
      Require(WithoutSeconds(result_.output) == WithoutSeconds(alone_.Result().output),
              "the program's lines appear as usual");
    }
    std::istringstream lines(result_.error);
    for (std::string line; std::getline(lines, line);) {
      const std::string kept = "hovar: kept ";
      if (line.starts_with(kept)) {
        JudgePasted(line.substr(kept.size()));
      }
    }
  }

  /// "FILE as FILE.1", pasted into a shell, are three words of which the last is a file.
  void JudgePasted(const std::string& words) {
    Command command;
    command.program = "/bin/bash";
    command.folder = "/";
    command.arguments = {"bash", "-c", "printf '%s\\n.\\n' " + words};
    const std::string output = RunProcess(command).output;
    const std::string middle = "\n.\nas\n.\n";
    const std::size_t place = output.find(middle);
    const bool isWhole = place != std::string::npos && output.ends_with("\n.\n");
    Require(isWhole, "the names can be pasted: " + words);
    if (isWhole) {
      const std::size_t begin = place + middle.size();
      const std::string name = output.substr(begin, output.size() - begin - 3);
      Require(run_.after.contains(fs::path(name).lexically_normal().string()),
              "the pasted name is that of the file: " + words);
    }
  }

  const HostileCell& cell_;
  const HostileEnd& run_;
  const HostileEnd& alone_;
  const ProcessResult& result_;
  std::vector<std::string> broken_;
};

}  // namespace

std::vector<std::string> BrokenRules(const HostileCell& cell, const HostileEnd& run,
                                     const HostileEnd& alone) {
  return Judge(cell, run, alone).Judged();
}

}  // namespace Testing
