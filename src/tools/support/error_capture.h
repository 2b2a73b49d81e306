#pragma once

// The program's own readers give the verdicts of a check, so that check and program cannot drift
// apart. This is how they are called: what they print and log is dropped, and the error that ends
// them is a result.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/standard_writers.h"
#include "foundation/io/text_sink.h"

namespace Hovar {

/// Keeps error lines. Without memory for one it says so afterwards: an error that is raised while
/// an error line is written ends the process.
class ErrorLineSink final : public Vell::IO::TextSink {
 public:
  ErrorLineSink() : TextSink(Use::kDrop) {}
  void Write(const void* buffer, std::size_t count) override;

  /// Errors: std::bad_alloc when there was no memory for the text.
  const std::string& Lines() const;

 private:
  std::string lines_;
  bool isLost_ = false;
};

/// Stands in for standard output and standard error while it exists, and keeps the error line.
class CapturedWriters {
 public:
  CapturedWriters();
  /// The text of the first error line, without "Error: " and the line feed.
  /// Errors: std::bad_alloc.
  std::string ErrorText() const;

 private:
  Vell::SharedHandle<ErrorLineSink> errorSink_;
  Vell::IO::TextWriter output_;
  Vell::IO::TextWriter error_;
  Vell::IO::StandardWritersRedirection redirection_;
};

/// Runs a reader.
/// Result: the text of the error that ended it, or nothing.
/// Errors: OutOfMemoryException and std::bad_alloc, which say nothing about the file.
template <typename Call>
std::optional<std::string> ErrorOf(Call call) {
  const CapturedWriters writers;
  try {
    call();
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    throw;
  } catch (const Vell::Exceptions::Exception&) {
    return writers.ErrorText();
  }
  return std::nullopt;
}

/// What an error line says was required, and what was found.
struct Mismatch {
  std::string expected;
  std::string current;
};

/// The two texts of the line for a certain file, or nothing if it is another line.
std::optional<Mismatch> MismatchIn(std::string_view errorText, std::string_view file);

}  // namespace Hovar
