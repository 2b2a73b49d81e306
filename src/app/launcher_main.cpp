// The command that users type. The program itself wants to be started with a path of its own that
// holds a backslash, which nobody types on a system with other separators; the launcher finds the
// program beside itself and starts it with such a path. The program takes the launcher's place, so
// its arguments, exit status and signals are the launcher's.

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "foundation/io/platform/platform.h"
#include "launcher_text.h"

namespace {

constexpr int kFailure = 1;
constexpr std::size_t kLongestPath = 4096;

using PathBuffer = std::array<char, kLongestPath>;

/// Where the program lies, as seen from the folder of the launcher's folder; and the same as the
/// program sees it.
constexpr char kProgramFile[] = "/libexec/hovar/hovar";
constexpr char kProgramName[] = "/libexec/hovar\\hovar";

int Print(std::string_view text) {
  const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  return isWritten && std::fflush(stdout) == 0 ? 0 : kFailure;
}

int Fail(const char* message) {
  std::fprintf(stderr, "hovar: %s\n", message);
  return kFailure;
}

/// Cuts the last component off a path; false when there is none.
bool CutLastComponent(char* path) {
  char* const separator = std::strrchr(path, '/');
  if (separator == nullptr) {
    return false;
  }
  *separator = '\0';
  return true;
}

/// `prefix` followed by `suffix`; false when that is too long.
bool Join(PathBuffer& result, const char* prefix, const char* suffix) {
  const int length = std::snprintf(result.data(), result.size(), "%s%s", prefix, suffix);
  return length >= 0 && static_cast<std::size_t>(length) < result.size();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount == 2) {
    const std::string_view option = arguments[1];
    if (option == "--help") {
      return Print(Hovar::kHelpText);
    }
    if (option == "--version") {
      return Print(Hovar::kVersionText);
    }
  }
  PathBuffer prefix;
  PathBuffer programFile;
  PathBuffer programName;
  if (!Vell::IO::Platform::ProgramFile(prefix.data(), prefix.size()) ||
      !CutLastComponent(prefix.data()) || !CutLastComponent(prefix.data()) ||
      !Join(programFile, prefix.data(), kProgramFile) ||
      !Join(programName, prefix.data(), kProgramName)) {
    return Fail("cannot tell where the program is installed");
  }
  if (!Vell::IO::Platform::StandardInputIsTerminal()) {
    Vell::IO::Platform::DetachStandardInput();  // an unattended run must not wait for a key
  }
  // main's own arguments end with a null pointer; only the first one changes. Without any, not even
  // a name, the program sees its name alone.
  std::array<const char*, 2> nameOnly = {programName.data(), nullptr};
  const char** programArguments = nameOnly.data();
  if (argumentCount > 0) {
    arguments[0] = programName.data();
    programArguments = const_cast<const char**>(arguments);
  }
  Vell::IO::Platform::BecomeProgram(programFile.data(), programArguments);
  std::fprintf(stderr, "hovar: cannot start %s\n", programFile.data());
  return kFailure;
}
