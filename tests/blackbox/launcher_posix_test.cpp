// The launcher where the system has symbolic links, terminals, signals, coreutils and file names of
// any bytes.

#include <gtest/gtest.h>

#include <csignal>

#include "launcher_reports.h"
#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// The digest of a file by coreutils.
std::string DigestOf(const ScratchFolder& folder, const std::string& name) {
  Command command;
  command.program = "/usr/bin/sha256sum";
  command.folder = folder.Path();
  command.arguments = {"sha256sum", name};
  const std::string output = RunProcess(command).output;
  return output.substr(0, output.find(' '));
}

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

TEST(RunRecordTest, DigestsAreThoseOfCoreutils) {
  const TinyStudy study;
  study.Write("batch.xml", BatchText({"analysis.xml", "prediction.xml"}));
  EXPECT_EQ(RunLauncher(study, {"--json", "run.json", "batch.xml"}).exitStatus, 0);
  const std::string record = study.Read("run.json");
  for (const char* name : {"batch.xml", "analysis.xml", "prediction.xml", "data.csv"}) {
    const std::string digest = DigestOf(study, name);
    EXPECT_EQ(digest.size(), 64U);
    ExpectHolds(record, "\"sha256\": \"" + digest + "\"");
  }
}

TEST(RunRecordTest, ARequestToEndEndsTheProgramAndIsRecorded) {
  const TinyStudy study;
  study.Write("long.xml", LongAnalysisText());
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Process process(LauncherIn(study, {"--json", "run.json", "long.xml"}));
    EXPECT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
    process.Signal(signal);
    EXPECT_EQ(process.Wait().exitStatus, 128 + signal);
    ExpectHolds(study.Read("run.json"), "\"exitStatus\": " + std::to_string(128 + signal));
  }
}

TEST(RunRecordTest, FilesThatAreChangedWhileTheRunIsGoingAreNamed) {
  const TinyStudy study;
  study.Write("long.xml", LongAnalysisText());
  study.Write("batch.xml", BatchText({"long.xml"}));
  const std::string change = "\"changedDuringRun\": true";
  const std::string line = " changed during the run; the record has its hash from before\n";
  {
    Process process(LauncherIn(study, {"--json", "run.json", "long.xml"}));
    EXPECT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
    study.Write("long.xml", AnalysisText());
    study.Write("data.csv", std::string(kTinyData) + "\n");
    process.CloseOutput();  // ends the run
    const ProcessResult result = process.Wait();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "hovar: cannot write to standard output\nhovar: long.xml" + line +
                                "hovar: data.csv" + line);
    const std::string record = study.Read("run.json");
    // The definition of the command line, the same as that of the run, and its data.
    std::size_t count = 0;
    for (std::size_t at = record.find(change); at != std::string::npos;
         at = record.find(change, at + 1)) {
      ++count;
    }
    EXPECT_EQ(count, 3U);
    study.Write("before.xml", LongAnalysisText());
    ExpectHolds(record, "\"sha256\": \"" + DigestOf(study, "before.xml") + "\"");
  }
  // One that is removed. A request to end does not wait for data to be hashed.
  study.Write("data.csv", kTinyData);
  study.Write("long.xml", LongAnalysisText());
  Process process(LauncherIn(study, {"--json", "run.json", "batch.xml"}));
  EXPECT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
  fs::remove(study.Path() / "long.xml");
  study.Write("data.csv", std::string(kTinyData) + "\n");
  process.Signal(SIGTERM);
  const ProcessResult result = process.Wait();
  EXPECT_EQ(result.exitStatus, 128 + SIGTERM);
  EXPECT_EQ(result.error, "hovar: long.xml" + line);
}

TEST(RunRecordTest, OnATerminalNoKeyIsWaitedFor) {
  const TinyStudy study;
  Command command = LauncherIn(study, {"--json", "run.json", "none.xml"});
  command.input = Input::kTerminal;
  ExpectError(RunProcess(command), CannotOpen("none.xml"));
}

TEST(ProgressTest, ARequestToEndEndsTheProgram) {
  const TinyStudy study;
  study.Write("long.xml", LongAnalysisText());
  Process process(LauncherIn(study, {"--progress", "long.xml"}));
  const fs::path capture = study.Path() / "out/analysis.log.output.txt";
  EXPECT_TRUE(WaitForText(capture, "\nBurnin: 1 "));
  process.Signal(SIGTERM);
  EXPECT_EQ(process.Wait().exitStatus, 128 + SIGTERM);
  EXPECT_TRUE(HasStoppedGrowing(capture));
}

TEST(ProgressTest, TheDeathOfTheProgramIsTold) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = LauncherOfScript(place, "kill -KILL $$\n");
  const ProcessResult result = RunLauncher(study, {"--progress", "analysis.xml"}, launcher);
  EXPECT_EQ(result.exitStatus, 128 + SIGKILL);
  ExpectHolds(result.error, "hovar: the program ended with status 137\n");
}

TEST(RunRecordTest, ALastLineWithoutItsEndIsPassedOn) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher =
      LauncherOfScript(place, "printf 'first\\nError: broken off'\nexit 3\n");
  const ProcessResult result = RunLauncher(study, {"--json", "run.json", "analysis.xml"}, launcher);
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_EQ(result.output, "first\n");
  EXPECT_EQ(result.error, "Error: broken off");
  ExpectHolds(study.Read("run.json"), "\"error\": \"Error: broken off\"");
}

TEST(ChainsRequestTest, AChainThatEndsWithoutAnErrorLineIsTold) {
  const TinyStudy study;
  const ScratchFolder place;
  const std::string launcher = LauncherOfScript(place, "exit 3\n");
  const ProcessResult result =
      RunLauncher(study, {"--chains", "2", "analysis.xml", "--jobs", "1"}, launcher);
  EXPECT_EQ(result.exitStatus, 1);
  ExpectHolds(result.error, "chain-1: ended with status 3\n");
  ExpectHolds(result.error, "hovar: chain-1 failed; its output is in ");
}

/// What --chains with these arguments shows on a terminal, with plain line feeds.
std::string ChainsOnTerminal(const TinyStudy& study, const std::string& launcher,
                             const std::string& chains) {
  Command command = LauncherIn(study, {}, launcher);
  command.program = "/bin/sh";
  command.arguments = {
      "sh", "-c", "TERM=xterm exec \"$0\" --chains " + chains + " analysis.xml --jobs 2 2>/dev/tty",
      launcher};
  command.input = Input::kTerminal;
  Process process(command);
  EXPECT_EQ(process.Wait().exitStatus, 1);
  std::string shown = process.TerminalText();
  std::erase(shown, '\r');
  return shown;
}

TEST(ChainsRequestTest, OnATerminalTheMessageOfAFailureComesLast) {
  const ScratchFolder place;
  const std::string launcher = LauncherOfScript(place,
                                                "case $1 in\n"
                                                "*ends*chain-1.xml) sleep 0.5; exit 0;;\n"
                                                "*fails*chain-2.xml) sleep 0.5; exit 3;;\n"
                                                "esac\n"
                                                "exec sleep 50\n");
  for (const char* folder : {"fails", "ends"}) {  // the third chain cannot be made
    const TinyStudy study;
    study.Write("analysis.xml", Replaced(LongAnalysisText(), "<Folder>out<",
                                         "<Folder>./" + std::string(folder) + "<"));
    study.Write(std::string(folder) + "/chain-3", "no folder");
    const std::string shown =
        ChainsOnTerminal(study, launcher, folder == std::string("ends") ? "3" : "2");
    const std::size_t message = shown.rfind("hovar: ");
    ASSERT_NE(message, std::string::npos) << shown;
    // Nothing comes below it, not even what would take it back.
    EXPECT_EQ(shown.find('\n', message), shown.size() - 1) << shown;
    // There were bars, and they were taken back.
    ASSERT_NE(shown.rfind("\x1b[J", message), std::string::npos) << shown;
    EXPECT_EQ(shown.substr(shown.rfind("\x1b[J", message)).find("  0 %"), std::string::npos)
        << shown;
  }
}

TEST(ChainsRequestTest, TheInterruptKeyStopsAllAndBlamesNone) {
  const ScratchFolder place;
  const TinyStudy study;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  study.Write("analysis.xml", LongAnalysisText());
  // On a terminal the key interrupts the programs as well as the launcher.
  Command command = LauncherIn(study, {"--chains", "2", "analysis.xml", "--jobs", "2"}, launcher);
  command.input = Input::kTerminal;
  Process process(command);
  for (const char* chain : {"chain-1", "chain-2"}) {
    EXPECT_TRUE(
        WaitForText(study.Path() / "out" / chain / "analysis.log.output.txt", "\nBurnin: 1 "));
  }
  process.Type("\x03");
  const ProcessResult result = process.Wait();
  EXPECT_EQ(result.exitStatus, 128 + SIGINT);
  EXPECT_TRUE(result.error.ends_with("hovar: stopped\n")) << result.error;
  ExpectLacks(result.error, "failed");
  EXPECT_FALSE(study.Has("out/report.html"));
}

TEST(ChainsRequestTest, AChainThatARequestEndedIsNotBlamed) {
  const TinyStudy study;
  const ScratchFolder place;
  // The launcher sees the request and the end of the program at the same time.
  const std::string launcher = LauncherOfScript(place,
                                                "launcher=$PPID\n"
                                                "kill -STOP $launcher\n"
                                                "kill -INT $launcher\n"
                                                "(sleep 0.2; kill -CONT $launcher) &\n"
                                                "exit 130\n");
  const ProcessResult result =
      RunLauncher(study, {"--chains", "2", "analysis.xml", "--jobs", "1"}, launcher);
  EXPECT_EQ(result.exitStatus, 128 + SIGINT);
  EXPECT_EQ(result.error, "hovar: stopped\n");
}

TEST(RunRecordTest, ARequestThatIsIgnoredStaysIgnored) {
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(2000, 2000));
  Command command = LauncherIn(study, {});
  command.program = "/bin/sh";
  command.arguments = {"sh", "-c", "trap '' HUP; exec \"$1\" --json run.json analysis.xml", "sh",
                       HOVAR_LAUNCHER};
  Process process(command);
  EXPECT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
  process.Signal(SIGHUP);
  EXPECT_EQ(process.Wait().exitStatus, 0);
  ExpectHolds(study.Read("run.json"), "\"exitStatus\": 0");
}

TEST(ChainsRequestTest, ARequestToEndStopsAll) {
  const ScratchFolder place;
  const TinyStudy study;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  study.Write("analysis.xml", LongAnalysisText());
  for (const int signal : {SIGINT, SIGTERM}) {
    SCOPED_TRACE(signal);
    fs::remove_all(study.Path() / "out");
    Process process(LauncherIn(study, {"--chains", "2", "analysis.xml", "--jobs", "2"}, launcher));
    const fs::path first = study.Path() / "out/chain-1/analysis.log.output.txt";
    const fs::path second = study.Path() / "out/chain-2/analysis.log.output.txt";
    EXPECT_TRUE(WaitForText(first, "\nBurnin: 1 "));
    EXPECT_TRUE(WaitForText(second, "\nBurnin: 1 "));
    process.Signal(signal);
    const ProcessResult result = process.Wait();
    EXPECT_EQ(result.exitStatus, 128 + signal);
    EXPECT_TRUE(result.error.ends_with("hovar: stopped\n")) << result.error;
    EXPECT_TRUE(HasStoppedGrowing(first));
    EXPECT_TRUE(HasStoppedGrowing(second));
  }
}

TEST_F(ReportTest, NamesOfFilesAndFoldersAreEscaped) {
  work_.Write("two\"</script>/<b>&\"x\".csv", "f");
  EXPECT_EQ(Report({"two\"</script>", "--output", "all.html"}).exitStatus, 0);
  EXPECT_EQ(work_.Read("all.html"), Page(File(0, "&lt;b&gt;&amp;&quot;x&quot;.csv", "Zg==") +
                                         Folders(R"("two\"\u003c/script>")")));
}

// The memory of a process is a regular file whose first page nobody can read.
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
