#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Testing {

/// A new empty folder that is removed with everything in it at the end of the scope.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  /// The full name of a file in the folder.
  std::string File(std::string_view name) const { return (path_ / name).string(); }
  /// Writes a file (and the folders it lies in) and returns its full name.
  std::string Write(std::string_view name, std::string_view content) const;
  std::string Read(std::string_view name) const;
  bool Has(std::string_view name) const { return std::filesystem::exists(path_ / name); }

 private:
  std::filesystem::path path_;
};

/// True when anything below the folder has the name of a temporary file of the command (*.part).
bool HasTemporaryFile(const ScratchFolder& folder);

/// A whole file as bytes; a missing file fails the test and reads as empty.
std::string ReadFile(const std::filesystem::path& path);

/// A simple CSV file (no quotes) as rows of cells.
std::vector<std::vector<std::string>> ReadCsv(const std::filesystem::path& path);

/// A file of tests/reference/data.
std::filesystem::path ReferenceFile(std::string_view name);

}  // namespace Testing
