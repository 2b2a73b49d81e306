#include "faults/traced_command.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <sstream>
#include <string_view>
#include <thread>

#include "faults/call_lists.h"
#include "support/child_process.h"

namespace Testing {
namespace {

constexpr std::chrono::seconds kPatience{10};
constexpr std::chrono::seconds kTimeToEnd{2};

constexpr char kNoFault[] = "trace=all";

// The names of installations, and what each has as the program.
constexpr char kTraced[] = "traced";
constexpr char kStaying[] = "staying";
constexpr char kStayingProgram[] = "#!/bin/sh\nexec sleep 60\n";
// The fault is for one program alone, the only one or that of the first chain. With -D it stays
// the child of the command.
constexpr char kTracedProgram[] =
    "#!/bin/sh\n"
    "case \"$1\" in\n"
    "*chain-2.xml) exec \"$PROGRAM\" \"$@\" ;;\n"
    "*) exec strace -D -y -s 0 -o \"$TRACE\" $FAULT \"$PROGRAM\" \"$@\" ;;\n"
    "esac\n";

/// An installation of the command with another program.
void Install(const ScratchFolder& place, const std::string& name, std::string_view program) {
  const auto executable = std::filesystem::perms::owner_all;
  place.Write(name + "/libexec/hovar/hovar", program);
  std::filesystem::permissions(place.Path() / name / "libexec/hovar/hovar", executable);
  std::filesystem::create_directories(place.Path() / name / "bin");
  std::filesystem::copy_file(HOVAR_LAUNCHER, place.Path() / name / "bin/hovar");
  const auto root = std::filesystem::path(HOVAR_LAUNCHER).parent_path().parent_path();
  std::filesystem::create_symlink(root / "share", place.Path() / name / "share");
}

/// The calls that are not among others.
std::vector<CommandCall> Without(const std::vector<CommandCall>& calls,
                                 const std::vector<CommandCall>& others) {
  std::vector<CommandCall> rest;
  std::copy_if(calls.begin(), calls.end(), std::back_inserter(rest), [&](const CommandCall& call) {
    return std::find(others.begin(), others.end(), call) == others.end();
  });
  return rest;
}

std::string CommandLineOf(const std::string& process) {
  std::string line = std::filesystem::exists("/proc/" + process)
                         ? ReadFile("/proc/" + process + "/cmdline")
                         : std::string();
  std::replace(line.begin(), line.end(), '\0', ' ');
  return line;
}

std::vector<std::string> Children() {
  const std::string self = std::to_string(getpid());
  std::istringstream list(ReadFile("/proc/" + self + "/task/" + self + "/children"));
  std::vector<std::string> children;
  for (std::string child; list >> child;) {
    children.push_back(child);
  }
  return children;
}

bool IsTracer(const std::string& process) { return CommandLineOf(process).starts_with("strace "); }

/// True when all children of this process end in time.
bool ChildrenEnd() {
  const auto deadline = std::chrono::steady_clock::now() + kTimeToEnd;
  while (waitpid(-1, nullptr, WNOHANG) >= 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return true;
}

void KillChildren() {
  for (const std::string& child : Children()) {
    kill(std::stoi(child), SIGKILL);
  }
}

/// Waits for the processes that a run has left, which have become children of this one. Those that
/// do not end in time are ended; their command lines are returned.
std::vector<std::string> TakeLeftProcesses() {
  std::vector<std::string> left;
  if (ChildrenEnd()) {
    return left;
  }
  for (const std::string& child : Children()) {
    if (!IsTracer(child)) {  // which ends with what it traces
      left.push_back(CommandLineOf(child));
    }
  }
  do {
    KillChildren();
  } while (!ChildrenEnd());
  return left;
}

}  // namespace

std::string NameOf(FaultPlace place) {
  return place == FaultPlace::kCommand ? "the command"
         : place == FaultPlace::kStart ? "the start of the program"
                                       : "the program";
}

std::string CallFault::Text() const {
  return call.name + " " + std::to_string(call.number) + (isFromThenOn ? " and later, " : ", ") +
         effect;
}

bool CommandResult::IsHit() const { return IsHit(""); }

bool CommandResult::IsHit(const std::string& begin) const {
  // A signal is a line of its own.
  return std::any_of(trace.begin(), trace.end(), [&](const std::string& line) {
    return line.starts_with(begin) && line.find("(INJECTED)") != std::string::npos;
  });
}

TracedCommand::TracedCommand(const CommandTool& tool, const CommandStudy& study)
    : arguments_(tool.arguments), folder_(study.Path()) {
  // Processes whose parent ends become children of this one.
  EXPECT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  std::filesystem::create_symlink(HOVAR_PROGRAM, place_.Path() / "hovar\\program");
  Install(place_, kTraced, kTracedProgram);
  Install(place_, kStaying, kStayingProgram);
}

CommandResult TracedCommand::Run() const { return Finish({HOVAR_LAUNCHER}, kPatience); }

CommandResult TracedCommand::Run(FaultPlace place, const CallFault& fault, StandIn program) const {
  return RunTraced(place,
                   "inject=" + fault.call.name + ":" + fault.effect + ":when=" +
                       std::to_string(fault.call.number) + (fault.isFromThenOn ? "+" : ""),
                   program, kPatience);
}

CommandResult TracedCommand::RunTraced(FaultPlace place, const std::string& injection,
                                       StandIn program, std::chrono::milliseconds patience) const {
  const std::string trace = place_.File("trace");
  CommandResult result;
  if (place == FaultPlace::kProgram) {
    result = Finish({"env", "TRACE=" + trace, "FAULT=-e " + injection,
                     "PROGRAM=" + place_.File("hovar\\program"),
                     place_.File(std::string(kTraced) + "/bin/hovar")},
                    patience);
  } else {
    std::vector<std::string> begin = {"strace", "-D",  "-y", "-s",     "0",
                                      "-o",     trace, "-e", injection};
    if (place == FaultPlace::kStart) {
      begin.push_back("-ff");
    }
    begin.push_back(program == StandIn::kStaying ? place_.File(std::string(kStaying) + "/bin/hovar")
                                                 : HOVAR_LAUNCHER);
    result = Finish(begin, patience);
  }
  result.trace = TakeTrace(place);
  return result;
}

std::vector<CommandCall> TracedCommand::CallsOf(FaultPlace place) const {
  const CommandResult result = RunTraced(place, kNoFault, StandIn::kNone, kPatience);
  EXPECT_EQ(result.run.end, ProcessEnd{0}) << result.run.Text();
  if (place != FaultPlace::kStart) {
    return CallsOfMain(result.trace);
  }
  // The command would meet the others too.
  const CommandResult command =
      RunTraced(FaultPlace::kCommand, kNoFault, StandIn::kNone, kPatience);
  std::vector<CommandCall> others = AllCalls(command.trace);
  // Its own start is traced no more.
  others.erase(std::remove(others.begin(), others.end(), CommandCall{"execve", 1}), others.end());
  return Without(CallsOfStart(result.trace), others);
}

std::vector<CommandCall> TracedCommand::CallsBesideProgram() const {
  constexpr std::chrono::milliseconds kTimeToBeTraced{500};
  return CallsBesideChild(
      RunTraced(FaultPlace::kCommand, kNoFault, StandIn::kStaying, kTimeToBeTraced).trace);
}

CommandResult TracedCommand::Finish(const std::vector<std::string>& begin,
                                    std::chrono::milliseconds patience) const {
  std::vector<std::string> arguments = begin;
  arguments.insert(arguments.end(), arguments_.begin(), arguments_.end());
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    pointers.push_back(argument.data());
  }
  pointers.push_back(nullptr);
  const std::string output = place_.Write("output", "");
  const std::string error = place_.Write("error", "");
  CommandResult result;
  std::optional<ChildProcess> process([&] {
    ReplaceHandle(0, "/dev/null");
    ReplaceHandle(1, output);
    ReplaceHandle(2, error);
    // The leak check traces the process itself, and only one can do so.
    return chdir(folder_.c_str()) == 0 && setenv("ASAN_OPTIONS", "detect_leaks=0", 1) == 0
               ? execvp(pointers[0], pointers.data())
               : 99;
  });
  const std::optional<ProcessEnd> end = process->WaitFor(patience);
  result.run.end = end.value_or(ProcessEnd());
  result.hasHung = !end.has_value();
  if (result.hasHung) {
    KillChildren();  // the tracer too, without which the process cannot be waited for
  }
  process.reset();
  result.left = TakeLeftProcesses();
  result.run.output = ReadFile(output);
  result.run.error = ReadFile(error);
  return result;
}

/// The lines of the traced processes: with -ff only those of copies of the command, which do not
/// begin with their own start.
std::vector<std::string> TracedCommand::TakeTrace(FaultPlace place) const {
  std::vector<std::string> lines;
  for (const auto& entry : std::filesystem::directory_iterator(place_.Path())) {
    if (!entry.path().filename().string().starts_with("trace.") &&
        entry.path().filename() != "trace") {
      continue;
    }
    std::istringstream text(ReadFile(entry.path()));
    std::filesystem::remove(entry.path());
    std::vector<std::string> read;
    for (std::string line; std::getline(text, line);) {
      read.push_back(line);
    }
    const bool isCopy = !read.empty() && !read.front().starts_with("execve(");
    if (place != FaultPlace::kStart || isCopy) {
      lines.insert(lines.end(), read.begin(), read.end());
    }
  }
  return lines;
}

}  // namespace Testing
