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
/// the file cannot be executed. No open file but the three streams reaches the new process. It
/// answers every signal as a process usually does, but still ignores what this one ignores of the
/// signals of failed writes (IgnoreWriteSignals), INT, TERM, HUP, QUIT (`nohup`) and job control.
///
/// The system ends the new process when this one, which has one thread, has ended in any way. When
/// it cannot be asked to, `*isBound` becomes false, otherwise true.
ProcessHandle StartProcess(const char* program, const char* const* arguments,
                           const ProcessStreams& streams, bool* isBound = nullptr) noexcept;

/// The two ends of a pipe, both kNoFile where none could be made. No process inherits them.
struct Pipe {
  FileHandle output = kNoFile;  // where it is read
  FileHandle input = kNoFile;   // where it is written
};

/// A pipe for what a started process writes. It holds a megabyte where the system allows it.
Pipe NewPipe() noexcept;

/// Reads what has arrived at the output of a NewPipe, up to `size` bytes, without waiting. Returns
/// how many: 0 when there is nothing now, kPipeEnd when nobody can write any more, or kPipeFailure.
inline constexpr std::int64_t kPipeEnd = -1;
inline constexpr std::int64_t kPipeFailure = -2;
std::int64_t ReadArrived(FileHandle pipe, void* buffer, std::size_t size) noexcept;

/// What stands for the end by a signal in an exit status, beside the number of the signal.
inline constexpr int kSignalStatus = 128;

/// What stands for the status of a process that has ended, but of which it cannot be had.
inline constexpr int kLostStatus = 255;

/// The exit status of a process that has ended (kSignalStatus + n when signal n ended it), or
/// nothing while it runs. The handle is of no use after a status was returned.
std::optional<int> PollProcess(ProcessHandle process) noexcept;

/// Waits for the end of a process and returns its exit status as PollProcess does, or -1 when there
/// is no such process.
int WaitForProcess(ProcessHandle process) noexcept;

/// Asks a process to end, also one that is stopped. It has ended when PollProcess or WaitForProcess
/// says so.
void StopProcess(ProcessHandle process) noexcept;

/// Ends a process, which is not asked.
void KillProcess(ProcessHandle process) noexcept;

/// To be called when a command starts, which may have any parent: nothing that the parent has set
/// keeps it from learning of the ends of its processes or of requests to end. Signals that the
/// parent ignores stay ignored, as `nohup` wants it. Nothing to do on a platform without signals.
void ResetSignals() noexcept;

/// From now on a request to end does not end this process but is remembered, so that what it
/// started can be stopped: every signal that ends a process, can be caught and is no sign of a
/// fault (INT, TERM, HUP, QUIT, USR1, XCPU, ...) unless it is ignored; Ctrl-C, Ctrl-Break or the
/// console's closing on Windows. From the third request on, one that comes a second after the first
/// ends this process at once.
void RememberStopRequests() noexcept;

/// From now on requests to end are no longer remembered but end this process, as at its start.
void ForgetStopRequests() noexcept;

/// The number of the first request that came since RememberStopRequests (a signal's number), or 0.
int StopRequest() noexcept;

/// How many requests have come since then.
int StopRequestCount() noexcept;

/// Lets at least `milliseconds` pass. A request to end that is remembered ends the sleep in which it
/// comes, or else the next one.
void Sleep(int milliseconds) noexcept;

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
