// The launcher's --report, with a small page in place of the real one.

#include <gtest/gtest.h>

#include "launcher_reports.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST_F(ReportTest, FilesStandInThePageInTheOrderOfTheirNames) {
  // RFC 4648 gives the Base64 of f, fo, foo, foob, fooba and foobar.
  work_.Write("out/b.csv", "f");
  work_.Write("out/a.log", "fo");
  work_.Write("out/mcmc/Chain.csv", "foo");
  work_.Write("out/c.xml", "foob");
  work_.Write("out/d.json", "fooba");
  work_.Write("out/e.txt", "foobar");
  work_.Write("out/empty.csv", "");
  work_.Write("out/f.html", "no");
  work_.Write("out/report.html", "earlier");
  work_.Write("out/a.log.output.txt", "no");
  work_.Write("out/a.log.1", "no");
  const ProcessResult result = Report({"out"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.output, "out/report.html\n");
  EXPECT_EQ(
      work_.Read("out/report.html"),
      Page(File(0, "a.log", "Zm8=") + File(0, "b.csv", "Zg==") + File(0, "c.xml", "Zm9vYg==") +
           File(0, "d.json", "Zm9vYmE=") + File(0, "e.txt", "Zm9vYmFy") + File(0, "empty.csv", "") +
           File(0, "mcmc/Chain.csv", "Zm9v") + Folders("\"out\"")));
  EXPECT_FALSE(HasTemporaryFile(work_));
}

TEST_F(ReportTest, SeveralFoldersAndAFile) {
  work_.Write("one/a.csv", "f");
  work_.Write("two & more/a.csv", "foo");
  const ProcessResult result = Report({"one", "two & more", "--output", "all.html"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.output, "all.html\n");
  EXPECT_EQ(work_.Read("all.html"), Page(File(0, "a.csv", "Zg==") + File(1, "a.csv", "Zm9v") +
                                         Folders(R"("one","two & more")")));
}

TEST_F(ReportTest, FourLevelsAreFollowed) {
  work_.Write("out/1.csv", "f");
  work_.Write("out/a/2.csv", "f");
  work_.Write("out/a/a/3.csv", "f");
  work_.Write("out/a/a/a/4.csv", "f");
  work_.Write("out/a/a/a/a/5.csv", "f");
  EXPECT_EQ(Report({"out"}).exitStatus, 0);
  EXPECT_EQ(
      work_.Read("out/report.html"),
      Page(File(0, "1.csv", "Zg==") + File(0, "a/2.csv", "Zg==") + File(0, "a/a/3.csv", "Zg==") +
           File(0, "a/a/a/4.csv", "Zg==") + Folders("\"out\"")));
}

TEST_F(ReportTest, ALargeFileStandsInParts) {
  // 3 MiB of zeros are 4 Mi letters A; one more byte begins a part of its own.
  constexpr std::size_t kPart = 3 << 20;
  const std::string zeros(kPart / 3 * 4, 'A');
  work_.Write("out/a.csv", std::string(kPart, '\0'));
  work_.Write("out/b.csv", std::string(kPart + 1, '\0'));
  EXPECT_EQ(Report({"out"}).exitStatus, 0);
  EXPECT_TRUE(work_.Read("out/report.html") ==
              Page(File(0, "a.csv", zeros) + File(0, "b.csv", zeros) + File(0, "b.csv", "AA==", 1) +
                   Folders("\"out\"")));
}

TEST_F(ReportTest, FailuresLeaveTheEarlierReport) {
  work_.Write("out/report.html", "earlier");
  work_.Write("file", "");
  for (const char* folder : {"none", "file"}) {
    const ProcessResult result = Report({"out", folder});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, "hovar: cannot read the folder " + std::string(folder) + "\n");
  }
  EXPECT_EQ(Report({"out", "--output", "none/x.html"}).error, "hovar: cannot write none/x.html\n");
  EXPECT_EQ(Report({"out", "--output", "out"}).error, "hovar: cannot write out\n");
  EXPECT_EQ(work_.Read("out/report.html"), "earlier");
  EXPECT_EQ(FilesBelow(work_), (std::set<std::string>{"out/report.html", "file"}));
}

TEST_F(ReportTest, AMissingOrForeignPageIsNamed) {
  work_.Write("out/a.csv", "f");
  const std::string page =
      (fs::canonical(place_.Path()) / "share/hovar/report.html").generic_string();
  place_.Write("share/hovar/report.html", "<p><!-- hovar:files --></p>\n");
  EXPECT_EQ(Report({"out"}).error, "hovar: this is not the page of a report: " + page + "\n");
  fs::remove(page);
  const ProcessResult result = Report({"out"});
  EXPECT_EQ(result.error, "hovar: cannot read the page " + page + "\n");
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(ReportTest, AClosedStandardOutputIsAnError) {
  work_.Write("out/a.csv", "f");
  Command command = LauncherIn(work_, {"--report", "out"}, launcher_);
  for (const Output output : {Output::kFull, Output::kBroken}) {
    command.output = output;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 1) << "signal " << result.signal;
    EXPECT_EQ(result.error, "hovar: cannot write to standard output\n");
  }
}

}  // namespace
}  // namespace Testing
