// `hovar --report` put files of other folders into the page, by names with a backslash and by links;
// links in a circle gave thousands of entries, and one folder that could not be read failed it all.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "blackbox/launcher_reports.h"
#include "blackbox/limited_rights.h"
#include "blackbox/watched_run.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

// "c2VjcmV0" is "secret" in Base64.
constexpr char kSecretInBase64[] = "c2VjcmV0";

class ForeignReportTest : public ReportTest {
 protected:
  ForeignReportTest() {
    work_.Write("secret.csv", "secret");
    work_.Write("private/secret.csv", "secret");
    work_.Write("private/report.html", "secret");
    work_.Write("out/sub/a.csv", "f");
    work_.Write("out/z.csv", "f");
  }

  /// Expects a page of the two files of the folder, and a line that names what was skipped.
  void ExpectNothingForeign(const std::string& skipped) const {
    const WatchedEnd end =
        Watch(LauncherIn(work_, {"--report", "out"}, launcher_), std::chrono::seconds(10));
    EXPECT_FALSE(end.wasAsked);
    EXPECT_EQ(end.result.exitStatus, 0) << end.result.error;
    ExpectHolds(end.result.error, skipped);
    const std::string page = work_.Has("out/report.html") ? work_.Read("out/report.html") : "";
    EXPECT_EQ(page,
              Page(File(0, "sub/a.csv", "Zg==") + File(0, "z.csv", "Zg==") + Folders("\"out\"")));
    ExpectLacks(page, kSecretInBase64);
  }
};

TEST_F(ForeignReportTest, ANameWithABackslashIsNoPath) {
  work_.Write("out/..\\secret.csv", "name");
  ExpectNothingForeign("secret.csv");
}

TEST_F(ForeignReportTest, ANameWithSeveralBackslashesIsNoPath) {
  work_.Write("out/sub/..\\..\\private\\secret.csv", "name");
  ExpectNothingForeign("secret.csv");
}

TEST_F(ForeignReportTest, AFolderWithABackslashInItsNameIsNoPath) {
  work_.Write("out/..\\private/b.csv", "name");
  ExpectNothingForeign("private");
}

TEST_F(ForeignReportTest, ALinkToAFileOutside) {
  fs::create_symlink("../secret.csv", work_.Path() / "out/b.csv");
  ExpectNothingForeign("b.csv");
}

TEST_F(ForeignReportTest, ALinkToAFolderOutside) {
  fs::create_directory_symlink(work_.Path() / "private", work_.Path() / "out/b");
  ExpectNothingForeign("b");
}

TEST_F(ForeignReportTest, LinksInACircle) {
  fs::create_directory_symlink(".", work_.Path() / "out/circle");
  fs::create_directory_symlink("..", work_.Path() / "out/sub/circle");
  fs::create_symlink("circle.csv", work_.Path() / "out/circle.csv");
  ExpectNothingForeign("circle");
}

// Its size is 0, and reading it gives more than any disk holds.
TEST_F(ForeignReportTest, ALinkToAFileOfTheKernel) {
  fs::create_symlink("/proc/self/pagemap", work_.Path() / "out/kernel.csv");
  ExpectNothingForeign("kernel.csv");
}

TEST_F(ForeignReportTest, APipeAndADevice) {
  EXPECT_EQ(::mkfifo(work_.File("out/pipe.csv").c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", work_.Path() / "out/zero.csv");
  ExpectNothingForeign("pipe.csv");
}

TEST_F(ForeignReportTest, TheFolderItselfMayBeALink) {
  fs::create_directory_symlink("out", work_.Path() / "link");
  EXPECT_EQ(Report({"link", "--output", "all.html"}).exitStatus, 0);
  EXPECT_EQ(work_.Read("all.html"),
            Page(File(0, "sub/a.csv", "Zg==") + File(0, "z.csv", "Zg==") + Folders("\"link\"")));
}

TEST_F(ForeignReportTest, AFolderThatCannotBeReadIsLeftOut) {
  work_.Write("out/lost+found/b.csv", "f");
  const LimitedRights limited(work_.Path() / "out/lost+found", kNone);
  const ProcessResult result =
      RunProcess(WithoutRights(LauncherIn(work_, {"--report", "out"}, launcher_)));
  EXPECT_EQ(result.exitStatus, 0);
  ExpectHolds(result.error, "lost+found");
  ASSERT_TRUE(work_.Has("out/report.html"));
  EXPECT_EQ(work_.Read("out/report.html"),
            Page(File(0, "sub/a.csv", "Zg==") + File(0, "z.csv", "Zg==") + Folders("\"out\"")));
}

}  // namespace
}  // namespace Testing
