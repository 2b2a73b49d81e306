#pragma once

// The two writers that exist as long as the process does. They live in static storage and need no
// memory, so that even "Out of memory" can be said. Both flush every line, so lines of the two
// stand in the order in which they were written when they share a terminal or a pipe.

#include "foundation/io/text_writer.h"

namespace Vell::IO {

/// Banner, prompt and progress lines.
TextWriter& StandardOutput();

/// Error lines.
TextWriter& StandardError();

/// A handle to the process's own writer of standard output, for the log; no redirection changes it.
SharedHandle<TextWriter> StandardOutputHandle();

/// While an object of this class lives, StandardOutput and StandardError are the two given writers,
/// so that a tool can use the system's readers without showing what they print and the error lines
/// that they end in. The writers must outlive it. Handles that were taken before, and what else
/// goes to the process's own streams, are not concerned. Objects nest.
class StandardWritersRedirection {
 public:
  StandardWritersRedirection(TextWriter& output, TextWriter& error) noexcept;
  ~StandardWritersRedirection();
  StandardWritersRedirection(const StandardWritersRedirection&) = delete;
  StandardWritersRedirection& operator=(const StandardWritersRedirection&) = delete;

 private:
  TextWriter* earlierOutput_;
  TextWriter* earlierError_;
};

/// Flushes the process's standard output, which progress lines without a line feed need; false when
/// that fails, and then what was not written is dropped.
bool TryFlushStandardOutput() noexcept;

}  // namespace Vell::IO
