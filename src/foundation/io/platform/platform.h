#pragma once

// Everything that the system asks of the operating system, and the only folder that knows which one
// it is: files, folders, one key press, clocks, processes. It knows nothing of text and formats.
//
// Nothing here raises an error or prints: a failure is a result, and whoever called decides what it
// means. No memory is allocated, and nothing is locked: the system has a single thread.
//
// Paths are zero-terminated bytes in which both '\' and '/' separate folders, whatever the
// platform; they are translated here, at the call, and nowhere else.

#include <cstddef>
#include <cstdint>

namespace Vell::IO::Platform {

/// An open file of the operating system.
using FileHandle = std::intptr_t;
inline constexpr FileHandle kNoFile = -1;
inline constexpr FileHandle kStandardInput = 0;
inline constexpr FileHandle kStandardOutput = 1;
inline constexpr FileHandle kStandardError = 2;

enum class Access {
  kRead,               // the file must exist
  kReadRegular,        // the same, of a regular file only; never waits, as opening a pipe does
  kWrite,              // created, or emptied
  kReadWriteExisting,  // the file must exist
  kReadAppend,         // created if missing; every write goes to the end
  kReadWriteCreate,    // created, or emptied
};

enum class Origin { kStart, kCurrent, kEnd };

/// How the lines of text files end where they come from this platform's programs.
enum class LineEnds {
  kLineFeeds,            // every byte is taken as it stands
  kWithCarriageReturns,  // a carriage return before a line feed belongs to the line's end
};

/// The line ends of this platform.
LineEnds TextLineEnds() noexcept;

/// What this platform's other programs take to separate folders: '/' or '\'.
char FolderSeparator() noexcept;

/// Opens a file and returns its handle, or kNoFile. Never returns one of the three standard
/// handles, even when the process was started without them. The caller owns the handle until it
/// passes it to CloseFile; no program that this one starts gets it, except as a standard stream. A
/// file that is created may be read and written by everyone whom the user's mask does not keep out.
FileHandle OpenFile(const char* path, Access access) noexcept;

/// Reads up to `size` bytes. Returns how many (0 at the end of the file), or -1 on failure. As in all
/// functions of this folder, a call that a signal interrupted is repeated, unless a request to end is
/// remembered (RememberStopRequests).
std::int64_t ReadFile(FileHandle file, void* buffer, std::size_t size) noexcept;

/// Writes all `size` bytes; false on failure. Short and interrupted writes are continued.
bool WriteFile(FileHandle file, const void* buffer, std::size_t size) noexcept;

/// From now on writing into a pipe that nobody reads any more, and writing beyond the limit that
/// the system sets for files, fails as any other write does, instead of ending the process by a
/// signal. The programs that this one starts or becomes have it so too. Nothing to do on a platform
/// without such signals.
void IgnoreWriteSignals() noexcept;

/// Moves the position and returns the new one, counted from the start, or -1 on failure.
std::int64_t SeekFile(FileHandle file, std::int64_t offset, Origin origin) noexcept;

/// Length in bytes, or -1 on failure.
std::int64_t FileLength(FileHandle file) noexcept;

/// Closes a handle; false when the system reports that data may not have been stored.
bool CloseFile(FileHandle file) noexcept;

/// Creates one folder (no parents). Success is not reported: an existing folder is as good, and a
/// missing one shows when a file in it cannot be opened.
void CreateFolder(const char* path) noexcept;

/// Waits for one key press on the terminal: no Enter, no echo; keys typed before the call and the
/// further bytes of a key such as an arrow are dropped, and the terminal is left as it was, also
/// when a signal ends the process. When standard input is no terminal, one byte or its end serves.
/// A process in the background of its terminal does not wait and leaves the terminal alone.
void WaitForKey() noexcept;

/// True when standard input is a terminal.
bool StandardInputIsTerminal() noexcept;

/// Connects standard input to an empty source.
void DetachStandardInput() noexcept;

/// Seconds of calendar time since 1970-01-01 00:00 UTC.
std::int64_t CalendarSeconds() noexcept;

/// Processor time that this process has used, in milliseconds.
std::int64_t ProcessorMilliseconds() noexcept;

/// Writes the path of the running program's file, zero-terminated, with '/' between folders and
/// with symbolic links resolved, into `path`. False when it cannot be found or does not fit.
bool ProgramFile(char* path, std::size_t size) noexcept;

/// Runs the program in file `program` with `arguments` (the first one is the name that it sees as
/// its own, the last one is null) in place of the calling program, so that its exit status or
/// signal is the caller's. Returns only on failure. Where the system cannot replace a program, the
/// caller waits for the other one's end, which is then its own; `warn` is called where the system
/// cannot be asked to end the other one with the caller.
void BecomeProgram(const char* program, const char* const* arguments,
                   void (*warn)() noexcept = nullptr) noexcept;

}  // namespace Vell::IO::Platform
