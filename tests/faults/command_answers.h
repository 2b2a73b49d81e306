#pragma once

// What a run of the command that met a fault may leave.

#include <string>

#include "faults/command_tools.h"
#include "faults/traced_command.h"

namespace Testing {

/// Compares runs of a tool with one without a fault.
class CommandAnswers {
 public:
  /// Makes the run without a fault.
  CommandAnswers(const CommandTool& tool, const CommandStudy& study, const TracedCommand& command);

  /// Expects the status and the files of the run without a fault.
  void ExpectWhole(const CommandResult& result) const;
  /// Expects the same, or a status that is not 0 and a line on standard error that says why.
  void ExpectAnswer(const CommandResult& result) const;
  /// Expects the end that a signal asked for, or the run without a fault when it came too late.
  void ExpectEnd(const CommandResult& result, int signal) const;
  /// Expects the end by SIGKILL, which may leave temporary files.
  void ExpectKilled(const CommandResult& result) const;
  /// Expects that running the tool once more gives what a run without a fault gives.
  void ExpectRepaired() const;

 private:
  void ExpectUndamaged(const FolderFiles& files, FurtherFiles further) const;
  void ExpectKnown(const std::string& name, const std::string& content) const;
  FolderFiles Accepted(const CommandResult& result) const;
  bool IsKept(const std::string& name) const;
  bool HasAside(const FolderFiles& files, const std::string& name,
                const std::string& content) const;

  const CommandTool& tool_;
  const CommandStudy& study_;
  const TracedCommand& command_;
  RunResult whole_;
  FolderFiles complete_;
};

}  // namespace Testing
