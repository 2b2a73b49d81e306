#include <windows.h>

#include <algorithm>
#include <array>
#include <bit>
#include <csignal>

#include "foundation/io/platform/command_line_windows.h"
#include "foundation/io/platform/processes.h"
#include "foundation/io/platform/wide_text_windows.h"

namespace Vell::IO::Platform {
namespace {

constexpr int kAbort = 6;

HANDLE ProcessOf(ProcessHandle process) noexcept {
  return reinterpret_cast<HANDLE>(process);  // NOLINT(performance-no-int-to-ptr): it was one
}

/// The exit status as other systems report it: there an end by the system, or by Ctrl-C, is a
/// signal.
int StatusOf(DWORD exitCode) noexcept {
  constexpr DWORD kControlC = 0xC000013A;
  constexpr DWORD kFirstError = 0xC0000000;
  return exitCode == kControlC     ? kSignalStatus + SIGINT
         : exitCode >= kFirstError ? kSignalStatus + kAbort
                                   : static_cast<int>(exitCode);
}

HANDLE StreamHandle(FileHandle file) noexcept {
  return file == kStandardInput    ? GetStdHandle(STD_INPUT_HANDLE)
         : file == kStandardOutput ? GetStdHandle(STD_OUTPUT_HANDLE)
         : file == kStandardError  ? GetStdHandle(STD_ERROR_HANDLE)
                                   : ProcessOf(file);
}

/// Copies of the three streams that a new process may inherit. A stream that this process does not
/// have, the new one has not either.
class InheritedStreams {
 public:
  explicit InheritedStreams(const ProcessStreams& streams) noexcept {
    const HANDLE self = GetCurrentProcess();
    for (const FileHandle file : {streams.input, streams.output, streams.error}) {
      HANDLE& copy = byPlace_[places_++];
      if (file != kNoFile && DuplicateHandle(self, StreamHandle(file), self, &copy, 0, TRUE,
                                             DUPLICATE_SAME_ACCESS) != 0) {
        present_[count_++] = copy;
      } else {
        copy = nullptr;
      }
    }
  }
  ~InheritedStreams() {
    for (std::size_t i = 0; i < count_; ++i) {
      CloseHandle(present_[i]);
    }
  }
  InheritedStreams(const InheritedStreams&) = delete;
  InheritedStreams& operator=(const InheritedStreams&) = delete;

  HANDLE operator[](std::size_t place) const noexcept { return byPlace_[place]; }
  HANDLE* Present() noexcept { return present_.data(); }
  std::size_t Count() const noexcept { return count_; }

 private:
  std::array<HANDLE, 3> byPlace_{};
  std::array<HANDLE, 3> present_{};
  std::size_t places_ = 0;
  std::size_t count_ = 0;
};

/// The list that says which handles a new process inherits: without it, all that may be inherited
/// in this process would be, also those that another library made.
class InheritanceList {
 public:
  explicit InheritanceList(InheritedStreams& streams) noexcept {
    SIZE_T size = memory_.size();
    isMade_ = InitializeProcThreadAttributeList(Get(), 1, 0, &size) != 0;
    isComplete_ = isMade_ && (streams.Count() == 0 ||
                              UpdateProcThreadAttribute(
                                  Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, streams.Present(),
                                  streams.Count() * sizeof(HANDLE), nullptr, nullptr) != 0);
  }
  ~InheritanceList() {
    if (isMade_) {
      DeleteProcThreadAttributeList(Get());
    }
  }
  InheritanceList(const InheritanceList&) = delete;
  InheritanceList& operator=(const InheritanceList&) = delete;

  bool IsComplete() const noexcept { return isComplete_; }
  LPPROC_THREAD_ATTRIBUTE_LIST Get() noexcept {
    return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
  }

 private:
  alignas(std::max_align_t) std::array<unsigned char, 256> memory_{};  // one entry takes 48
  bool isMade_ = false;
  bool isComplete_ = false;
};

/// A job that ends its processes when the last handle to it is closed, so with this process,
/// whatever ends it. Null when there is none to be had.
HANDLE NewJob() noexcept {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  if (job != nullptr && SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits,
                                                sizeof limits) == 0) {
    CloseHandle(job);
    return nullptr;
  }
  return job;
}

/// The job of all processes that are started here. Its handle is closed by the system, at the end.
HANDLE OwnJob() noexcept {
  static const HANDLE job = NewJob();
  return job;
}

/// Starts a process in the job of this one. Null on failure. `isBound` says whether that job could
/// be had.
HANDLE Start(const char* program, const char* const* arguments, const ProcessStreams& streams,
             bool& isBound) noexcept {
  const NativePath file(program);
  CommandLine line(arguments);
  InheritedStreams inherited(streams);
  InheritanceList list(inherited);
  if (file.Get() == nullptr || line.Get() == nullptr || !list.IsComplete()) {
    return nullptr;
  }
  STARTUPINFOEXW start{};
  start.StartupInfo.cb = sizeof start;
  start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  start.StartupInfo.hStdInput = inherited[0];
  start.StartupInfo.hStdOutput = inherited[1];
  start.StartupInfo.hStdError = inherited[2];
  start.lpAttributeList = list.Get();
  PROCESS_INFORMATION started{};
  if (CreateProcessW(file.Get(), line.Get(), nullptr, nullptr, inherited.Count() > 0 ? TRUE : FALSE,
                     EXTENDED_STARTUPINFO_PRESENT | CREATE_SUSPENDED, nullptr, nullptr,
                     &start.StartupInfo, &started) == 0) {
    return nullptr;
  }
  const HANDLE job = OwnJob();
  isBound = job != nullptr && AssignProcessToJobObject(job, started.hProcess) != 0;
  ResumeThread(started.hThread);
  CloseHandle(started.hThread);
  return started.hProcess;
}

/// Ctrl-C and Ctrl-Break reach every process of the console. One that waits for another leaves them
/// to it and goes on waiting for its end.
BOOL WINAPI LeaveToOther(DWORD event) { return event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT; }

}  // namespace

// Windows cannot put another program in a process's place. The one that waits is its stand-in: it
// ends with the other's exit code, and the other one ends with it.
void BecomeProgram(const char* program, const char* const* arguments,
                   void (*warn)() noexcept) noexcept {
  SetConsoleCtrlHandler(LeaveToOther, TRUE);
  bool isBound = true;
  const HANDLE process = Start(program, arguments, ProcessStreams(), isBound);
  if (process == nullptr) {
    SetConsoleCtrlHandler(LeaveToOther, FALSE);
    return;
  }
  if (!isBound && warn != nullptr) {
    warn();
  }
  WaitForSingleObject(process, INFINITE);
  DWORD exitCode = 1;
  GetExitCodeProcess(process, &exitCode);
  ExitProcess(exitCode);
}

ProcessHandle StartProcess(const char* program, const char* const* arguments,
                           const ProcessStreams& streams, bool* isBound) noexcept {
  bool isInJob = true;
  const HANDLE process = Start(program, arguments, streams, isInJob);
  if (isBound != nullptr) {
    *isBound = isInJob;
  }
  return process == nullptr ? kNoProcess : reinterpret_cast<ProcessHandle>(process);
}

Pipe NewPipe() noexcept {
  constexpr DWORD kMegabyte = 1 << 20;
  HANDLE output = nullptr;
  HANDLE input = nullptr;
  if (CreatePipe(&output, &input, nullptr, kMegabyte) == 0) {
    return {};
  }
  return {reinterpret_cast<FileHandle>(output), reinterpret_cast<FileHandle>(input)};
}

std::int64_t ReadArrived(FileHandle pipe, void* buffer, std::size_t size) noexcept {
  DWORD arrived = 0;
  if (PeekNamedPipe(ProcessOf(pipe), nullptr, 0, nullptr, &arrived, nullptr) == 0) {
    return GetLastError() == ERROR_BROKEN_PIPE ? kPipeEnd : kPipeFailure;
  }
  const std::int64_t count =
      arrived == 0 ? 0 : ReadFile(pipe, buffer, std::min<std::size_t>(size, arrived));
  return count < 0 ? kPipeFailure : count;
}

std::optional<int> PollProcess(ProcessHandle process) noexcept {
  DWORD exitCode = 0;
  if (WaitForSingleObject(ProcessOf(process), 0) != WAIT_OBJECT_0 ||
      GetExitCodeProcess(ProcessOf(process), &exitCode) == 0) {
    return std::nullopt;
  }
  CloseHandle(ProcessOf(process));
  return StatusOf(exitCode);
}

int WaitForProcess(ProcessHandle process) noexcept {
  if (process == kNoProcess) {
    return -1;
  }
  WaitForSingleObject(ProcessOf(process), INFINITE);
  return PollProcess(process).value_or(-1);
}

void StopProcess(ProcessHandle process) noexcept {
  TerminateProcess(ProcessOf(process), kSignalStatus + SIGTERM);
}

// The system ends it at once; there is nothing that could be asked.
void KillProcess(ProcessHandle process) noexcept { StopProcess(process); }

bool StandardErrorIsTerminal() noexcept {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

bool StandardErrorTakesEscapes() noexcept {
  const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode = 0;
  return GetConsoleMode(console, &mode) != 0 &&
         SetConsoleMode(console,
                        mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

int TerminalColumns() noexcept {
  constexpr int kUsualColumns = 80;
  CONSOLE_SCREEN_BUFFER_INFO screen;
  return GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &screen) != 0
             ? screen.srWindow.Right - screen.srWindow.Left + 1
             : kUsualColumns;
}

int ProcessorCount() noexcept {
  DWORD_PTR allowed = 0;
  DWORD_PTR ofSystem = 0;
  GetProcessAffinityMask(GetCurrentProcess(), &allowed, &ofSystem);
  return std::max(std::popcount(allowed), 1);
}

bool HostName(char* name, std::size_t size) noexcept {
  std::array<wchar_t, 256> wide;
  DWORD length = wide.size();
  return GetComputerNameExW(ComputerNameDnsHostname, wide.data(), &length) != 0 &&
         ToBytes(wide.data(), name, size);
}

}  // namespace Vell::IO::Platform
