#include "tools/support/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iterator>

#include "support/child_process.h"
#include "support/files.h"
#include "tools/support/messages.h"

namespace Hovar {
namespace {

namespace fs = std::filesystem;
using Testing::ScratchFolder;

constexpr char kRecord[] = "{\n  \"format\": \"hovar run record\",\n  \"formatVersion\": 1\n}\n";

std::size_t EntriesOf(const ScratchFolder& folder) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()));
}

TEST(OutputFileTest, AppearsWhenItIsComplete) {
  const ScratchFolder folder;
  folder.Write("file", "earlier");
  OutputFile file(folder.File("file"));
  ASSERT_TRUE(file.Open());
  file.Write(std::string(200'000, 'x'));
  file.Write("y");
  EXPECT_EQ(folder.Read("file"), "earlier");
  EXPECT_TRUE(file.Complete());
  EXPECT_EQ(folder.Read("file"), std::string(200'000, 'x') + "y");
  EXPECT_EQ(EntriesOf(folder), 1U);
}

TEST(OutputFileTest, LeavesNothingWhenItIsGivenUp) {
  const ScratchFolder folder;
  folder.Write("file", "earlier");
  {
    OutputFile file(folder.File("file"));
    ASSERT_TRUE(file.Open());
    file.Write("later");
  }
  EXPECT_EQ(folder.Read("file"), "earlier");
  EXPECT_EQ(EntriesOf(folder), 1U);
}

TEST(OutputFileTest, FoldersAndMissingFoldersCannotBeWritten) {
  const ScratchFolder folder;
  EXPECT_FALSE(OutputFile(folder.Path().string()).Open());
  EXPECT_FALSE(OutputFile(folder.File("none/file")).Open());
  EXPECT_FALSE(WriteWholeFile(folder.File("none/file"), "x"));
}

TEST(OutputFileTest, WhatWasNeverOpenIsNotComplete) {
  const ScratchFolder folder;
  OutputFile file(folder.File("none/file"));
  file.Write("x");
  EXPECT_FALSE(file.Complete());
}

TEST(OutputFileTest, AFolderInItsPlaceIsNotReplaced) {
  const ScratchFolder folder;
  OutputFile file(folder.File("file"));
  ASSERT_TRUE(file.Open());
  folder.Write("file/inside", "stays");
  EXPECT_FALSE(file.Complete());
  EXPECT_EQ(folder.Read("file/inside"), "stays");
  EXPECT_EQ(EntriesOf(folder), 1U);
}

TEST(OutputFileTest, ADeviceIsWrittenDirectly) {
  EXPECT_TRUE(WriteWholeFile("/dev/null", "x"));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_FALSE(WriteWholeFile("/dev/full", "x"));
}

TEST(OutputFileTest, TwoOfOneNameDoNotMix) {
  const ScratchFolder folder;
  OutputFile one(folder.File("file"));
  OutputFile other(folder.File("file"));
  ASSERT_TRUE(one.Open());
  ASSERT_TRUE(other.Open());
  one.Write(std::string(100'000, 'a'));
  other.Write(std::string(100'000, 'b'));
  EXPECT_TRUE(one.Complete());
  EXPECT_EQ(folder.Read("file"), std::string(100'000, 'a'));
  EXPECT_TRUE(other.Complete());
  EXPECT_EQ(folder.Read("file"), std::string(100'000, 'b'));
  EXPECT_EQ(EntriesOf(folder), 1U);
}

TEST(OutputFileTest, ALinkOfItsNameIsReplacedAndNotFollowed) {
  const ScratchFolder folder;
  folder.Write("other/file", "stays");
  fs::create_symlink("other/file", folder.Path() / "file");
  EXPECT_TRUE(WriteWholeFile(folder.File("file"), "new"));
  EXPECT_EQ(folder.Read("other/file"), "stays");
  EXPECT_EQ(folder.Read("file"), "new");
  EXPECT_FALSE(fs::is_symlink(folder.Path() / "file"));
}

TEST(OutputFileTest, AFileOfTheNameThatFillsAFolderEntryIsWritten) {
  const ScratchFolder folder;
  const std::string name(255, 'n');
  EXPECT_TRUE(WriteWholeFile(folder.File(name), "x"));
  EXPECT_EQ(folder.Read(name), "x");
}

TEST(OutputFileTest, ARightIsThatOfAnyNewFile) {
  const ScratchFolder folder;
  const mode_t before = umask(027);
  EXPECT_TRUE(WriteWholeFile(folder.File("file"), "x"));
  umask(before);
  EXPECT_EQ(fs::status(folder.Path() / "file").permissions(),
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST(OutputFileTest, ANamedPipeIsRefusedAtOnce) {
  const ScratchFolder folder;
  ASSERT_EQ(mkfifo(folder.File("pipe").c_str(), 0600), 0);
  OutputFile file(folder.File("pipe"));
  EXPECT_FALSE(file.Open());
  EXPECT_EQ(file.Reason(), kWriteReasons.isNoFile.Text());
  const int reader = open(folder.File("pipe").c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_FALSE(OutputFile(folder.File("pipe")).Open()) << "even where somebody reads";
  close(reader);
}

TEST(OutputFileTest, WhatCameToItsNameMeanwhileStays) {
  const ScratchFolder folder;
  OutputFile file(folder.File("r.json"), OwnOutput::kRecord);
  ASSERT_TRUE(file.Open());
  file.Write(kRecord);
  folder.Write("r.json", "somebody's");
  folder.Write("r.json.1", "taken");
  EXPECT_EQ(file.CompleteOrKeepBeside(), folder.File("r.json.2"));
  EXPECT_EQ(file.Reason(), kWriteReasons.changed.Text());
  EXPECT_EQ(folder.Read("r.json"), "somebody's");
  EXPECT_EQ(folder.Read("r.json.1"), "taken");
  EXPECT_EQ(folder.Read("r.json.2"), kRecord);
  EXPECT_EQ(EntriesOf(folder), 3U);
}

TEST(OutputFileTest, ARecordOfAnotherRunThatCameMeanwhileIsReplaced) {
  const ScratchFolder folder;
  OutputFile file(folder.File("r.json"), OwnOutput::kRecord);
  ASSERT_TRUE(file.Open());
  file.Write("later");
  folder.Write("r.json", kRecord);
  EXPECT_TRUE(file.Complete());
  EXPECT_EQ(folder.Read("r.json"), "later");
}

TEST(OutputFileTest, AProtectedFileIsNotReplacedThoughItWasNotThereBefore) {
  const ScratchFolder folder;
  ProtectedFiles files;
  files.Add(folder.File("none/../out/fitted.csv"));
  OutputFile file(folder.File("link.json"), OwnOutput::kRecord, &files);
  ASSERT_TRUE(file.Open());
  file.Write(kRecord);
  folder.Write("out/fitted.csv", kRecord);
  fs::create_hard_link(folder.Path() / "out/fitted.csv", folder.Path() / "link.json");
  EXPECT_FALSE(file.Complete());
  EXPECT_EQ(file.Reason(), kWriteReasons.fileOfRun.Text());
  EXPECT_EQ(fs::hard_link_count(folder.Path() / "link.json"), 2U);
}

TEST(TemporaryFileTest, ASignalThatEndsTheProcessRemovesIt) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    const ScratchFolder folder;
    const pid_t process = fork();
    if (process == 0) {
      Vell::IO::Platform::RemoveTemporaryFilesAtEnd();
      const TemporaryFile one(folder.File("one"));
      const TemporaryFile other(folder.File("other"));
      static_cast<void>(std::raise(one.IsOpen() && other.IsOpen() ? signal : SIGKILL));
      _exit(1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    EXPECT_EQ(EntriesOf(folder), 0U);
  }
}

TEST(TemporaryFileTest, OnlyThoseThatAreLeftAreRemoved) {
  const ScratchFolder folder;
  {
    TemporaryFile first(folder.File("first"));
    auto second = std::make_unique<TemporaryFile>(folder.File("second"));
    TemporaryFile third(folder.File("third"));
    ASSERT_EQ(EntriesOf(folder), 3U);
    EXPECT_TRUE(third.Name(folder.File("kept")));
    second.reset();
    Vell::IO::Platform::RemoveTemporaryFiles();
    EXPECT_EQ(EntriesOf(folder), 1U);
  }
  EXPECT_TRUE(folder.Has("kept"));
}

}  // namespace
}  // namespace Hovar
