// The command that users type. The program itself has to be started with a path that holds a
// backslash, which users of a system with other separators do not type; the launcher finds the
// program beside itself and starts it with such a path. The program takes the launcher's place, so
// its arguments, exit status and signals are the launcher's. Only a command line that begins with
// one of the launcher's own options is answered by the launcher, with one of the tools.

#include <cstddef>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#include "foundation/exceptions/exceptions.h"
#include "foundation/exit_status.h"
#include "foundation/io/platform/platform.h"
#include "foundation/io/platform/processes.h"
#include "foundation/io/platform/temporary_files.h"
#include "launcher/messages.h"
#include "launcher/options.h"
#include "launcher_text.h"
#include "tools/run/program_start.h"
#include "tools/support/message.h"

namespace {

namespace Platform = Vell::IO::Platform;

using Hovar::kFailure;
using Hovar::kSuccess;

/// Writes a line on standard error without memory and returns the exit status for it.
int Fail(const Messages::Pattern& line) {
  Hovar::SayWithoutMemory(line);
  return kFailure;
}

int FailForMemory() { return Fail(Hovar::kLauncherMessages.outOfMemory); }

/// Ends the process where an error could not be raised, or not be handled; always with exit status
/// 1. A machine without memory when the process started leaves the runtime nothing to throw with.
[[noreturn]] void EndWithoutException() noexcept {
  Platform::RemoveTemporaryFiles();
  std::_Exit(std::current_exception() == nullptr ? FailForMemory()
                                                 : Fail(Hovar::kLauncherMessages.endedByFault));
}

/// Lets the tool that the command line asks for do its work; the answer is an exit status.
int RunTool(std::span<const char* const> arguments) {
  const std::optional<Hovar::Task> task =
      Hovar::ParseOptions(std::vector<std::string_view>(arguments.begin(), arguments.end()));
  if (!task) {
    return kFailure;
  }
  Platform::RemoveTemporaryFilesAtEnd();
  if (const auto* const run = std::get_if<Hovar::RunSettings>(&*task)) {
    return Hovar::RunSupervised(*run);
  }
  if (const auto* const check = std::get_if<Hovar::CheckSettings>(&*task)) {
    return Hovar::RunCheck(*check);
  }
  if (const auto* const chains = std::get_if<Hovar::ChainSettings>(&*task)) {
    return Hovar::RunChains(*chains);
  }
  const auto* const report = std::get_if<Hovar::ReportSettings>(&*task);
  return report != nullptr ? Hovar::RunReport(*report) : kFailure;
}

/// The same; a tool that failed because its end was asked for ends as if by that signal.
int RunTask(std::span<const char* const> arguments) {
  const int status = RunTool(arguments);
  return status == kFailure && Platform::StopRequest() != 0
             ? Platform::kSignalStatus + Platform::StopRequest()
             : status;
}

}  // namespace

int main(int argumentCount, char** argumentVector) {
  std::set_terminate(EndWithoutException);
  Platform::ResetSignals();
  Platform::IgnoreWriteSignals();
  std::span<const char* const> arguments(argumentVector, static_cast<std::size_t>(argumentCount));
  arguments = arguments.subspan(arguments.empty() ? 0 : 1);
  const std::string_view first = arguments.empty() ? "" : arguments.front();
  try {
    if (arguments.size() == 1 && first == "--help") {
      return Hovar::Print(Hovar::kHelpText) ? kSuccess : kFailure;
    }
    if (arguments.size() == 1 && first == "--version") {
      return Hovar::Print(Hovar::kVersionText) ? kSuccess : kFailure;
    }
    return Hovar::IsLauncherOption(first) ? RunTask(arguments) : Hovar::ExecuteProgram(arguments);
  } catch (const Vell::Exceptions::Exception&) {
    return kFailure;  // its line is on standard error
  } catch (const std::bad_alloc&) {
    return FailForMemory();
  }
}
