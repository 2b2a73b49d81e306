// The lines of a program that the command watches, where there is no room for them, and what the
// command does with files that are no regular ones.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "launcher_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// Makes a program that is a shell script; the result is its launcher.
std::string LauncherOf(const ScratchFolder& place, const std::string& script) {
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  fs::remove(place.Path() / ProgramFile());
  place.Write(ProgramFile(), "#!/bin/sh\n" + script);
  fs::permissions(place.Path() / ProgramFile(), fs::perms::owner_all);
  return launcher;
}

TEST(WatchedLinesTest, AFullDiskUnderThemIsTold) {
  struct Row {
    std::vector<std::string> arguments;
    std::string folder;
  };
  for (const Row& row : {Row{{"--progress", "analysis.xml"}, "out/"},
                         Row{{"--progress", "--json", "run.json", "analysis.xml"}, "out/"},
                         Row{{"--chains", "2", "analysis.xml"}, "out/chain-2/"}}) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    const TinyStudy study;
    fs::create_directories(study.Path() / row.folder);
    for (const char* name : {"analysis.log", "analysis.log.output.txt"}) {
      fs::create_symlink("/dev/full", study.Path() / (row.folder + name));
    }
    const ProcessResult result = RunLauncher(study, row.arguments);
    EXPECT_EQ(result.exitStatus, 1);
    ExpectHolds(result.error, "hovar: cannot write " + row.folder +
                                  "analysis.log.output.txt: it is no regular file\n");
  }
}

TEST(WatchedLinesTest, TheErrorOfARunOnAFullDiskIsTold) {
  const TinyStudy study;
  study.Write("out/other", "");
  fs::create_symlink("/dev/full", study.Path() / "out/analysis.log");
  // The run could not even have written its lines into a file.
  Command command = LauncherIn(study, {"--json", "/dev/null", "analysis.xml"});
  command.fileSizeLimit = 0;
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.error, "Error: IO Exception\n");
}

TEST(WatchedLinesTest, ARecordAloneNeedsNoRoomForThem) {
  const TinyStudy study;
  study.Write("d.xml", ChainedAnalysisText(800, 0));
  Command command = LauncherIn(study, {"--json", "run.json", "d.xml"});
  command.fileSizeLimit = 6000;
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_GT(result.output.size(), 6000U);
  ExpectHolds(result.output, "\nBurnin: 800 ");
}

TEST(WatchedLinesTest, ManyThatComeAtOnceAreAllKept) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = LauncherOf(place, "seq 1 500000\n");
  EXPECT_EQ(RunLauncher(study, {"--progress", "analysis.xml"}, launcher).exitStatus, 0);
  std::string expected;
  for (int i = 1; i <= 500'000; ++i) {
    expected += std::to_string(i) + "\n";
  }
  EXPECT_EQ(study.Read("out/analysis.log.output.txt") == expected, true);
}

TEST(WatchedLinesTest, WhatIsShieldedFromAHangUpStaysSo) {
  const TinyStudy study;
  const ScratchFolder place;
  Command command = LauncherIn(study, {});
  command.program = "/bin/sh";
  command.arguments = {"sh", "-c", "trap '' HUP; exec \"$1\" --json run.json analysis.xml", "sh",
                       LauncherOf(place, "kill -HUP $$\nexit 7\n")};
  EXPECT_EQ(RunProcess(command).exitStatus, 7);
}

TEST(IrregularFileTest, AsTheDefinitionOfChainsIsNamed) {
  const TinyStudy study;
  EXPECT_EQ(::mkfifo(study.File("pipe.xml").c_str(), 0600), 0);
  for (const auto& [name, kind] : std::vector<std::pair<std::string, std::string>>{
           {"pipe.xml", "a named pipe"}, {"/dev/zero", "a device"}, {".", "a folder"}}) {
    const ProcessResult result = RunLauncher(study, {"--chains", "2", name});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "hovar: " + name + " is " + kind + "; a regular file is required\n");
    EXPECT_FALSE(study.Has("out"));
  }
}

TEST(IrregularFileTest, AsTheCopyOfADefinitionIsNamed) {
  const TinyStudy study;
  fs::create_directories(study.Path() / "out/chain-1");
  fs::create_symlink("/dev/null", study.Path() / "out/chain-1/chain-1.xml");
  const ProcessResult result = RunLauncher(study, {"--chains", "2", "analysis.xml"});
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  EXPECT_EQ(result.error,
            "hovar: out/chain-1/chain-1.xml is a device; a regular file is required\n");
}

TEST(IrregularFileTest, ACopyAboveTheLimitIsRefusedBeforeAnythingIsWritten) {
  const TinyStudy study;
  const std::string text = AnalysisText();
  const std::size_t filling = (std::size_t{16} << 20) - text.size() - std::string("<!---->").size();
  study.Write("d.xml", "<!--" + std::string(filling, 'x') + "-->" + text);
  const ProcessResult result = RunLauncher(study, {"--chains", "2", "d.xml"});
  EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
  EXPECT_EQ(result.error,
            "hovar: d.xml is too large for --chains: with the folder and the seed of chain-1 it "
            "has more than 16 MiB\n");
  EXPECT_FALSE(study.Has("out"));
}

}  // namespace
}  // namespace Testing
