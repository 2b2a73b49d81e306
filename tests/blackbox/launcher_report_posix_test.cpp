// What a report leaves out: links, pipes, names and folders that it cannot reach.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "launcher_reports.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

using ReportPosixTest = ReportTest;

std::string LeftOut(const std::string& path, const std::string& why) {
  return "hovar: left out " + path + ": " + why + "\n";
}

TEST_F(ReportPosixTest, NothingOutsideTheFolderIsRead) {
  work_.Write("secret.csv", "secret");
  work_.Write("outside/secret.csv", "secret");
  work_.Write("out/a.csv", "f");
  fs::create_symlink("../secret.csv", work_.Path() / "out/b.csv");
  fs::create_directory_symlink("../outside", work_.Path() / "out/c.xml");
  fs::create_directory_symlink(".", work_.Path() / "out/loop.txt");
  fs::create_directory_symlink("../outside", work_.Path() / "out/quiet");
  work_.Write("out/..\\secret.csv", "inside");
  ASSERT_EQ(mkfifo((work_.Path() / "out/pipe.csv").c_str(), 0600), 0);
  const ProcessResult result = Report({"out"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(work_.Read("out/report.html"), Page(File(0, "a.csv", "Zg==") + Folders("\"out\"")));
  EXPECT_EQ(result.error,
            LeftOut("'out/..\\secret.csv'", "a name with a backslash cannot be part of a path") +
                LeftOut("out/b.csv", "a symbolic link") + LeftOut("out/c.xml", "a symbolic link") +
                LeftOut("out/loop.txt", "a symbolic link") +
                LeftOut("out/pipe.csv", "no regular file") +
                LeftOut("out/quiet", "a symbolic link"));
}

TEST_F(ReportPosixTest, AnOddNameCannotChangeTheLine) {
  fs::create_directory(work_.Path() / "out");
  fs::create_symlink("none", work_.Path() / "out/a\x1b[2J\n\xC2\x9B\xE2\x80\xAE.csv");
  const ProcessResult result = Report({"out"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.error,
            LeftOut(R"($'out/a\x1b[2J\n\xc2\x9b\xe2\x80\xae.csv')", "a symbolic link"));
}

TEST_F(ReportPosixTest, AGrowingFileIsTakenAsItWasFound) {
  // Of a file that another program writes while it is read, the report holds the beginning.
  const std::string kib(1024, 'x');
  std::string text;
  for (int i = 0; i < 4096; ++i) {
    text += kib;
  }
  work_.Write("out/a.csv", text);
  Command command = LauncherIn(work_, {"--report", "out"}, launcher_);
  std::atomic<bool> isDone = false;
  std::thread writer([&] {
    std::ofstream file(work_.Path() / "out/a.csv", std::ios::app);
    while (!isDone) {
      file << text << std::flush;
      if (file.tellp() > (std::int64_t{1} << 28)) {
        break;
      }
    }
  });
  const ProcessResult result = RunProcess(command);
  isDone = true;
  writer.join();
  EXPECT_EQ(result.exitStatus, 0) << result.error;
}

TEST_F(ReportPosixTest, FoldersTooDeepAndChainsOfAnEarlierRunAreNamed) {
  work_.Write("out/a/b/c/d/e.csv", "f");
  work_.Write("out/chains.json", "{\"chains\": 2}\n");
  work_.Write("out/chain-2/a.csv", "f");
  work_.Write("out/chain-3/a.csv", "f");
  work_.Write("out/chain-03/a.csv", "f");
  const ProcessResult result = Report({"out"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.error, LeftOut("out/a/b/c/d", "more than four folders deep") +
                              LeftOut("out/chain-3", "an earlier run with more chains wrote it"));
  const std::string page = work_.Read("out/report.html");
  ExpectHolds(page, "data-path=\"chain-2/a.csv\"");
  ExpectHolds(page, "data-path=\"chain-03/a.csv\"");
  EXPECT_EQ(page.find("chain-3/"), std::string::npos);
}

}  // namespace
}  // namespace Testing
