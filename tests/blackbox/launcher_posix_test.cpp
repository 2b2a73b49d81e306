// The launcher where the system has symbolic links, terminals, signals and file names of any bytes.

#include <gtest/gtest.h>

#include <csignal>

#include "launcher_runs.h"
#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST(LauncherTest, WorksInFoldersWithNamesOfAnyBytes) {
  const TinyStudy study;
  const ScratchFolder place;
  ExpectPredicts(study, CopyTreeTo(place.Path() / "not utf-8 \xFF"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "back\\slash"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "quote ' \" $HOME ;"));
}

TEST(LauncherTest, BytesThatAreNoTextArePassedOn) {
  const ScratchFolder folder;
  ExpectError(RunLauncher(folder, {"\xFF"}), CannotOpen("\xFF"));
}

TEST(LauncherTest, WorksThroughSymbolicLinks) {
  const TinyStudy study;
  const ScratchFolder links;
  fs::create_symlink(HOVAR_LAUNCHER, links.Path() / "absolute");
  fs::create_symlink("absolute", links.Path() / "second");
  fs::create_symlink(fs::relative(HOVAR_LAUNCHER, fs::canonical(links.Path())),
                     links.Path() / "relative");
  fs::create_directory_symlink(fs::path(HOVAR_LAUNCHER).parent_path(), links.Path() / "folder");
  for (const char* link : {"absolute", "second", "relative", "folder/hovar"}) {
    ExpectPredicts(study, links.File(link));
  }
  fs::create_symlink(CopyTreeTo(links.Path() / "with two  blanks"), links.Path() / "a link");
  ExpectPredicts(study, links.File("a link"));
}

TEST(CheckWarningTest, ABatchThatNamesItselfByALink) {
  const TinyStudy study;
  fs::create_symlink("d.xml", study.Path() / "link.xml");
  study.Write("d.xml", BatchText({"link.xml"}));
  const ProcessResult check = RunLauncher(study, {"--check", "d.xml"});
  EXPECT_EQ(check.exitStatus, 0);
  EXPECT_TRUE(check.output.starts_with("d.xml:3:13: warning: The batch would start "))
      << check.output;
}

TEST(LauncherTest, OnATerminalTheKeyIsStillWaitedFor) {
  const ScratchFolder folder;
  Command command = LauncherIn(folder, {"none.xml"});
  command.input = Input::kTerminal;
  Process process(command);
  EXPECT_TRUE(process.WaitForOutput(kPrompt));
  EXPECT_FALSE(process.EndsWithin(std::chrono::milliseconds(150)));
  process.Type("x");
  ExpectError(process.Wait(), CannotOpen("none.xml"));
}

TEST(LauncherTest, DeathBySignalIsPassedThrough) {
  const TinyStudy study;
  study.Write("long.xml", LongAnalysisText());
  for (const int signal : {SIGTERM, SIGINT, SIGKILL}) {
    SCOPED_TRACE(signal);
    Process running(LauncherIn(study, {"long.xml"}));
    EXPECT_TRUE(running.WaitForOutput("\nBurnin: 1 "));
    running.Signal(signal);
    EXPECT_EQ(running.Wait().signal, signal);

    Command command = LauncherIn(study, {"none.xml"});
    command.input = Input::kTerminal;
    Process waiting(command);
    EXPECT_TRUE(waiting.WaitForOutput(kPrompt));
    waiting.Signal(signal);
    EXPECT_EQ(waiting.Wait().signal, signal);
  }
}

TEST(InstallTest, AnInstalledTreeRuns) {
  const TinyStudy study;
  const ScratchFolder prefix;
  Command install;
  install.program = HOVAR_CMAKE;
  install.folder = prefix.Path();
  install.arguments = {HOVAR_CMAKE, "--install", HOVAR_BUILD_FOLDER, "--prefix", prefix.File("P")};
  const ProcessResult result = RunProcess(install);
  ASSERT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_TRUE(prefix.Has("P/bin/hovar"));
  EXPECT_TRUE(prefix.Has("P/libexec/hovar/hovar"));
  ExpectPredicts(study, prefix.File("P/bin/hovar"));
  Command program = HovarIn(study, {"prediction.xml"});
  program.program = prefix.File("P/libexec/hovar/hovar");
  ExpectSuccess(RunProcess(program), kPredictionProgress);
}

}  // namespace
}  // namespace Testing
