#pragma once

// The two writers that exist as long as the process does. They live in static storage and need no
// memory, so that even "Out of memory" can be said.

#include "foundation/io/text_writer.h"

namespace Vell::IO {

/// Banner, prompt and progress lines.
TextWriter& StandardOutput();

/// Error lines.
TextWriter& StandardError();

/// A handle to the writer of StandardOutput, for the log.
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

/// Flushes standard output; false when that fails.
bool TryFlushStandardOutput() noexcept;

}  // namespace Vell::IO
