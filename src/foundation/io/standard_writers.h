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

/// Flushes standard output; false when that fails.
bool TryFlushStandardOutput() noexcept;

}  // namespace Vell::IO
