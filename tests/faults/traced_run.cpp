#include "faults/traced_run.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string_view>

#include "support/process.h"

namespace Testing {
namespace {

// The link to the program; a path with a backslash, as the program wants it.
constexpr char kLink[] = "hovar\\program";
constexpr char kTrace[] = "trace.txt";

Command Strace(const std::filesystem::path& folder) {
  Command command;
  command.program = "/usr/bin/env";
  command.folder = folder;
  command.arguments = {"env", "strace", "-y", "-s", "0", "-o", kTrace};
  // The leak check traces the process itself, and only one can do so.
  command.environment = {{"ASAN_OPTIONS", "detect_leaks=0"}};
  return command;
}

SystemCall CallOf(const std::string& name) {
  static const std::map<std::string, SystemCall> calls = {
      {"openat", SystemCall::kOpen}, {"read", SystemCall::kRead},
      {"write", SystemCall::kWrite}, {"lseek", SystemCall::kSeek},
      {"close", SystemCall::kClose}, {"mkdir", SystemCall::kMakeFolder}};
  return calls.at(name);
}

/// Reads the lines of a trace one after the other and keeps in mind what they did.
class TraceReader {
 public:
  TracedCall Read(const std::string& line) {
    static const std::regex parts(
        R"re((\w+)\((?:[^,"]*, )?(?:"([^"]*)")?(.*?)\)\s*= (-?\d+|\?)(.*))re");
    static const std::regex handle(R"re(\w+\((\d+)<(.*?)>[,)].*)re");
    static const std::regex size(R"re(.*, (\d+)\)\s*= .*)re");
    TracedCall traced;
    std::smatch match;
    if (!std::regex_match(line, match, parts)) {
      ADD_FAILURE() << "not the trace of a call: " << line;
      return traced;
    }
    traced.name = match[1];
    traced.call.call = CallOf(traced.name);
    traced.isInjected = match[5].str().find("(INJECTED)") != std::string::npos;
    const int result = match[4] == "?" ? -1 : std::stoi(match[4]);
    const std::string path = match[2];
    const bool isWriting = match[3].str().find("O_WRONLY") != std::string::npos;
    if (traced.call.call == SystemCall::kOpen) {
      if (result >= 0) {
        written_.erase(result);
        if (isWriting) {
          written_.insert(result);
        }
      }
      SetPath(traced, path);
    } else if (traced.call.call == SystemCall::kMakeFolder) {
      traced.call.isThere = folders_.contains(path);
      if (result == 0) {
        folders_.insert(path);
      }
      SetPath(traced, path);
    } else if (std::regex_match(line, match, handle)) {
      traced.call.file = std::stoi(match[1]);
      traced.call.isOpenForWriting = written_.contains(traced.call.file);
      SetPath(traced, match[2]);
      if (std::regex_match(line, match, size)) {
        traced.size = std::stoul(match[1]);
      }
    }
    return traced;
  }

 private:
  static void SetPath(TracedCall& traced, const std::string& path) {
    std::strncpy(traced.call.path, path.c_str(), sizeof traced.call.path - 1);
  }

  std::set<int> written_;  // open files
  std::set<std::string> folders_;
};

/// True for calls on standard streams and on files in the folder of the run, whose paths it gives
/// as relative ones.
bool IsInFolder(const SystemCallReport& call, const std::string& folder) {
  constexpr int kLastStandard = 2;
  const std::string_view path(call.path);
  return call.file < 0 ? !path.starts_with('/')
                       : call.file <= kLastStandard || path.starts_with(folder);
}

std::vector<TracedCall> ReadTrace(const std::string& text, const std::string& folder) {
  constexpr int kStandardOutput = 1;
  std::vector<TracedCall> calls;
  bool isBegun = false;
  TraceReader reader;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("+++") && !line.starts_with("---")) {
      TracedCall& traced = calls.emplace_back(reader.Read(line));
      // The banner is the first thing that the program writes.
      isBegun = isBegun || (traced.name == "write" && traced.call.file == kStandardOutput);
      traced.isOfProgram = isBegun && IsInFolder(traced.call, folder);
    }
  }
  return calls;
}

}  // namespace

std::string WhyNothingCanBeTraced() {
  const ScratchFolder folder;
  Command command = Strace(folder.Path());
  command.arguments.insert(command.arguments.end(), {"-e", "inject=mkdir:error=EIO", "mkdir", "x"});
  const ProcessResult result = RunProcess(command);
  const std::string trace = folder.Has(kTrace) ? folder.Read(kTrace) : "";
  return trace.find("(INJECTED)") != std::string::npos
             ? ""
             : "strace can not trace a process here; it must be installed (Debian package strace) "
               "and the system must allow ptrace. It said: " +
                   result.error;
}

TracedResult RunTraced(const FaultStudy& study, const std::string& definition,
                       const std::optional<Injection>& injection) {
  if (!std::filesystem::exists(study.Path() / kLink)) {
    std::filesystem::create_symlink(HOVAR_PROGRAM, study.Path() / kLink);
  }
  Command command = Strace(study.Path());
  command.arguments.insert(command.arguments.end(), {"-e", std::string("trace=") + kTracedCalls});
  if (injection.has_value()) {
    command.arguments.insert(command.arguments.end(),
                             {"-e", "inject=" + injection->name + ":" + injection->effect +
                                        ":when=" + std::to_string(injection->number)});
  }
  command.arguments.insert(command.arguments.end(), {std::string("./") + kLink, definition});
  const ProcessResult result = RunProcess(command);
  TracedResult traced;
  traced.run.end = result.signal == 0 ? ProcessEnd{.exitStatus = result.exitStatus}
                                      : ProcessEnd{.signal = result.signal};
  traced.run.output = result.output;
  traced.run.error = result.error;
  traced.calls = ReadTrace(study.Read(kTrace), std::filesystem::canonical(study.Path()));
  return traced;
}

}  // namespace Testing
