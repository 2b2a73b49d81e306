#include "foundation/io/platform/processes.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>
#include <vector>

#include "support/files.h"

namespace {

namespace Platform = Vell::IO::Platform;
using Platform::Access;
using Platform::FileHandle;
using Platform::ProcessHandle;
using Platform::ProcessStreams;
using Testing::ScratchFolder;

ProcessHandle StartNamed(const std::string& program, const std::vector<std::string>& arguments,
                         const ProcessStreams& streams) {
  std::vector<const char*> pointers;
  for (const std::string& argument : arguments) {
    pointers.push_back(argument.c_str());
  }
  pointers.push_back(nullptr);
  return Platform::StartProcess(program.c_str(), pointers.data(), streams);
}

/// Starts the child program; the name that it sees as its own is "child".
ProcessHandle Start(std::vector<std::string> arguments, const ProcessStreams& streams = {}) {
  arguments.insert(arguments.begin(), "child");
  return StartNamed(HOVAR_PLATFORM_CHILD, arguments, streams);
}

/// A file that is open for as long as this lives.
class OpenedFile {
 public:
  OpenedFile(const std::string& path, Access access)
      : handle_(Platform::OpenFile(path.c_str(), access)) {}
  ~OpenedFile() { Platform::CloseFile(handle_); }
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  FileHandle Handle() const { return handle_; }

 private:
  FileHandle handle_;
};

TEST(ProcessesTest, TheExitStatusComesBack) {
  for (const int status : {0, 1, 7, 255}) {
    const ProcessHandle process = Start({"exit", std::to_string(status)});
    ASSERT_NE(process, Platform::kNoProcess);
    EXPECT_EQ(Platform::WaitForProcess(process), status);
  }
}

TEST(ProcessesTest, ArgumentsArriveAsTheyAre) {
  const ScratchFolder folder;
  const std::vector<std::string> arguments = {
      "echo",         "",          "two words", "\"quoted\"",       "trailing\\", "a\\\"b", "\\\\",
      "*.csv %PATH%", "tab\there", "$HOME",     "blank and end\\ ", "\xc3\xa9"};
  {
    const OpenedFile input(folder.Write("input", "what is read\n"), Access::kRead);
    const OpenedFile output(folder.File("output"), Access::kWrite);
    const ProcessHandle process =
        Start(arguments, {input.Handle(), output.Handle(), Platform::kStandardError});
    ASSERT_NE(process, Platform::kNoProcess);
    EXPECT_EQ(Platform::WaitForProcess(process), 0);
  }
  std::string expected = "child\n";
  for (const std::string& argument : arguments) {
    expected += argument + "\n";
  }
  EXPECT_EQ(folder.Read("output"), expected + "what is read\n");
}

TEST(ProcessesTest, OutputAndErrorsGoWhereTheyShould) {
  const ScratchFolder folder;
  {
    const OpenedFile empty(folder.Write("empty", ""), Access::kRead);
    const OpenedFile output(folder.File("output"), Access::kWrite);
    const OpenedFile error(folder.File("error"), Access::kWrite);
    const ProcessHandle process =
        Start({"complain"}, {empty.Handle(), output.Handle(), error.Handle()});
    ASSERT_NE(process, Platform::kNoProcess);
    EXPECT_EQ(Platform::WaitForProcess(process), 0);
  }
  EXPECT_EQ(folder.Read("output"), "");
  EXPECT_EQ(folder.Read("error"), "a complaint\n");
}

TEST(ProcessesTest, OtherOpenFilesDoNotReachTheProcess) {
  const ScratchFolder folder;
  const OpenedFile secret(folder.Write("secret", "content"), Access::kRead);
  const ProcessHandle process = Start({"read", std::to_string(secret.Handle())});
  ASSERT_NE(process, Platform::kNoProcess);
  EXPECT_EQ(Platform::WaitForProcess(process), 0);
}

TEST(ProcessesTest, WhatCannotBeExecutedIsNoProcess) {
  const ScratchFolder folder;
  const std::string text = folder.Write("text", "no program");
  for (const std::string& program : {folder.File("missing"), text, folder.Path().string()}) {
    EXPECT_EQ(StartNamed(program, {"name"}, {}), Platform::kNoProcess) << program;
  }
}

TEST(ProcessesTest, NoProcessIsNotWaitedForAndOthersAreLeftAlone) {
  const ProcessHandle other = Start({"exit", "7"});
  EXPECT_EQ(Platform::WaitForProcess(Platform::kNoProcess), -1);
  EXPECT_EQ(Platform::WaitForProcess(other), 7);
}

TEST(ProcessesTest, ARunningProcessHasNoStatusUntilItIsStopped) {
  const auto start = std::chrono::steady_clock::now();
  const ProcessHandle process = Start({"sleep"});
  ASSERT_NE(process, Platform::kNoProcess);
  EXPECT_FALSE(Platform::PollProcess(process).has_value());
  Platform::StopProcess(process);
  EXPECT_NE(Platform::WaitForProcess(process), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
}

TEST(ProcessesTest, PollingMeetsTheEnd) {
  const ProcessHandle process = Start({"exit", "3"});
  ASSERT_NE(process, Platform::kNoProcess);
  std::optional<int> status;
  for (int i = 0; i < 6'000 && !status; ++i) {
    status = Platform::PollProcess(process);
    Platform::Sleep(10);
  }
  EXPECT_EQ(status, 3);
}

TEST(ProcessesTest, SleepingTakesItsTime) {
  const auto start = std::chrono::steady_clock::now();
  Platform::Sleep(30);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(29));
}

TEST(ProcessesTest, TheTerminalHasColumns) { EXPECT_GT(Platform::TerminalColumns(), 0); }

TEST(ProcessesTest, TheHostHasANameThatMustFit) {
  std::array<char, 256> name;
  ASSERT_TRUE(Platform::HostName(name.data(), name.size()));
  EXPECT_GT(std::string(name.data()).size(), 0U);
  EXPECT_FALSE(Platform::HostName(name.data(), 0));
}

}  // namespace
