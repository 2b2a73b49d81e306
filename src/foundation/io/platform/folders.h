#pragma once

// What lies in folders: kinds, names, identity. Only the launcher looks; the program itself opens
// the files that its definition names. As in platform.h, paths are zero-terminated bytes in which
// both '\' and '/' separate folders.

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/io/platform/platform.h"

namespace Vell::IO::Platform {

enum class PathKind { kMissing, kFile, kFolder, kOther };

/// What a path leads to, symbolic links followed; nothing when the system cannot tell, as in a folder
/// that may not be searched.
std::optional<PathKind> LookAt(const char* path) noexcept;

/// As LookAt; what the system cannot tell is taken for missing.
PathKind KindOf(const char* path) noexcept;

/// What a path leads to that is neither a regular file nor a folder.
enum class SpecialKind { kNone, kNamedPipe, kSocket, kDevice };

SpecialKind SpecialKindOf(const char* path) noexcept;

/// True for a named pipe, which whoever opens it for writing waits at until somebody reads it.
inline bool IsNamedPipe(const char* path) noexcept {
  return SpecialKindOf(path) == SpecialKind::kNamedPipe;
}

/// True when a path leads to a regular file. Unlike in all other functions a '\' in it is a
/// character like others where the system takes it as one: for paths that the system has given.
bool IsFileOfSystem(const char* path) noexcept;

/// What a symbolic link holds, zero-terminated; false when the path is none or it does not fit.
/// Always false on Windows.
bool LinkTarget(const char* path, char* target, std::size_t size) noexcept;

/// What tells a file or folder from every other one that exists at the same time.
struct FileId {
  std::uint64_t volume = 0;
  std::uint64_t number = 0;  // on the volume
  // A false alarm of the checker, which sees a 0 in what the compiler makes.
  auto operator<=>(const FileId&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// What changes when a file is replaced or written.
struct FileStamp {
  FileId id;
  std::int64_t size = 0;     // bytes
  std::int64_t changed = 0;  // in the system's unit and from its start
  bool operator==(const FileStamp&) const = default;
};

/// The stamp of what a path leads to, symbolic links followed; nothing where there is nothing.
std::optional<FileStamp> StampOf(const char* path) noexcept;

/// Writes the name of a file in the one form that all its spellings have in one folder,
/// zero-terminated: where the system takes capital letters for small ones, with capitals alone. False
/// when it does not fit.
bool FoldName(const char* name, char* folded, std::size_t size) noexcept;

/// True when files can be created in a folder.
bool FolderIsWritable(const char* path) noexcept;

/// Gives a file or folder another name; false on failure, also when the new name is taken, be it by a
/// link that leads nowhere.
bool Rename(const char* from, const char* to) noexcept;

/// Gives a file another name and takes the place of the file that has it, at once: whoever opens
/// the new name finds the one or the other file. A symbolic link of the new name is replaced, not
/// followed. False on failure; both stay then.
bool ReplaceFile(const char* from, const char* to) noexcept;

/// Removes a file, not a folder; false on failure.
bool RemoveFile(const char* path) noexcept;

/// Whether an entry of this name exists, be it a link that leads nowhere; nothing when the system does
/// not say.
std::optional<bool> IsTaken(const char* path) noexcept;

/// The current folder's absolute path, zero-terminated and with '/' between folders; false when it
/// cannot be found or does not fit.
bool CurrentFolder(char* path, std::size_t size) noexcept;

}  // namespace Vell::IO::Platform
