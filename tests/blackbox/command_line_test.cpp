// What the program makes of its own path and its arguments.

#include <gtest/gtest.h>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

ProcessResult RunAs(const ScratchFolder& folder, const std::string& programPath,
                    const std::string& definition) {
  Command command = HovarIn(folder, {definition});
  command.arguments[0] = programPath;
  return RunProcess(command);
}

TEST(CommandLineTest, ExactlyOneArgumentIsRequired) {
  const TinyStudy study;
  const std::vector<std::vector<std::string>> wrongCounts = {
      {}, {"prediction.xml", "prediction.xml"}, {"prediction.xml", "validation.xml", ""}};
  for (const std::vector<std::string>& arguments : wrongCounts) {
    SCOPED_TRACE(arguments.size());
    ExpectError(RunHovar(study, arguments), "Wrong number of parameters in command line");
  }
  EXPECT_FALSE(study.Has("out"));
}

TEST(CommandLineTest, TheNumberOfArgumentsIsCheckedBeforeTheProgramPath) {
  const ScratchFolder folder;
  Command command = HovarIn(folder, {});
  command.arguments[0] = "./hovar";
  ExpectError(RunProcess(command), "Wrong number of parameters in command line");
}

TEST(CommandLineTest, TheProgramPathMustHoldABackslash) {
  const TinyStudy study;
  for (const char* path : {"./hovar", "hovar", "/usr/libexec/hovar/hovar", ""}) {
    SCOPED_TRACE(path);
    ExpectError(RunAs(study, path, "prediction.xml"), "Invalid argument");
  }
}

TEST(CommandLineTest, SomethingMustStandBeforeTheLastBackslash) {
  const TinyStudy study;
  for (const char* path : {"\\hovar", " \\hovar", " \t\r\n\\hovar.exe", "\\"}) {
    SCOPED_TRACE(path);
    ExpectError(RunAs(study, path, "prediction.xml"), "Cannot determine startup directory");
  }
}

TEST(CommandLineTest, AnyFolderBeforeTheLastBackslashServes) {
  for (const char* path : {"C:\\hovar.exe", "x\\", "\\\\hovar", "a/b\\hovar", " c \\ d"}) {
    SCOPED_TRACE(path);
    const TinyStudy study;
    EXPECT_EQ(RunAs(study, path, "prediction.xml").exitStatus, 0);
  }
}

TEST(CommandLineTest, TheProgramPathIsCheckedBeforeTheDefinitionIsOpened) {
  const ScratchFolder folder;
  ExpectError(RunAs(folder, "./hovar", "none.xml"), "Invalid argument");
}

TEST(CommandLineTest, AMissingDefinitionIsNamedAsItWasWritten) {
  const ScratchFolder folder;
  for (const char* path : {"none.xml", "sub\\none.xml", "sub/none.xml", " none.xml", ""}) {
    SCOPED_TRACE(path);
    ExpectError(RunHovar(folder, {path}), CannotOpen(path));
  }
}

TEST(CommandLineTest, AFolderIsNoDefinition) {
  const ScratchFolder folder;
  folder.Write("folder/file", "");
  const ProcessResult result = RunHovar(folder, {"folder"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_TRUE(result.error == "Error: " + CannotOpen("folder") + "\n" ||
              result.error == "Error: IO Exception\n")
      << result.error;
}

TEST(CommandLineTest, BothSlashesSeparateFoldersInADefinitionPath) {
  for (const char* path : {"sub\\batch.xml", "sub/batch.xml", ".\\sub/batch.xml"}) {
    SCOPED_TRACE(path);
    const ScratchFolder folder;
    folder.Write("sub/batch.xml", BatchText({}));
    ExpectSuccess(RunHovar(folder, {path}), "");
  }
}

TEST(CommandLineTest, PathsInADefinitionAreTakenFromTheWorkingFolder) {
  const TinyStudy study;
  study.Write("elsewhere/prediction.xml", PredictionText());
  EXPECT_EQ(RunHovar(study, {"elsewhere/prediction.xml"}).exitStatus, 0);
  EXPECT_TRUE(study.Has("out/predicted.csv"));
}

}  // namespace
}  // namespace Testing
