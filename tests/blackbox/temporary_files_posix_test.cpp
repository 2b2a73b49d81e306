// What the command writes appears at once or not at all, whoever else is at work and whatever ends it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "launcher_runs.h"
#include "runs.h"
#include "support/running_process.h"
#include "tiny_study.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// Waits until there is a temporary file; false when there is none within a minute.
bool WaitForTemporaryFile(const ScratchFolder& folder) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (std::chrono::steady_clock::now() < end) {
    if (HasTemporaryFile(folder)) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

/// How many files of a folder are temporary.
std::ptrdiff_t TemporaryFilesIn(const fs::path& folder) {
  const fs::directory_iterator all(folder);
  return std::count_if(begin(all), end(all),
                       [](const auto& entry) { return entry.path().extension() == ".part"; });
}

TEST(TemporaryFileTest, OfAReportGoesWithASignal) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    const ScratchFolder work;
    work.Write("out/big.csv", "");
    fs::resize_file(work.Path() / "out/big.csv", std::uintmax_t{20} << 30);
    Process process(LauncherIn(work, {"--report", "out"}, launcher));
    ASSERT_TRUE(WaitForTemporaryFile(work));
    process.Signal(signal);
    EXPECT_EQ(process.Wait().signal, signal);
    EXPECT_FALSE(HasTemporaryFile(work));
    EXPECT_FALSE(work.Has("out/report.html"));
  }
}

TEST(TemporaryFileTest, OfARunGoesWithASignal) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const TinyStudy study;
    study.Write("long.xml", LongAnalysisText());
    Process process(LauncherIn(study, {"--json", "run.json", "long.xml"}));
    ASSERT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
    EXPECT_TRUE(HasTemporaryFile(study));
    process.Signal(signal);
    EXPECT_EQ(process.Wait().exitStatus, 128 + signal);
    EXPECT_FALSE(HasTemporaryFile(study));
    ExpectHolds(study.Read("run.json"), "\"exitStatus\": " + std::to_string(128 + signal));
  }
}

// A disk that is full where the record goes is none of the run's, and its lines need none.
TEST(TemporaryFileTest, TheRecordAloneHasOne) {
  const TinyStudy study;
  study.Write("records/other", "");
  study.Write("long.xml", LongAnalysisText());
  Process process(LauncherIn(study, {"--json", "records/run.json", "long.xml"}));
  ASSERT_TRUE(process.WaitForOutput("\nBurnin: 1 "));
  EXPECT_EQ(TemporaryFilesIn(study.Path() / "records"), 1);
  EXPECT_EQ(TemporaryFilesIn(study.Path() / "out"), 0);
  process.Signal(SIGTERM);
  process.Wait();
}

TEST(TemporaryFileTest, TwoRunsInOneFolderNeitherFailNorMix) {
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(200, 200));
  Command command;
  command.program = "/bin/sh";
  command.folder = study.Path();
  command.arguments = {
      "sh", "-c",
      "for i in 1 2 3 4 5 6; do\n"
      "  (\"$0\" --progress --json run.json analysis.xml 2>&1; echo $? >> ends) &\n"
      "done\nwait",
      HOVAR_LAUNCHER};
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(study.Read("ends"), "0\n0\n0\n0\n0\n0\n") << result.output;
  const std::string record = study.Read("run.json");
  EXPECT_EQ(record.find("\"format\": \"hovar run record\""),
            record.rfind("\"format\": \"hovar run record\""));
  ExpectHolds(record, "\"exitStatus\": 0");
  const std::string lines = study.Read("out/analysis.log.output.txt");
  ExpectHolds(lines, "Reading data file");
  EXPECT_EQ(lines.find("Reading data file"), lines.rfind("Reading data file"));
  EXPECT_EQ(lines.find("Mcmc: 200 "), lines.rfind("Mcmc: 200 "));
  ExpectHolds(lines, "Mcmc: 200 ");
  EXPECT_FALSE(HasTemporaryFile(study));
  EXPECT_FALSE(study.Has("run.json.1"));
}

TEST(TemporaryFileTest, ANamedPipeIsRefusedAtOnceAndNotWaitedFor) {
  const TinyStudy study;
  study.Write("out/other", "");
  ASSERT_EQ(mkfifo(study.File("pipe").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo(study.File("out/analysis.log.output.txt").c_str(), 0600), 0);
  const std::vector<std::pair<std::vector<std::string>, std::string>> rows = {
      {{"--json", "pipe", "analysis.xml"}, "pipe"},
      {{"--progress", "analysis.xml"}, "out/analysis.log.output.txt"},
      {{"--report", "out", "--output", "pipe"}, "pipe"}};
  for (const auto& [arguments, file] : rows) {
    Process process(LauncherIn(study, arguments));
    EXPECT_TRUE(process.EndsWithin(std::chrono::seconds(10))) << arguments[0];
    process.Signal(SIGKILL);
    ExpectHolds(process.Wait().error, "cannot write " + file);
  }
  EXPECT_FALSE(study.Has("out/fitted.csv"));
}

TEST(TemporaryFileTest, TheLinesDoNotGoToADeviceFromWhichNothingCanBeRead) {
  for (const char* device : {"/dev/full", "/dev/null", "/dev/zero"}) {
    const TinyStudy study;
    study.Write("out/other", "");
    fs::create_symlink(device, study.Path() / "out/analysis.log.output.txt");
    const ProcessResult result = RunLauncher(study, {"--progress", "analysis.xml"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error,
              "hovar: cannot write out/analysis.log.output.txt: it is no regular file\n");
  }
}

TEST(TemporaryFileTest, TheLinesTakeThePlaceOfALinkAndNotOfWhatItLeadsTo) {
  const TinyStudy study;
  study.Write("diary.txt", "stays");
  study.Write("out/other", "");
  fs::create_symlink("../diary.txt", study.Path() / "out/analysis.log.output.txt");
  EXPECT_EQ(RunLauncher(study, {"--progress", "analysis.xml"}).exitStatus, 0);
  EXPECT_EQ(study.Read("diary.txt"), "stays");
  ExpectHolds(study.Read("out/analysis.log.output.txt"), "Reading data file");
}

TEST(TemporaryFileTest, ARecordGoesToAStreamOfTheCommandItselfWhateverThatIs) {
  const std::string record = "{\n  \"format\": \"hovar run record\"";
  for (const char* line : {"\"$0\" --json /dev/stdout prediction.xml",
                           "\"$0\" --json /dev/stdout prediction.xml > lines; cat lines",
                           "\"$0\" --json /dev/fd/1 prediction.xml | cat",
                           "\"$0\" --json /dev/stderr prediction.xml 2>&1"}) {
    const TinyStudy study;
    Command command;
    command.program = "/bin/sh";
    command.folder = study.Path();
    command.arguments = {"sh", "-c", line, HOVAR_LAUNCHER};
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    ExpectHolds(result.output, kPredictionProgress + record);
  }
}

TEST(TemporaryFileTest, ARecordForAReaderThatNeverReadsEndsAfterARequest) {
  const TinyStudy study;
  Command command;
  command.program = "/bin/bash";
  command.folder = study.Path();
  command.arguments = {"bash", "-c",
                       "exec 3> >(sleep 20); head -c 65536 /dev/zero >&3\n"
                       "\"$0\" --json /dev/fd/3 prediction.xml & sleep 2; kill -TERM $!; wait $!\n"
                       "echo $?; exit 0",
                       HOVAR_LAUNCHER};
  Process process(command);
  EXPECT_TRUE(process.WaitForOutput("\n143\n"));
  process.Signal(SIGKILL);
}

TEST(TemporaryFileTest, WhyTheLinesEndedIsSaid) {
  const TinyStudy study;
  study.Write("analysis.xml", ChainedAnalysisText(40, 40));
  Command command = LauncherIn(study, {"--progress", "analysis.xml"});
  command.fileSizeLimit = 2000;  // the lines of the run are more
  const ProcessResult result = RunProcess(command);
  EXPECT_EQ(result.exitStatus, 1);
  ExpectHolds(result.error,
              "hovar: cannot write out/analysis.log.output.txt: it would exceed the limit on the "
              "size of files\n");
}

}  // namespace
}  // namespace Testing
