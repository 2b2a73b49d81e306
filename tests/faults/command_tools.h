#pragma once

// The command's tools as the fault suites run them, and the folder they are run in. POSIX only.

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/files.h"

namespace Testing {

/// Files by their names below a folder.
using FolderFiles = std::map<std::string, std::string>;

struct CommandTool {
  std::string name;                    // of its tests
  std::vector<std::string> arguments;  // after the command's name
  bool startsProgram = false;
  bool keepsEarlier = false;  // what is replaced is there afterwards under another name
  /// What must be there, by runs of the command, before it runs.
  std::vector<std::vector<std::string>> preparations = {};
  /// Earlier results in the way of its own: they hold a line that no tool writes.
  std::vector<std::string> earlier = {};
  /// The files that it writes as a whole or not at all. Of others, which the program writes, a
  /// fault may leave the beginning.
  std::set<std::string> whole = {};
};

const std::vector<CommandTool>& CommandTools();

enum class FurtherFiles { kNone, kAllowed };

/// Expects the same names with the same bytes; with kAllowed, others beside them.
void ExpectSameFiles(const FolderFiles& files, const FolderFiles& expected, FurtherFiles further);

/// A text without the times that the program took.
std::string WithoutDurations(const std::string& text);

/// So that GoogleTest prints it.
void PrintTo(const CommandTool& tool, std::ostream* stream);

/// The folder that a tool runs in.
class CommandStudy {
 public:
  explicit CommandStudy(const CommandTool& tool);

  const std::filesystem::path& Path() const { return folder_.Path(); }
  /// Makes the folder what it was before the tool ran first.
  void Restore() const;
  /// What was there before the tool ran.
  const FolderFiles& Before() const { return before_; }
  /// What is there now. A run record is without time and place, printed lines without durations.
  FolderFiles Files() const;

 private:
  ScratchFolder folder_;
  FolderFiles before_;
};

}  // namespace Testing
