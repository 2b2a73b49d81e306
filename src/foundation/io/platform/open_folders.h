#pragma once

// Folders that are open, and what they hold, reached through them: whoever walks down a tree this way
// never leaves it, whatever names, links or changes made meanwhile lie in it. Names are those that a
// visit gives; in them '\' separates nothing.

#include <cstdint>

#include "foundation/io/platform/platform.h"

namespace Vell::IO::Platform {

/// An open folder of the operating system.
using FolderHandle = std::intptr_t;
inline constexpr FolderHandle kNoFolder = -1;

/// What an entry of a folder is; a symbolic link, or what Windows has in its place, is kLink whatever
/// it leads to. kUnknown is an entry that cannot be looked at.
enum class EntryKind { kMissing, kFile, kFolder, kLink, kOther, kUnknown };

/// Opens a folder, or the one that symbolic links lead to; kNoFolder on failure. `path` is one, and
/// both '\' and '/' separate folders in it.
FolderHandle OpenFolder(const char* path) noexcept;

/// Opens a folder in a folder; kNoFolder for anything else, a symbolic link among it.
FolderHandle OpenFolderIn(FolderHandle folder, const char* name) noexcept;

/// Opens a regular file in a folder for reading; kNoFile for anything else, a symbolic link among it.
/// Never waits, as for the writer of a pipe.
FileHandle OpenFileIn(FolderHandle folder, const char* name) noexcept;

EntryKind KindIn(FolderHandle folder, const char* name) noexcept;

/// True when the folder in a folder is one that this process has no right to read.
bool IsForbiddenFolder(FolderHandle folder, const char* name) noexcept;

/// Called with the name of an entry (not its path) and the caller's context.
using FolderVisitor = void (*)(void* context, const char* name);

/// Visits all entries but "." and "..", in no particular order; false when they cannot be read to the
/// last one.
bool VisitFolder(FolderHandle folder, FolderVisitor visitor, void* context);

void CloseFolder(FolderHandle folder) noexcept;

}  // namespace Vell::IO::Platform
