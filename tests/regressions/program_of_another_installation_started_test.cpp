// Where the system does not tell the file of a program, as without /proc, the command started
// /libexec/hovar/hovar, whoever had put it there; and below a folder with a backslash in its name
// its reports failed with a message about a page that is there.

#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>

#include "blackbox/launcher_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// What the shell prints.
std::string OutputOf(const std::string& script) {
  Command command;
  command.program = "/bin/sh";
  command.folder = fs::temp_directory_path();
  command.arguments = {"sh", "-c", script};
  return RunProcess(command).output;
}

/// Copies the libraries that a program needs below a folder, at their own places.
void CopyLibraries(const std::string& program, const fs::path& root) {
  const std::string list = OutputOf("ldd '" + program + "' | grep -o '/[^ ]*' | sort -u");
  std::istringstream lines(list);
  for (std::string library; std::getline(lines, library);) {
    const fs::path copy = root / library.substr(1);
    fs::create_directories(copy.parent_path());
    fs::copy_file(library, copy, fs::copy_options::skip_existing);
  }
}

TEST(InstallationTest, WithoutProcNoForeignProgramIsStarted) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root may change the root folder";
  }
  const ScratchFolder root;
  CopyTreeWithPageTo(root.Path() / "opt/hovar");
  CopyLibraries(HOVAR_LAUNCHER, root.Path());
  CopyLibraries("/bin/echo", root.Path());
  fs::create_directories(root.Path() / "libexec/hovar");
  fs::copy_file("/bin/echo", root.Path() / "libexec/hovar/hovar");
  const TinyStudy study;
  fs::copy(study.Path(), root.Path());
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"prediction.xml"},
                                                    {"--json", "run.json", "prediction.xml"},
                                                    {"--keep", "prediction.xml"},
                                                    {"--progress", "prediction.xml"}}) {
    SCOPED_TRACE(arguments.front());
    Command command;
    command.program = "/usr/sbin/chroot";
    command.folder = root.Path();
    command.arguments = {"chroot", root.Path(), "/opt/hovar/bin/hovar"};
    command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
    // The leak check needs /proc too; what the sanitizers say without it comes first.
    command.environment = {{"ASAN_OPTIONS", "detect_leaks=0"}};
    const ProcessResult result = RunProcess(command);
    ExpectLacks(result.output, "prediction.xml\n");
    if (result.exitStatus != 0) {
      EXPECT_EQ(result.exitStatus, 1) << result.error;
      ExpectHolds('\n' + result.error, "\nhovar: ");
      ExpectLacks(result.error, " /libexec");
    }
  }
}

// Either it works, or a line says what is wrong with the folder.
TEST(InstallationTest, BelowAFolderWithABackslashInItsName) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path() / "back\\slash");
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"prediction.xml"},
                                                    {"--json", "run.json", "prediction.xml"},
                                                    {"--progress", "prediction.xml"},
                                                    {"--chains", "1", "analysis.xml"},
                                                    {"--report", "out"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const TinyStudy study;
    study.Write("out/a.csv", "f");
    const ProcessResult result = RunLauncher(study, arguments, launcher);
    if (result.exitStatus != 0) {
      EXPECT_EQ(result.exitStatus, 1);
      ExpectHolds(result.error, "\\");
      ExpectLacks(result.error, "cannot read the page");
      ExpectLacks(result.error, "cannot start");
    }
  }
}

}  // namespace
}  // namespace Testing
