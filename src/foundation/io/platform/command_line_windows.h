#pragma once

#include <cstddef>

#include "foundation/io/platform/wide_text_windows.h"

namespace Vell::IO::Platform {

/// The one text from which a new process makes its arguments, written by the rules by which the
/// start-up code of C programs takes it apart: blanks separate, double quotes hold together, and a
/// backslash has a meaning only in a row of them before a double quote.
class CommandLine {
 public:
  /// `arguments` begin with the name of the program and end with a null pointer.
  explicit CommandLine(const char* const* arguments) noexcept;

  /// Null when it does not fit. The system may write to it.
  wchar_t* Get() noexcept { return fits_ ? text_.data() : nullptr; }

 private:
  void Append(wchar_t character) noexcept;
  void Append(std::size_t count, wchar_t character) noexcept;
  void AppendName(const wchar_t* name) noexcept;
  void AppendArgument(const wchar_t* argument) noexcept;

  WideBuffer text_;
  std::size_t length_ = 0;
  bool fits_ = true;
};

}  // namespace Vell::IO::Platform
