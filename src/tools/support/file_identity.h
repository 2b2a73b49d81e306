#pragma once

// When two paths mean one file. The tools have no other notion of it: spellings do not decide, nor
// whether the file is there yet.
//
// A file that exists is known by the system's number for it, so that every link to it is it. A path at
// which nothing is yet is known by the place where a file would be made: the folder, by its number, and
// the name in it. Where the folder is not there either, the nearest one above that is, and the names
// from there on. Two paths mean one file when either says so.

#include <compare>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "foundation/io/platform/folders.h"

namespace Hovar {

/// Where a file is, or would be made.
struct FilePlace {
  Vell::IO::Platform::FileId folder;  // the nearest one that exists
  std::string names;                  // from there on, in their one form, with '/' between them
  auto operator<=>(const FilePlace&) const = default;  // NOLINT(modernize-use-nullptr): as FileId
};

struct FileIdentity {
  std::optional<Vell::IO::Platform::FileId> file;  // while it exists
  FilePlace place;
};

/// The identity that a path has at the moment. Symbolic links are followed, also one that leads to a
/// file that is not there yet.
FileIdentity IdentityOf(const std::string& path);

/// True for two paths that mean one file or folder at the moment.
bool IsSameFile(const std::string& one, const std::string& other);

/// Values by file.
template <typename Value>
class FileMap {
 public:
  /// Sets the value of a file, known by the identity that the path has now. A place that the path had
  /// before is kept.
  void Set(const std::string& path, const Value& value) {
    const FileIdentity identity = IdentityOf(path);
    byPlace_.insert_or_assign(identity.place, value);
    if (identity.file) {
      byFile_.insert_or_assign(*identity.file, value);
    }
  }

  /// The value of the file that the path means now, or null.
  const Value* Find(const std::string& path) const {
    const FileIdentity identity = IdentityOf(path);
    if (const auto found = byPlace_.find(identity.place); found != byPlace_.end()) {
      return &found->second;
    }
    const auto found = identity.file ? byFile_.find(*identity.file) : byFile_.end();
    return found != byFile_.end() ? &found->second : nullptr;
  }

 private:
  std::map<FilePlace, Value> byPlace_;
  std::map<Vell::IO::Platform::FileId, Value> byFile_;
};

}  // namespace Hovar
