#pragma once

// Runs of the command with one hostile file.

#include <map>
#include <string>

#include "blackbox/watched_run.h"
#include "faults/hostile_kinds.h"
#include "faults/hostile_names.h"
#include "faults/hostile_places.h"

namespace Testing {

/// What a folder holds: of each path its kind and, of a regular file, its bytes. Links are not
/// followed.
using FileTree = std::map<std::string, std::string>;

/// What FileTree says of a regular file with these bytes.
std::string RegularFile(const std::string& bytes);

/// One case of the tables.
struct HostileCell {
  const HostilePlace* place;
  HostileName name;
  NamedKind kind;

  std::string Text() const;
  /// The path of the hostile file below the study.
  std::string File() const { return WithName(place->file, name.name); }
  std::string Definition() const { return WithName(place->definitionName, name.name); }
  /// The folder of the definition's outputs.
  std::string OutputFolder() const;
};

struct HostileEnd {
  WatchedEnd end;
  FileTree before;
  FileTree after;

  const ProcessResult& Result() const { return end.result; }
  /// Paths that are there only after the run, or hold something else then.
  bool IsChanged(const std::string& path) const;
};

/// Bytes of a file in another folder; no report may hold them.
inline constexpr char kForeignBytes[] = "bytes of a file in another folder";

/// Runs the command of a cell.
HostileEnd RunCell(const HostileCell& cell, const std::string& launcher);

/// Runs the program alone with the cell's definition.
HostileEnd RunProgramAlone(const HostileCell& cell);

}  // namespace Testing
