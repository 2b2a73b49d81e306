#pragma once

// Files and folders that the user may not read or write. Root may do everything, so as root a
// command runs without root's rights. POSIX only.

#include <filesystem>

#include "support/process.h"

namespace Testing {

inline constexpr auto kNone = std::filesystem::perms::none;
inline constexpr auto kReadOnly = std::filesystem::perms::owner_read;
inline constexpr auto kReadAndSearch =
    std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec;

/// The command without the right to pass over the rights of files: as it stands, and for root with
/// no capability. Needs setpriv (util-linux).
Command WithoutRights(Command command);

/// Takes rights to a file or folder away for one scope.
class LimitedRights {
 public:
  LimitedRights(const std::filesystem::path& path, std::filesystem::perms rights);
  ~LimitedRights();
  LimitedRights(const LimitedRights&) = delete;
  LimitedRights& operator=(const LimitedRights&) = delete;

 private:
  std::filesystem::path path_;
};

}  // namespace Testing
