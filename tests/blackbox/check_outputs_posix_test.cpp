// What `hovar --check` says of outputs where the system has symbolic links and named pipes, and
// follows ".." on the disk.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>

#include "check_runs.h"
#include "support/running_process.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

TEST(CheckOutputsTest, SeparatorsBehindANameOfAFile) {
  std::vector<Row> rows;
  for (const char* end : {"/", "\\", "\\\\", "//"}) {
    const std::string name = "file" + std::string(end);
    rows.push_back(
        {"folder",
         Replaced(QuietAnalysis(), "<Folder>out<", "<Folder>" + name + "<"),
         {{"file", ""}},
         "d.xml:7:9: error: The folder \"" + name + "\" is a file. Give the folder another name."});
    rows.push_back(
        {"log", Replaced(QuietAnalysis(), ">analysis.log<", ">" + name + "<"), {}, "d.xml:10:10"});
    rows.push_back({"log that exists",
                    Replaced(QuietAnalysis(), ">analysis.log<", ">" + name + "<"),
                    {{"out/file", ""}},
                    "d.xml:10:10"});
    rows.push_back(
        {"the log of this run",
         Replaced(QuietAnalysis(), ">fitted.csv<", ">analysis.log" + std::string(end) + "<"),
         {},
         "d.xml:8:25"});
    rows.push_back({"predictions",
                    Replaced(PredictionText(), ">predicted.csv<", ">" + name + "<"),
                    {},
                    "d.xml:9:24"});
    rows.push_back({"chains",
                    Replaced(QuietAnalysis(), ">mcmc<", ">" + name + "<"),
                    {{"out/file", ""}},
                    "d.xml:9:16"});
    rows.push_back({"chains", Replaced(QuietAnalysis(), ">mcmc<", ">" + name + "<"), {}, ""});
  }
  ExpectRows(rows);
}

TEST(CheckOutputsTest, TheFolderAboveOneThatIsMissing) {
  ExpectRows({
      Changed(QuietAnalysis(), ">analysis.log<", ">a b//..\\sub<", "d.xml:10:10"),
      Changed(QuietAnalysis(), ">analysis.log<", ">none/../analysis.log<", "d.xml:10:10"),
      Changed(QuietAnalysis(), "<Folder>out<", "<Folder>none/../out<", "d.xml:7:9"),
      Changed(QuietAnalysis(), ">analysis.log<", ">../out/../analysis.log<"),
      Changed(QuietAnalysis(), ">fitted.csv<", ">mcmc/../fitted.csv<"),
      Changed(QuietAnalysis(), ">analysis.log<", ">a..b<"),
  });
}

TEST(CheckOutputsTest, SymbolicLinks) {
  struct Link {
    std::string name;
    std::string target;
    std::string error;
  };
  for (const Link& link : std::vector<Link>{
           {"out/fitted.csv", "nofolder/x", "d.xml:8:25: error: The coefficient file "},
           {"out/analysis.log", "/nofolder/x", "d.xml:10:10: error: The log file "},
           {"out/fitted.csv", "../x", ""},
           {"out/fitted.csv", "mcmc/x", ""},
           {"out/mcmc", "nofolder", "d.xml:9:16: error: The folder "},
           {"out/mcmc", ".", ""},
           {"linked", "nofolder", ""},
       }) {
    SCOPED_TRACE(link.name + " -> " + link.target);
    const TinyStudy study;
    study.Write("d.xml", QuietAnalysis());
    fs::create_directory(study.Path() / "out");
    fs::create_symlink(link.target, study.Path() / link.name);
    const std::string output = ExpectAgreement(study);
    EXPECT_EQ(HasError(output), !link.error.empty()) << output;
    EXPECT_TRUE(output.starts_with(link.error)) << output;
  }
  const TinyStudy circle;
  circle.Write("d.xml", QuietAnalysis());
  fs::create_directory(circle.Path() / "out");
  fs::create_symlink("fitted.csv", circle.Path() / "out/fitted.csv");
  EXPECT_EQ(
      RunProcess(CheckIn(circle, {"d.xml"})).output,
      "d.xml:8:25: error: The coefficient file \"out/fitted.csv\" is a symbolic link to a file "
      "that cannot be made. Remove the link.\n1 error, 0 warnings\n");
  EXPECT_EQ(RunHovar(circle, {"d.xml"}).exitStatus, 1);
  const TinyStudy study;
  fs::create_symlink("nofolder", study.Path() / "out");
  study.Write("d.xml", QuietAnalysis());
  EXPECT_EQ(ExpectAgreement(study),
            "d.xml:7:9: error: The folder \"out\" is a symbolic link that leads nowhere. Remove "
            "the link, or make its target.\n1 error, 0 warnings\n");
}

TEST(CheckOutputsTest, ASocket) {
  const TinyStudy study;
  study.Write("d.xml", QuietAnalysis());
  fs::create_directory(study.Path() / "out");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, study.File("out/fitted.csv").c_str());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  close(socket);
  EXPECT_EQ(ExpectAgreement(study),
            "d.xml:8:25: error: The coefficient file \"out/fitted.csv\" is no regular file and "
            "cannot be written. Name a regular file.\n1 error, 0 warnings\n");
}

TEST(CheckOutputsTest, ADevice) {
  const TinyStudy study;
  study.Write("d.xml", QuietAnalysis());
  fs::create_directory(study.Path() / "out");
  fs::create_symlink("/dev/null", study.Path() / "out/fitted.csv");
  EXPECT_EQ(ExpectAgreement(study), "0 errors, 0 warnings\n");
}

TEST(CheckOutputsTest, ANamedPipe) {
  const TinyStudy study;
  study.Write("d.xml", QuietAnalysis());
  fs::create_directory(study.Path() / "out");
  ASSERT_EQ(mkfifo((study.Path() / "out/analysis.log").c_str(), 0600), 0);
  const ProcessResult check = CheckDefinition(study);
  EXPECT_EQ(check.output,
            "d.xml:10:10: warning: The log file \"out/analysis.log\" is a named pipe: the run "
            "waits there until another program reads it. Start that one too, or name a regular "
            "file.\n0 errors, 1 warning\n");
  Process process(HovarIn(study, {"d.xml"}));
  EXPECT_FALSE(process.EndsWithin(std::chrono::seconds(1)));
}

}  // namespace
}  // namespace Testing
