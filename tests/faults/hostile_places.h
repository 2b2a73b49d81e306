#pragma once

// Where the name of a file can stand: in each argument of the command, and in each element of a
// definition with which each tool works.

#include <string>
#include <vector>

namespace Testing {

/// What a command does with its definition.
enum class Task {
  kPlainRun,    // the program alone, by the command
  kEchoedRun,   // the program's lines appear as usual
  kWatchedRun,  // they go to a file
  kCheck,
  kChains,
  kReport,
};

/// In texts and arguments '@' is the name, and '%' of an argument the definition.
struct HostilePlace {
  std::string what;
  Task task;
  std::vector<std::string> arguments;
  /// The definition and its own name: "d.xml", or "@".
  std::string definition;
  std::string definitionName;
  /// Where the hostile file lies, below the study's folder.
  std::string file;
  /// What it holds when it is a regular one.
  std::string content;
  /// True where a definition or an option names it as a result.
  bool isOutput = false;
  /// True where the command gives the file its name; only kinds matter there.
  bool isNameFixed = false;
  /// True where two chains have run before.
  bool hasChains = false;

  /// True when the name stands in a definition.
  bool IsInDefinition() const;
  /// True when the tool, and not the program, reads or writes the file.
  bool IsOfTheTool() const;
};

std::vector<HostilePlace> HostilePlaces();

/// `text` with the name in place of the mark.
std::string WithName(std::string text, const std::string& name);

}  // namespace Testing
