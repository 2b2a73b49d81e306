#pragma once

// The file beside the log in which the lines of a program stay, from both of its streams.

#include <memory>
#include <string>
#include <string_view>

#include "tools/support/protected_files.h"
#include "tools/support/temporary_file.h"

namespace Hovar {

/// The name of a capture beside a log, or another file.
std::string CaptureOf(const std::string& file);

/// Whether a file whose place cannot be taken may have another name.
enum class CaptureName { kAsGiven, kOrNumbered };

/// It is always a file of its own: what has its name before is replaced at once, not emptied, so that
/// two runs that name one file keep their lines apart, and nothing else is written through a link.
class Capture {
 public:
  /// A name of a protected file is no name of its own; they must outlive the object.
  explicit Capture(std::string path, CaptureName name = CaptureName::kAsGiven,
                   const ProtectedFiles* protectedFiles = nullptr);

  /// Creates the file in the place of an earlier one; where that cannot be replaced, as while another
  /// program has it open on Windows, under a name of its own (Path), if it may have one. False when that
  /// fails, for which Reason is a text of kWriteReasons.
  bool Create();

  /// The name of the file.
  const std::string& Path() const noexcept { return path_; }
  std::string_view Reason() const noexcept { return reason_; }

  /// Adds text; false when that fails, with its Reason.
  bool Write(std::string_view text) noexcept;

 private:
  bool Fail(std::string_view reason) noexcept;

  std::string path_;
  CaptureName name_;
  const ProtectedFiles* protectedFiles_;
  std::unique_ptr<TemporaryFile> file_;
  std::string_view reason_;
};

}  // namespace Hovar
