#include "faults/command_answers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <regex>
#include <sstream>

namespace Testing {
namespace {

constexpr int kSignalStatus = 128;

/// The lines of a text, with their line feeds.
std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// True when standard error holds a line that reports a failure, the command's, the
/// program's, or of a chain's that a run without a fault has not; or standard output an error that
/// a check has found.
bool SaysWhy(const RunResult& run, const RunResult& whole) {
  // The check's answers are on standard output.
  static const std::regex reason(
      "(hovar: |Error: |chain-[0-9]+: (?!done in)).+|[^ ]+:[0-9]+:[0-9]+: error: .+");
  const std::vector<std::string> usual = LinesOf(whole.error);
  const std::vector<std::string> lines = LinesOf(run.error + run.output);
  return std::any_of(lines.begin(), lines.end(), [&usual](const std::string& line) {
    return std::regex_match(line, reason) &&
           std::find(usual.begin(), usual.end(), line) == usual.end();
  });
}

/// Standard output without times, and without the columns of findings: where a line cannot be read
/// again to find them, they are 1.
std::string Comparable(const std::string& output) {
  static const std::regex place("(^|\n)([^ \n]+:[0-9]+):[0-9]+: ");
  return std::regex_replace(WithoutDurations(output), place, "$1$2: ");
}

/// A run record of a run that failed is unlike that of the run without a fault, but whole.
bool IsRecord(const std::string& name, const std::string& content) {
  return name.ends_with(".json") && content.starts_with("{\n") && content.ends_with("\n}\n");
}

/// Expects that nothing runs any more.
void ExpectEnded(const CommandResult& result) {
  EXPECT_FALSE(result.hasHung);
  EXPECT_EQ(result.left, std::vector<std::string>());
}

}  // namespace

CommandAnswers::CommandAnswers(const CommandTool& tool, const CommandStudy& study,
                               const TracedCommand& command)
    : tool_(tool), study_(study), command_(command) {
  study_.Restore();
  const CommandResult whole = command_.Run();
  EXPECT_EQ(whole.run.end, ProcessEnd{0}) << whole.run.Text();
  EXPECT_TRUE(whole.left.empty());
  whole_ = whole.run;
  complete_ = study_.Files();
}

void CommandAnswers::ExpectWhole(const CommandResult& result) const {
  EXPECT_EQ(result.run.end, whole_.end) << result.run.Text();
  EXPECT_EQ(Comparable(result.run.output), Comparable(whole_.output));
  ExpectSameFiles(Accepted(result), complete_,
                  result.IsHit("unlink") ? FurtherFiles::kAllowed : FurtherFiles::kNone);
  ExpectEnded(result);
}

/// The files that are there now, but for what may differ when standard error says so, and with the
/// numbers that names of kept files have when none is taken.
FolderFiles CommandAnswers::Accepted(const CommandResult& result) const {
  FolderFiles files;
  for (const auto& [name, content] : study_.Files()) {
    const bool isKept = IsKept(name) && !complete_.contains(name);
    files[isKept ? name.substr(0, name.rfind('.')) + ".1" : name] = content;
  }
  const auto acceptAs = [&](const char* file, const char* reason) {
    if (complete_.contains(file) && result.run.error.find(reason) != std::string::npos) {
      files[file] = complete_.at(file);
    }
  };
  acceptAs("run.json", " changed during the run");     // what can no longer be read counts so
  acceptAs("out/report.html", "hovar: cannot read ");  // and is left out
  return files;
}

void CommandAnswers::ExpectAnswer(const CommandResult& result) const {
  ExpectEnded(result);
  EXPECT_EQ(result.run.end.signal, -1) << result.run.Text();
  FolderFiles files = study_.Files();
  if (result.run.end == whole_.end) {
    ExpectWhole(result);
    return;
  }
  if (!result.IsHit("write(2<") && !result.IsHit("write(2,")) {
    EXPECT_TRUE(SaysWhy(result.run, whole_)) << "no reason:\n" << result.run.Text();
  }
  // A file that is named is no temporary one.
  std::erase_if(files, [&](const auto& file) {
    return !complete_.contains(file.first) &&
           result.run.error.find(file.first) != std::string::npos;
  });
  ExpectUndamaged(files, result.IsHit("unlink") ? FurtherFiles::kAllowed : FurtherFiles::kNone);
  ExpectRepaired();
}

void CommandAnswers::ExpectEnd(const CommandResult& result, int signal) const {
  ExpectEnded(result);
  if (result.run.end == whole_.end) {
    ExpectWhole(result);
    return;
  }
  EXPECT_TRUE(result.run.end == ProcessEnd{.signal = signal} ||
              result.run.end == ProcessEnd{.exitStatus = kSignalStatus + signal})
      << result.run.Text();
  ExpectUndamaged(study_.Files(), FurtherFiles::kNone);
  ExpectRepaired();
}

void CommandAnswers::ExpectKilled(const CommandResult& result) const {
  ExpectEnded(result);
  EXPECT_EQ(result.run.end, ProcessEnd{.signal = SIGKILL}) << result.run.Text();
  ExpectUndamaged(study_.Files(), FurtherFiles::kAllowed);
  ExpectRepaired();
}

void CommandAnswers::ExpectRepaired() const {
  const FolderFiles left = study_.Files();
  if (left == study_.Before() || left == complete_) {
    return;  // as good as the run without a fault, or as another one of it
  }
  SCOPED_TRACE("the second run");
  const CommandResult second = command_.Run();
  EXPECT_EQ(second.run.end, whole_.end) << second.run.Text();
  FolderFiles files = study_.Files();
  for (const auto& [name, content] : complete_) {
    if (!IsKept(name)) {
      EXPECT_TRUE(files[name] == content) << name << " is not repaired";
    }
  }
  ExpectUndamaged(files, FurtherFiles::kAllowed);
}

/// True for a file to which --keep has moved an earlier one.
bool CommandAnswers::IsKept(const std::string& name) const {
  static const std::regex number("(.*)\\.[0-9]+");
  std::smatch match;
  return tool_.keepsEarlier && std::regex_match(name, match, number) &&
         study_.Before().contains(match[1]);
}

void CommandAnswers::ExpectUndamaged(const FolderFiles& files, FurtherFiles further) const {
  for (const auto& [name, content] : study_.Before()) {
    const auto there = files.find(name);
    const bool isThere = there != files.end();
    const bool isAside = HasAside(files, name, content);
    EXPECT_TRUE(isThere || isAside) << name << " is gone";
    const bool mustStay = tool_.keepsEarlier || complete_.at(name) == content;
    EXPECT_TRUE(!mustStay || isAside || (isThere && there->second == content))
        << name << " is damaged";
  }
  for (const auto& [name, content] : files) {
    const bool isKnown = study_.Before().contains(name) || complete_.contains(name);
    EXPECT_TRUE(isKnown || IsKept(name) || further == FurtherFiles::kAllowed) << name << " is left";
    if (isKnown) {
      ExpectKnown(name, content);
    }
  }
}

/// True when --keep has moved what an earlier file held.
bool CommandAnswers::HasAside(const FolderFiles& files, const std::string& name,
                              const std::string& content) const {
  return std::any_of(files.begin(), files.end(), [&](const auto& file) {
    return file.second == content && file.first.starts_with(name) && IsKept(file.first);
  });
}

/// Of a file that belongs to the run.
void CommandAnswers::ExpectKnown(const std::string& name, const std::string& content) const {
  const auto before = study_.Before().find(name);
  const auto whole = complete_.find(name);
  const bool isEarlier = before != study_.Before().end() && before->second == content;
  const bool isWhole = whole != complete_.end() && whole->second == content;
  if (isEarlier || isWhole || IsRecord(name, content) || name.ends_with(".output.txt")) {
    return;  // the lines of a run that failed hold its error
  }
  const bool isBegun =
      !tool_.whole.contains(name) && whole != complete_.end() && whole->second.starts_with(content);
  EXPECT_TRUE(isBegun) << name << " holds <" << content.substr(0, 1000) << ">";
}

}  // namespace Testing
