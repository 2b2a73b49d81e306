#pragma once

// Outputs of the command: each appears under its name only when it is complete.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/io/platform/folders.h"
#include "tools/support/protected_files.h"
#include "tools/support/replacement.h"
#include "tools/support/temporary_file.h"

namespace Hovar {

/// A file that is written under another name in its folder (TemporaryFile) and takes its name, and the
/// place of an earlier file, when it is complete. Until then, and if anything fails, the earlier file
/// stays. A symbolic link that has the name is replaced, not the file that it leads to.
///
/// A name that leads to a terminal, another character device or a pipe of a shell is written directly.
/// A pipe that lies in a folder is refused.
class OutputFile {
 public:
  /// `kind` is what the file is, if it is one whose name a user chose: what has come to its name since
  /// Open and is no such output is not replaced. Nor is one of the protected files, which must outlive
  /// the object.
  explicit OutputFile(std::string path, std::optional<OwnOutput> kind = std::nullopt,
                      ProtectedFiles* protectedFiles = nullptr);

  /// False when the file cannot be created.
  bool Open();
  /// Adds bytes. A failure shows in Complete.
  void Write(std::string_view text);
  /// Hands all bytes to the operating system and gives the file its name. False when any step since
  /// Open failed; nothing is left of it then.
  bool Complete();
  /// As Complete, but a file that cannot take its name takes the first one that is free of NAME.1,
  /// NAME.2 and so on. The name that it has taken, or nothing when any other step failed.
  std::optional<std::string> CompleteOrKeepBeside();

  /// Why the last step that failed did, a text of kWriteReasons.
  std::string_view Reason() const noexcept { return reason_; }

 private:
  using FileHandle = Vell::IO::Platform::FileHandle;

  /// A device, or one of this process's own streams, which is not closed.
  class Direct {
   public:
    explicit Direct(const std::string& path);
    ~Direct();
    Direct(const Direct&) = delete;
    Direct& operator=(const Direct&) = delete;
    bool IsOpen() const noexcept { return file_ != Vell::IO::Platform::kNoFile; }
    FileHandle Handle() const noexcept { return file_; }

   private:
    FileHandle file_;
    bool isOwned_ = false;
  };

  bool OpenDirect();
  void WriteBlock();
  bool HasAllBytes();
  bool TakePlace();
  bool Fail(std::string_view reason) noexcept;

  std::string path_;
  std::optional<OwnOutput> kind_;
  ProtectedFiles* protectedFiles_;
  std::optional<Vell::IO::Platform::FileStamp> before_;
  std::unique_ptr<TemporaryFile> file_;
  std::unique_ptr<Direct> direct_;
  bool isGood_ = false;
  std::string_view reason_;
  std::string block_;
};

/// As OutputFile, for a text in memory; false when any step failed.
bool WriteWholeFile(const std::string& path, std::string_view text);

}  // namespace Hovar
