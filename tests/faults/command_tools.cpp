#include "faults/command_tools.h"

#include <gtest/gtest.h>

#include <regex>

#include "faults/fault_study.h"
#include "support/process.h"

namespace Testing {
namespace {

/// A run record without what the system says of time and place, which may be unknown.
std::string WithoutSurroundings(const std::string& record) {
  static const std::regex facts(
      R"re("(start|end|host|folder)": ("[-0-9:TZ]+"|"/[^"]*"|"[-.0-9A-Za-z]+"|null))re");
  return std::regex_replace(record, facts, "\"$1\": \"\"");
}

/// A run whose outcome is needed.
void Prepare(const std::filesystem::path& folder, const std::vector<std::string>& arguments) {
  Command command;
  command.program = HOVAR_LAUNCHER;
  command.folder = folder;
  command.arguments = {"hovar"};
  command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.exitStatus, 0) << result.error;
}

std::vector<std::string> OutputsOf(const std::string& folder) {
  return {folder + "/analysis.log", folder + "/fitted.csv", folder + "/mcmc/Chain.csv",
          folder + "/mcmc/Summary.csv", folder + "/analysis.log.output.txt"};
}

std::vector<std::string> Joined(std::vector<std::string> names,
                                const std::vector<std::string>& more) {
  names.insert(names.end(), more.begin(), more.end());
  return names;
}

std::vector<CommandTool> MakeTools() {
  const std::string report = "out/report.html";
  const std::string record = "run.json";
  const std::set<std::string> chainFiles = {"out/chain-1/chain-1.xml", "out/chain-2/chain-2.xml",
                                            report};
  return {
      {.name = "Check", .arguments = {"--check", "batch.xml"}},
      {.name = "CheckData", .arguments = {"--check", "--data", "analysis.xml"}},
      {.name = "Record",
       .arguments = {"--json", record, "batch.xml"},
       .startsProgram = true,
       .earlier = Joined(OutputsOf("out"), {record}),
       .whole = {record}},
      {.name = "KeepAndProgress",
       .arguments = {"--json", record, "--keep", "--progress", "analysis.xml"},
       .startsProgram = true,
       .keepsEarlier = true,
       .earlier = Joined(OutputsOf("out"), {record}),
       .whole = {record}},
      {.name = "Chains",
       .arguments = {"--chains", "2", "analysis.xml"},
       .startsProgram = true,
       .earlier = Joined(OutputsOf("out/chain-1"), {"out/chain-1/chain-1.xml", report}),
       .whole = chainFiles},
      {.name = "Collect",
       .arguments = {"--chains", "2", "--collect", "analysis.xml"},
       .preparations = {{"--chains", "2", "analysis.xml"}},
       .earlier = {report},
       .whole = {report}},
      {.name = "Report",
       .arguments = {"--report", "out"},
       .preparations = {{"batch.xml"}},
       .earlier = {report},
       .whole = {report}},
  };
}

}  // namespace

const std::vector<CommandTool>& CommandTools() {
  static const std::vector<CommandTool> tools = MakeTools();
  return tools;
}

void ExpectSameFiles(const FolderFiles& files, const FolderFiles& expected, FurtherFiles further) {
  for (const auto& [name, content] : expected) {
    const auto found = files.find(name);
    EXPECT_TRUE(found != files.end()) << name << " is missing";
    // Pages are too long to be shown.
    EXPECT_TRUE(found == files.end() || found->second == content) << name << " differs";
  }
  for (const auto& [name, content] : files) {
    EXPECT_TRUE(expected.contains(name) || further == FurtherFiles::kAllowed)
        << name << " is there too";
  }
}

std::string WithoutDurations(const std::string& text) {
  static const std::regex seconds("in [-0-9.e]+ seconds");
  return std::regex_replace(text, seconds, "in seconds");
}

void PrintTo(const CommandTool& tool, std::ostream* stream) { *stream << tool.name; }

CommandStudy::CommandStudy(const CommandTool& tool) {
  const FaultStudy study;
  std::filesystem::copy(study.Path(), Path(), std::filesystem::copy_options::recursive);
  for (const std::vector<std::string>& arguments : tool.preparations) {
    Prepare(Path(), arguments);
  }
  for (const std::string& name : tool.earlier) {
    folder_.Write(name, "earlier: " + name + "\n");
  }
  for (const char* const other : {"out/notes.txt", "out/mcmc/notes.csv"}) {
    folder_.Write(other, "of somebody else\n");
  }
  before_ = Files();
}

void CommandStudy::Restore() const {
  for (const auto& entry : std::filesystem::directory_iterator(Path())) {
    std::filesystem::remove_all(entry.path());
  }
  for (const auto& [name, content] : before_) {
    folder_.Write(name, content);
  }
}

FolderFiles CommandStudy::Files() const {
  FolderFiles files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(Path())) {
    if (!entry.is_directory()) {
      const std::string name = std::filesystem::relative(entry.path(), Path()).string();
      const std::string content = ReadFile(entry.path());
      files[name] = name.ends_with(".json")         ? WithoutSurroundings(content)
                    : name.ends_with(".output.txt") ? WithoutDurations(content)
                                                    : content;
    }
  }
  return files;
}

}  // namespace Testing
