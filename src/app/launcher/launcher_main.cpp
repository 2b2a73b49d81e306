// The command that users type. The program itself wants to be started with a path of its own that
// holds a backslash, which nobody types on a system with other separators; the launcher finds the
// program beside itself and starts it with such a path. The program takes the launcher's place, so
// its arguments, exit status and signals are the launcher's.

#include <array>
#include <string_view>

#include "foundation/exceptions/exceptions.h"
#include "foundation/growable_array.h"
#include "foundation/io/platform/folders.h"
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

/// The folder in which libexec/ with the program lies: the launcher's own one, as in an archive
/// that was unpacked somewhere, or the one above, as in an installed or built tree with bin/. The
/// latter when there is no program, and the empty text when it cannot be told.
Vell::String InstallationFolder() {
  std::array<char, 4096> file;
  if (!Platform::ProgramFile(file.data(), file.size())) {
    return Vell::String();
  }
  Vell::String folder(file.data());
  for (int level = 0; level < 2; ++level) {
    const std::int32_t separator = folder.FindLast('/');
    if (separator < 0) {
      return Vell::String();
    }
    folder.Truncate(separator);
    const Vell::String program = Vell::Concatenate(folder, Hovar::kProgramFile);
    if (Platform::KindOf(program.CStr()) == Platform::PathKind::kFile) {
      break;
    }
  }
  return folder;
}

int StartProgram(int argumentCount, char** arguments) {
  const Vell::String folder = InstallationFolder();
  const Vell::String file = Vell::Concatenate(folder, Hovar::kProgramFile);
  const Vell::String name = Vell::Concatenate(folder, Hovar::kProgramName);
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

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::string_view option = argumentCount == 2 ? arguments[1] : "";
  if (option == "--help") {
    return Print(Hovar::kHelpText);
  }
  if (option == "--version") {
    return Print(Hovar::kVersionText);
  }
  try {
    return StartProgram(argumentCount, arguments);
  } catch (const Vell::Exceptions::Exception&) {
    return kFailure;
  }
}
