// The command that users type. The program itself wants to be started with a path of its own that
// holds a backslash, which nobody types on a system with other separators; the launcher finds the
// program beside itself and starts it with such a path. The program takes the launcher's place, so
// its arguments, exit status and signals are the launcher's. Only a command line that begins with
// one of the launcher's own options is answered by the launcher, with the tools of this folder.

#include <exception>
#include <optional>
#include <string_view>
#include <vector>

#include "app/launcher/installation.h"
#include "app/launcher/message.h"
#include "app/launcher/options.h"
#include "app/launcher/watched_run.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/growable_array.h"
#include "foundation/io/platform/platform.h"
#include "foundation/string.h"
#include "launcher_text.h"

namespace {

namespace Platform = Vell::IO::Platform;

constexpr int kSuccess = 0;
constexpr int kFailure = 1;

int Print(std::string_view text) {
  return Platform::WriteFile(Platform::kStandardOutput, text.data(), text.size()) ? kSuccess
                                                                                  : kFailure;
}

int Fail(std::string_view reason, std::string_view subject) {
  Vell::String line("hovar: ");
  line.Append(reason);
  line.Append(subject);
  line.Append('\n');
  Platform::WriteFile(Platform::kStandardError, line.CStr(), line.View().size());
  return kFailure;
}

int StartProgram(int argumentCount, char** arguments) {
  const Vell::String folder = Hovar::InstallationFolder();
  const Vell::String file = Hovar::ProgramFileIn(folder);
  const Vell::String name = Hovar::ProgramNameIn(folder);
  if (!Platform::StandardInputIsTerminal()) {
    Platform::DetachStandardInput();  // an unattended run must not wait for a key
  }
  Vell::GrowableArray<const char*> programArguments;
  programArguments.Append(name.CStr());
  for (int i = 1; i < argumentCount; ++i) {
    programArguments.Append(arguments[i]);
  }
  programArguments.Append(nullptr);
  Platform::BecomeProgram(file.CStr(), programArguments.begin());
  return Fail("cannot start ", file);
}

int RunTask(int argumentCount, char** arguments) {
  const std::optional<Hovar::Options> options =
      Hovar::ParseOptions(std::vector<std::string_view>(arguments + 1, arguments + argumentCount));
  if (!options) {
    return kFailure;
  }
  switch (options->task) {
    case Hovar::Task::kRun:
      return Hovar::RunWatched(*options);
    case Hovar::Task::kChains:
    case Hovar::Task::kReport:
      break;
  }
  return kFailure;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::string_view first = argumentCount >= 2 ? arguments[1] : "";
  if (argumentCount == 2 && first == "--help") {
    return Print(Hovar::kHelpText);
  }
  if (argumentCount == 2 && first == "--version") {
    return Print(Hovar::kVersionText);
  }
  try {
    return Hovar::IsLauncherOption(first) ? RunTask(argumentCount, arguments)
                                          : StartProgram(argumentCount, arguments);
  } catch (const Vell::Exceptions::Exception&) {
    return kFailure;  // its line stands on standard error
  } catch (const std::bad_alloc&) {
    constexpr std::string_view kLine = "hovar: out of memory\n";
    Platform::WriteFile(Platform::kStandardError, kLine.data(), kLine.size());
    return kFailure;
  }
}
