// A signal that came while the program asked for a position or for the length of a file, or made a
// folder, counted as a failure. strace interrupts the calls.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "blackbox/runs.h"
#include "blackbox/tiny_study.h"

namespace Testing {
namespace {

/// Records with one variable in more than one block of a stream: only then the length is of
/// interest.
std::string LongData() {
  std::string data = "Key,Hospital,Y,POA,Z,X\n";
  for (int i = 0; i < 20'000; ++i) {
    data += i % 3 == 0 ? "a,A,1,0," : "a,A,0,0,";
    data += i / 2 % 2 == 0 ? "0," : "1,";
    data += i % 2 == 0 ? "0\n" : "1\n";
  }
  return data;
}

TEST(RegressionTest, AnInterruptedCallIsMadeAgain) {
  const TinyStudy study;
  study.Write("data.csv", LongData());
  EXPECT_EQ(RunHovar(study, {"analysis.xml"}).exitStatus, 0);
  const std::string expected = study.Read("out/fitted.csv");
  std::filesystem::create_symlink(HOVAR_PROGRAM, study.Path() / "C:\\hovar");
  for (const auto& [calls, path] : std::map<std::string, std::string>{
           {"lseek", "data.csv"}, {"?fstat,?newfstatat", "data.csv"}, {"?mkdir,?mkdirat", "out"}}) {
    SCOPED_TRACE(calls);
    std::filesystem::remove_all(study.Path() / "out");
    Command command = HovarIn(study, {});
    command.program = "/usr/bin/env";
    // Every second one is interrupted, so that the same call succeeds when it is made again.
    command.arguments = {"env", "strace", "-o", "trace.txt", "-P", path, "-e"};
    command.arguments.push_back("inject=" + calls + ":error=EINTR:when=1+2");
    command.arguments.insert(command.arguments.end(), {"./C:\\hovar", "analysis.xml"});
    // The leak check traces the process itself, and only one can do so.
    command.environment = {{"ASAN_OPTIONS", "detect_leaks=0"}};
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(study.Read("out/fitted.csv"), expected);
    EXPECT_NE(study.Read("trace.txt").find("(INJECTED)"), std::string::npos)
        << "nothing was interrupted; strace (Debian package strace) must be there";
  }
}

}  // namespace
}  // namespace Testing
