#pragma once

// What runs write: whether their folders and files could be made, what would be overwritten, and
// which names collide. Nothing is made; what the runs of a batch would have made by then is kept in
// memory beside what the disk shows.

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "foundation/io/platform/folders.h"
#include "tools/check/findings.h"
#include "tools/plan/definition_file.h"
#include "tools/support/file_identity.h"

namespace Hovar {

/// A file that a run would have written.
struct WrittenFile {
  std::string path;  // as written
  FileRole role = FileRole::kNone;
  std::string definition;  // of the run
  int run = 0;             // its number
};

class OutputCheck {
 public:
  /// Checks the outputs of one run against the disk, its inputs, and the runs before it.
  void Check(Findings& findings, const DefinitionFile& definition);

  /// Warns of all files of earlier runs that would be overwritten, as found by the checks so far.
  void WarnOfOverwriting(Findings& findings) const;

  /// What an earlier run would have written under this path, or null.
  const WrittenFile* Written(const std::string& path) const { return files_.Find(path); }

  /// True when the run's own log file, which is emptied first, is this input file.
  static bool LogEmpties(const DefinitionFile& definition, const std::string& input);

 private:
  using PathKind = Vell::IO::Platform::PathKind;

  PathKind KindOf(const std::string& path) const;
  bool LeadsThroughNothing(const std::string& path) const;
  bool CanMakeMissing(Findings& findings, const DefinitionFile& definition,
                      const PlannedFile& output) const;
  std::string OnDisk(const std::string& path) const;
  bool MayWriteIn(const std::string& folder) const;
  bool MakeFolder(Findings& findings, const DefinitionFile& definition, const std::string& path,
                  Element element);
  void MakeFile(Findings& findings, const DefinitionFile& definition, const PlannedFile& output);
  bool CanMake(Findings& findings, const DefinitionFile& definition,
               const PlannedFile& output) const;
  void WarnOfCollision(Findings& findings, const DefinitionFile& definition,
                       const PlannedFile& output, bool isInput);

  /// A file on disk that a run would overwrite.
  struct Overwritten {
    PlannedFile output;
    std::string folder;      // of the run
    std::string definition;  // that names it, at
    Place place;
  };

  int run_ = 0;
  std::vector<Overwritten> overwritten_;  // in the order of the runs
  FileMap<WrittenFile> files_;
  std::map<std::string, bool> folders_;           // made by runs; by normal path
  std::map<std::string, std::string> spellings_;  // the first path of those small letters
};

}  // namespace Hovar
