// The launcher, which finds the program by the real place of its own file.

#include <gtest/gtest.h>

#include "launcher_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

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

TEST(LauncherTest, WorksInAMovedTreeWithBlanksAndLettersOfAnyKind) {
  const TinyStudy study;
  const ScratchFolder place;
  ExpectPredicts(study, CopyTreeTo(place.Path() / "plain"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "with two  blanks"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / u8"K\u00F6ln \u20AC \U0001F3E5"));
  ExpectPredicts(study, CopyTreeTo(place.Path() / "quote ' $HOME %PATH% ; ^ &"));
}

TEST(LauncherTest, TheProgramMayLieBesideIt) {
  const TinyStudy study;
  const ScratchFolder place;
  CopyTreeTo(place.Path() / "a tree");
  const fs::path top = place.Path() / "a tree" / fs::path(HOVAR_LAUNCHER).filename();
  fs::rename(place.Path() / "a tree" / LauncherFile(), top);
  ExpectPredicts(study, top.string());
}

TEST(LauncherTest, ArgumentsArePassedOnUntouched) {
  const ScratchFolder folder;
  const std::string wrongCount = "Wrong number of parameters in command line";
  ExpectError(RunLauncher(folder, {}), wrongCount);
  ExpectError(RunLauncher(folder, {"a.xml", "b.xml"}), wrongCount);
  ExpectError(RunLauncher(folder, {"a.xml", ""}), wrongCount);
  for (const char* name : {"", "two  blanks.xml", " ", "a\\b.xml", "\"quoted\" '$HOME' *",
                           "K\xC3\xB6ln \xE2\x82\xAC \xF0\x9F\x8F\xA5.xml", "-x", "%PATH%", "*.*",
                           "line\nfeed", "\\\"", "end\\"}) {
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

TEST(LauncherTest, HelpAndVersionAreAnsweredWithoutTheProgram) {
  const ScratchFolder folder;
  fs::create_directories(folder.Path() / "bin");
  fs::copy_file(HOVAR_LAUNCHER, folder.Path() / LauncherFile());
  for (const std::string& launcher : {std::string(HOVAR_LAUNCHER), folder.File(LauncherFile())}) {
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
    for (const Output output : {Output::kFull, Output::kClosed, Output::kBroken}) {
      SCOPED_TRACE(option);
      Command command = LauncherIn(folder, {option});
      command.output = output;
      const ProcessResult result = RunProcess(command);
      EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
      EXPECT_EQ(result.error, "hovar: cannot write to standard output\n");
    }
  }
}

TEST(LauncherTest, AMissingProgramIsNamed) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = CopyTreeTo(place.Path());
  fs::remove(place.Path() / ProgramFile());
  const ProcessResult result = RunLauncher(study, {"prediction.xml"}, launcher);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.error.find(ProgramFile()), std::string::npos) << result.error;
  EXPECT_TRUE(result.error.ends_with("\n"));
}

}  // namespace
}  // namespace Testing
