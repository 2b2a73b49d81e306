#pragma once

// Files that are made to be renamed or removed. Their names hold random digits, they are created only
// where nothing is, and whatever can be caught of the ends of this process removes them. As in
// platform.h, paths are zero-terminated bytes in which both '\' and '/' separate folders.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/io/platform/platform.h"

namespace Vell::IO::Platform {

/// Fills a block with bytes of the system's own randomness; false when it has none.
bool RandomBytes(void* bytes, std::size_t size) noexcept;

/// A name that is remembered until the object is destroyed: RemoveTemporaryFiles removes the file.
class TemporaryName;
struct ForgetName {
  void operator()(TemporaryName* name) const noexcept;
};
using TemporaryNameHandle = std::unique_ptr<TemporaryName, ForgetName>;

/// A file that is written at its end.
struct NewFile {
  FileHandle file = kNoFile;
  TemporaryNameHandle name;
};

/// Creates a file that only this process knows of, and remembers its name. Without a file when
/// anything is at the path, be it a link that leads nowhere, or on failure.
/// Errors: std::bad_alloc, before there is a file.
NewFile CreateTemporaryFile(const char* path);

/// Removes all files whose names are remembered. Safe in a handler of signals.
void RemoveTemporaryFiles() noexcept;

/// From now on a signal that ends this process (Ctrl-C, Ctrl-Break or the console's closing on
/// Windows) first removes the files. To be called before RememberStopRequests, whose signals then
/// end nothing. Signals that are ignored stay so.
void RemoveTemporaryFilesAtEnd() noexcept;

}  // namespace Vell::IO::Platform
