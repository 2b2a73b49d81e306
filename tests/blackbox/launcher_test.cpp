// The launcher, which finds the program by the real place of its own file.

#include <gtest/gtest.h>

#include <csignal>

#include "launcher_runs.h"
#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

const std::string kPredictionProgress = std::string(kTinyReading) +
                                        "Calculating individual predictions\n"
                                        "Calculating hospital-aggregated predictions\n";

void ExpectPredicts(const TinyStudy& study, const std::string& launcher) {
  SCOPED_TRACE(launcher);
  fs::remove_all(study.Path() / "out");
  ExpectSuccess(RunLauncher(study, {"prediction.xml"}, launcher), kPredictionProgress);
  EXPECT_TRUE(study.Has("out/predicted.csv"));
}

TEST(LauncherTest, RunsTheProgramInTheWorkingFolder) {
  const TinyStudy study;
  ExpectPredicts(study, HOVAR_LAUNCHER);
}

TEST(LauncherTest, TheNameItIsCalledByDoesNotMatter) {
  const TinyStudy study;
  for (const char* name : {"hovar", "", "./elsewhere/hovar", "x\\y"}) {
    SCOPED_TRACE(name);
    Command command = LauncherIn(study, {"prediction.xml"});
    command.arguments[0] = name;
    ExpectSuccess(RunProcess(command), kPredictionProgress);
  }
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
}

TEST(LauncherTest, WorksInAMovedTreeWithBlanksAndLettersOfAnyKind) {
  const TinyStudy study;
  const ScratchFolder place;
  ExpectPredicts(study, CopyTreeTo(place.Path() / "plain"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "with two  blanks"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "K\xC3\xB6ln \xE2\x82\xAC \xF0\x9F\x8F\xA5"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "not utf-8 \xFF"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "back\\slash"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "quote ' \" $HOME ;"));
  fs::create_symlink(place.Path() / "with two  blanks/bin/hovar", place.Path() / "a link");
  ExpectPredicts(study, place.File("a link"));
}

TEST(LauncherTest, ArgumentsArePassedOnUntouched) {
  const ScratchFolder folder;
  const std::string wrongCount = "Wrong number of parameters in command line";
  ExpectError(RunLauncher(folder, {}), wrongCount);
  ExpectError(RunLauncher(folder, {"a.xml", "b.xml"}), wrongCount);
  ExpectError(RunLauncher(folder, {"a.xml", ""}), wrongCount);
  for (const char* name : {"", "two  blanks.xml", " ", "a\\b.xml", "\"quoted\" '$HOME' *",
                           "K\xC3\xB6ln.xml", "\xFF", "-x", "--other", "line\nfeed"}) {
    SCOPED_TRACE(name);
    ExpectError(RunLauncher(folder, {name}), CannotOpen(name));
  }
}

TEST(LauncherTest, OnlyItsOwnSingleArgumentsAreAnsweredByItself) {
  const ScratchFolder folder;
  const std::string wrongCount = "Wrong number of parameters in command line";
  ExpectError(RunLauncher(folder, {"a.xml", "b.xml", "c.xml"}), wrongCount);
}

TEST(LauncherTest, TheEnvironmentIsPassedOn) {
  const TinyStudy study;
  Command command = LauncherIn(study, {"prediction.xml"});
  command.environment = {{"TZ", "Asia/Tokyo"}, {"LC_ALL", "C"}};
  ExpectSuccess(RunProcess(command), kPredictionProgress);
}

TEST(LauncherTest, WithoutATerminalAnErrorNeverWaits) {
  const ScratchFolder folder;
  struct Row {
    Input input;
    const char* text;
  };
  for (const Row& row : {Row{Input::kOpenPipe, ""}, Row{Input::kText, ""}, Row{Input::kFile, "x"},
                         Row{Input::kNull, ""}, Row{Input::kClosed, ""}}) {
    SCOPED_TRACE(static_cast<int>(row.input));
    Command command = LauncherIn(folder, {"none.xml"});
    command.input = row.input;
    command.inputText = row.text;
    ExpectError(RunProcess(command), CannotOpen("none.xml"));
  }
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

TEST(LauncherTest, HelpAndVersionAreAnsweredWithoutTheProgram) {
  const ScratchFolder folder;
  fs::create_directories(folder.Path() / "bin");
  fs::copy_file(HOVAR_LAUNCHER, folder.Path() / "bin/hovar");
  for (const std::string& launcher : {std::string(HOVAR_LAUNCHER), folder.File("bin/hovar")}) {
    const ProcessResult help = RunLauncher(folder, {"--help"}, launcher);
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_EQ(help.error, "");
    EXPECT_TRUE(help.output.starts_with("Usage: hovar DEFINITION\n")) << help.output;
    const ProcessResult version = RunLauncher(folder, {"--version"}, launcher);
    EXPECT_EQ(version.exitStatus, 0);
    EXPECT_EQ(version.error, "");
    EXPECT_EQ(version.output, "hovar " HOVAR_VERSION "\n");
  }
}

TEST(LauncherTest, HelpThatCannotBeWrittenIsAnError) {
  const ScratchFolder folder;
  for (const char* option : {"--help", "--version"}) {
    for (const Output output : {Output::kFull, Output::kClosed}) {
      SCOPED_TRACE(option);
      Command command = LauncherIn(folder, {option});
      command.output = output;
      EXPECT_EQ(RunProcess(command).exitStatus, 1);
    }
  }
}

TEST(LauncherTest, AMissingProgramIsNamed) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeTo(place.Path());
  fs::remove(place.Path() / "libexec/hovar/hovar");
  const ProcessResult result = RunLauncher(study, {"prediction.xml"}, launcher);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.error.find("libexec/hovar/hovar"), std::string::npos) << result.error;
  EXPECT_TRUE(result.error.ends_with("\n"));
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
