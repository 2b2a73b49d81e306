#include "app/program.h"

#include <cstdlib>
#include <exception>
#include <utility>

#include "app/dispatch.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/exit_status.h"
#include "foundation/io/log.h"
#include "foundation/io/platform/platform.h"
#include "foundation/io/standard_writers.h"
#include "foundation/random/random_generator.h"
#include "messages/error_texts.h"
#include "messages/output_lines.h"

namespace Hovar {
namespace {

using Vell::Exceptions::Exception;
using Vell::IO::Log;
using Vell::IO::StandardOutput;

Vell::String& StartupDirectoryStorage() noexcept {
  static Vell::String directory;
  return directory;
}

/// Everything that can end in an error, from the banner to the last flush.
void Run(int argumentCount, const char* const* arguments) {
  Vell::RandomGenerator::Reset();
  Log().Attach(Vell::IO::StandardOutputHandle());
  StandardOutput().WriteMessage(Messages::kLines.targetPlatform);
  if (argumentCount != 2) {
    throw Exception(Messages::kErrors.wrongArgumentCount);
  }
  StartupDirectoryStorage() = StartupDirectoryOf(Vell::String(arguments[0]));
  DispatchDefinition(Vell::String(arguments[1]))->Run();
  Log().Close();
  StandardOutput().Target().Flush();
}

// An error of the ending itself is not reported once more.
bool isEnding = false;

void EndAfterError() {
  isEnding = true;
  Log().Clear();
  StandardOutput().WriteMessage(Messages::kLines.pressAnyButton);
  Vell::IO::Platform::WaitForKey();
}

/// Ends the process where an error could not be raised, or not be handled; always with exit status
/// 1. The runtime keeps memory for exceptions aside, but a machine that had none when the process
/// started leaves nothing to throw with. An error from here on leads back to this function, which
/// is why it is noexcept: the runtime would answer an exception that leaves it with an abort.
[[noreturn]] void EndWithoutException() noexcept {
  if (!std::exchange(isEnding, true)) {
    if (std::current_exception() == nullptr) {  // otherwise its line is on standard error
      // The line is required, and nothing can be thrown:
      // NOLINTNEXTLINE(bugprone-throw-keyword-missing)
      static_cast<void>(Vell::Exceptions::OutOfMemoryException(Messages::kErrors.outOfMemory));
    }
    EndAfterError();
  }
  std::_Exit(kFailure);
}

}  // namespace

int RunProgram(int argumentCount, const char* const* arguments) {
  std::set_terminate(EndWithoutException);
  Vell::IO::Platform::IgnoreWriteSignals();
  isEnding = false;
  try {
    try {
      Run(argumentCount, arguments);
      return kSuccess;
    } catch (const Exception&) {
      EndAfterError();
    }
  } catch (const Exception&) {
    // The prompt could not be written, so there is no one to press a key.
  }
  return kFailure;
}

Vell::String StartupDirectoryOf(const Vell::String& programPath) {
  Vell::String directory(programPath);
  const std::int32_t separator = directory.FindLast('\\');
  if (separator < 0) {
    throw Vell::Exceptions::InvalidArgumentException(Messages::kErrors.invalidArgument);
  }
  directory.Truncate(separator);
  directory.Trim();
  if (directory.Length() == 0) {
    throw Exception(Messages::kErrors.startupDirectory);
  }
  return directory;
}

const Vell::String& StartupDirectory() noexcept { return StartupDirectoryStorage(); }

}  // namespace Hovar
