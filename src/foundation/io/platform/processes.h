#pragma once

// Other processes: what the launcher needs to start the program, watch it and stop it. As in
// platform.h, paths are zero-terminated bytes in which both '\' and '/' separate folders.

#include <cstdint>
#include <optional>

#include "foundation/io/platform/platform.h"

namespace Vell::IO::Platform {

/// A process that was started here and has not been waited for.
using ProcessHandle = std::intptr_t;
inline constexpr ProcessHandle kNoProcess = -1;

/// What a started process has as its standard streams.
struct ProcessStreams {
  FileHandle input = kStandardInput;
  FileHandle output = kStandardOutput;
  FileHandle error = kStandardError;
};

/// Starts the program in file `program` with `arguments` (the first one is the name that it sees as
/// its own, the last one is null), in the current folder. Returns kNoProcess on failure, also when
/// the file cannot be executed. No open file but the three streams reaches the new process.
ProcessHandle StartProcess(const char* program, const char* const* arguments,
                           const ProcessStreams& streams) noexcept;

/// What stands for the end by a signal in an exit status, beside the number of the signal.
inline constexpr int kSignalStatus = 128;

/// The exit status of a process that has ended (kSignalStatus + n when signal n ended it), or
/// nothing while it runs. The handle is of no use after a status was returned.
std::optional<int> PollProcess(ProcessHandle process) noexcept;

/// Waits for the end of a process and returns its exit status as PollProcess does, or -1 when there
/// is no such process.
int WaitForProcess(ProcessHandle process) noexcept;

/// Asks a process to end. It has ended when PollProcess or WaitForProcess says so.
void StopProcess(ProcessHandle process) noexcept;

/// Lets at least `milliseconds` pass, or less when a request to end comes that is remembered.
void Sleep(int milliseconds) noexcept;

/// From now on a request to end (INT, TERM or HUP; Ctrl-C, Ctrl-Break or the console's closing on
/// Windows) does not end this process but is remembered, so that what it started can be stopped.
void RememberStopRequests() noexcept;

/// The number of the request that came since RememberStopRequests (a signal's number), or 0.
int StopRequest() noexcept;

/// True when standard error is a terminal.
bool StandardErrorIsTerminal() noexcept;

/// True when standard error is a terminal that follows escape sequences (ECMA-48), which are
/// switched on where that is needed.
bool StandardErrorTakesEscapes() noexcept;

/// Columns of the terminal at standard error, or 80 when their number is not known.
int TerminalColumns() noexcept;

/// Processors that this process may use, at least 1.
int ProcessorCount() noexcept;

/// Name of this computer, zero-terminated; false when it cannot be found or does not fit.
bool HostName(char* name, std::size_t size) noexcept;

}  // namespace Vell::IO::Platform
