#pragma once

#include <string>
#include <string_view>

#include "foundation/io/platform/temporary_files.h"

namespace Hovar {

/// A new file in the folder of its later name, as NAME.DIGITS.part with random digits. It is created
/// where nothing was, no link is followed, and it has the rights of any new file. Until it is given a
/// name it is removed by the destructor and by every signal that ends this process.
///
/// What is written goes to the end of the file; it is read at any place.
class TemporaryFile {
 public:
  /// Creates the file for the later name `path`; IsOpen says whether that succeeded, and Reason why
  /// not.
  explicit TemporaryFile(const std::string& path);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  std::string_view Reason() const noexcept { return reason_; }
  bool IsOpen() const noexcept { return made_.file != Vell::IO::Platform::kNoFile; }
  /// The name that the file has until it is given another one.
  const std::string& Path() const noexcept { return path_; }
  Vell::IO::Platform::FileHandle Handle() const noexcept { return made_.file; }

  /// Closes the file; false when the system reports that bytes may not have been stored.
  bool Close() noexcept;

  /// Gives the file a name for good, and the place of whatever has it at the moment but a folder; a
  /// symbolic link is replaced, not what it leads to. False on failure; all stays as it was then.
  bool Replace(const std::string& path);

  /// As Replace, but fails where anything has the name.
  bool Name(const std::string& path);

 private:
  std::string path_;
  std::string_view reason_;
  Vell::IO::Platform::NewFile made_;
};

}  // namespace Hovar
