#pragma once

// Files that the command must not touch while it writes files of its own.

#include <functional>
#include <string>
#include <vector>

#include "tools/support/file_identity.h"

namespace Hovar {

class ProtectedFiles {
 public:
  /// Adds a file, be it there or not.
  void Add(const std::string& path);

  /// Looks again where the files are: a run makes files and folders.
  void LookAgain();

  /// The path, as it was added, of the file that `path` means too; null where it means none of them, or
  /// a device or a pipe, which no writing can damage.
  const std::string* Find(const std::string& path) const;

 private:
  std::vector<std::string> paths_;
  FileMap<std::string> files_;
};

/// Offers NAME.1, NAME.2 and so on to `take`, which fails where a name is taken, until it succeeds, and
/// returns that name; an empty one when it failed although the name was free. Names of protected files
/// are not offered.
std::string TakeNumberedName(const std::string& path, const ProtectedFiles& files,
                             const std::function<bool(const std::string& name)>& take);

}  // namespace Hovar
