#include "foundation/io/platform/platform.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <string>

#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/processes.h"
#include "support/child_process.h"
#include "support/files.h"

namespace {

namespace Platform = Vell::IO::Platform;
using Platform::Access;
using Platform::Origin;
using Testing::ProcessEnd;
using Testing::RunInChild;
using Testing::ScratchFolder;

/// Opens a file and closes it again.
bool CanOpen(const std::string& path, Access access) {
  const Platform::FileHandle file = Platform::OpenFile(path.c_str(), access);
  return file != Platform::kNoFile && Platform::CloseFile(file);
}

void LimitToOneProcessor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
  sched_setaffinity(0, sizeof one, &one);
}

TEST(OpenFileTest, BothSlashesSeparateFolders) {
  const ScratchFolder folder;
  folder.Write("one/two/file.txt", "x");
  const std::string start = folder.Path().string();
  for (const char* const path :
       {"/one/two/file.txt", "\\one\\two\\file.txt", "/one\\two/file.txt", "\\one/two\\file.txt",
        "\\\\one//two\\/file.txt", "/one\\.\\two\\..\\two\\file.txt"}) {
    EXPECT_TRUE(CanOpen(start + path, Access::kRead)) << path;
  }
  std::string backslashes = start + "\\one\\new.txt";
  std::replace(backslashes.begin(), backslashes.end(), '/', '\\');
  EXPECT_TRUE(CanOpen(backslashes, Access::kWrite));
  EXPECT_TRUE(folder.Has("one/new.txt"));
}

TEST(OpenFileTest, LongPathsAreNotCut) {
  const ScratchFolder folder;
  const std::string name(200, 'n');
  folder.Write(name + "/" + name + "/" + name, "x");
  const std::string path = folder.Path().string() + "\\" + name + "\\" + name + "\\" + name;
  EXPECT_TRUE(CanOpen(path, Access::kRead));
  EXPECT_FALSE(CanOpen(path + "x", Access::kRead));
  EXPECT_FALSE(CanOpen(std::string(100'000, 'x'), Access::kRead));
}

TEST(OpenFileTest, MissingFileOrFolderIsNoFile) {
  const ScratchFolder folder;
  EXPECT_FALSE(CanOpen(folder.File("none"), Access::kRead));
  EXPECT_FALSE(CanOpen(folder.File("none"), Access::kReadWriteExisting));
  EXPECT_FALSE(CanOpen(folder.File("none/file"), Access::kWrite));
  EXPECT_FALSE(CanOpen(folder.Path().string(), Access::kWrite));
  EXPECT_FALSE(CanOpen("", Access::kRead));
}

TEST(OpenFileTest, NeverGivesAStandardHandle) {
  const ScratchFolder folder;
  const std::string file = folder.Write("f", "abc");
  for (int closed = 1; closed < 8; ++closed) {  // one bit for each of the three
    SCOPED_TRACE(closed);
    const ProcessEnd end = RunInChild([&] {
      for (int handle = 0; handle < 3; ++handle) {
        if ((closed >> handle & 1) != 0) {
          Testing::CloseHandle(handle);
        }
      }
      for (const Access access : {Access::kRead, Access::kWrite, Access::kReadAppend}) {
        const Platform::FileHandle opened = Platform::OpenFile(file.c_str(), access);
        if (opened < 3 || !Testing::IsOpenHandle(static_cast<int>(opened))) {
          return 1;
        }
      }
      return 0;
    });
    EXPECT_EQ(end, ProcessEnd{0});
  }
}

TEST(OpenFileTest, OpenedFilesAreNotHandedToProgramsThatAreStarted) {
  const ScratchFolder folder;
  const std::string file = folder.Write("f", "abc");
  const ProcessEnd end = RunInChild([&] {
    const auto opened = Platform::OpenFile(file.c_str(), Access::kRead);
    const std::string path = "/proc/self/fd/" + std::to_string(opened);
    const char* const arguments[] = {"test", "-e", path.c_str(), nullptr};
    Platform::BecomeProgram("/usr/bin/test", arguments);
    return 99;
  });
  EXPECT_EQ(end, ProcessEnd{1}) << "the file is still open in the other program";
}

TEST(FileTest, ReadsWritesSeeksAndMeasures) {
  const ScratchFolder folder;
  const auto file = Platform::OpenFile(folder.File("f").c_str(), Access::kReadWriteCreate);
  ASSERT_NE(file, Platform::kNoFile);
  EXPECT_TRUE(Platform::WriteFile(file, "abcdef", 6));
  EXPECT_EQ(Platform::FileLength(file), 6);
  EXPECT_EQ(Platform::SeekFile(file, 2, Origin::kStart), 2);
  char buffer[10];
  EXPECT_EQ(Platform::ReadFile(file, buffer, 2), 2);
  EXPECT_EQ(std::string_view(buffer, 2), "cd");
  EXPECT_EQ(Platform::SeekFile(file, -1, Origin::kCurrent), 3);
  EXPECT_EQ(Platform::SeekFile(file, -1, Origin::kEnd), 5);
  EXPECT_EQ(Platform::ReadFile(file, buffer, 10), 1);
  EXPECT_EQ(Platform::ReadFile(file, buffer, 10), 0);
  EXPECT_EQ(Platform::SeekFile(file, -1, Origin::kStart), -1);
  EXPECT_TRUE(Platform::WriteFile(file, "", 0));
  EXPECT_TRUE(Platform::CloseFile(file));
}

TEST(FileTest, PositionsBeyond32BitsWork) {
  const ScratchFolder folder;
  const auto file = Platform::OpenFile(folder.File("f").c_str(), Access::kReadWriteCreate);
  const std::int64_t place = std::int64_t{5} << 30;
  EXPECT_EQ(Platform::SeekFile(file, place, Origin::kStart), place);
  EXPECT_TRUE(Platform::WriteFile(file, "x", 1));  // a hole before it takes no room
  EXPECT_EQ(Platform::FileLength(file), place + 1);
  EXPECT_TRUE(Platform::CloseFile(file));
}

TEST(FileTest, AppendingGoesToTheEndWhateverThePosition) {
  const ScratchFolder folder;
  const auto file = Platform::OpenFile(folder.Write("f", "abc").c_str(), Access::kReadAppend);
  EXPECT_EQ(Platform::SeekFile(file, 0, Origin::kStart), 0);
  EXPECT_TRUE(Platform::WriteFile(file, "d", 1));
  EXPECT_TRUE(Platform::CloseFile(file));
  EXPECT_EQ(folder.Read("f"), "abcd");
}

TEST(FileTest, HandlesThatAreNotOpenFail) {
  char buffer[1];
  EXPECT_EQ(Platform::ReadFile(Platform::kNoFile, buffer, 1), -1);
  EXPECT_FALSE(Platform::WriteFile(Platform::kNoFile, "x", 1));
  EXPECT_EQ(Platform::SeekFile(Platform::kNoFile, 0, Origin::kCurrent), -1);
  EXPECT_EQ(Platform::FileLength(Platform::kNoFile), -1);
  EXPECT_FALSE(Platform::CloseFile(Platform::kNoFile));
}

TEST(CreateFolderTest, MakesOneFolderAndNotItsParents) {
  const ScratchFolder folder;
  Platform::CreateFolder(folder.File("new").c_str());
  EXPECT_TRUE(std::filesystem::is_directory(folder.File("new")));
  Platform::CreateFolder((folder.Path().string() + "\\new\\inner").c_str());
  EXPECT_TRUE(std::filesystem::is_directory(folder.File("new/inner")));
  Platform::CreateFolder(folder.File("missing/inner").c_str());
  EXPECT_FALSE(folder.Has("missing"));
}

TEST(CreateFolderTest, ExistingFolderKeepsItsFiles) {
  const ScratchFolder folder;
  folder.Write("old/file", "x");
  Platform::CreateFolder(folder.File("old").c_str());
  EXPECT_EQ(folder.Read("old/file"), "x");
}

TEST(CreateFolderTest, FileInItsPlaceStaysAndEmptyPathIsIgnored) {
  const ScratchFolder folder;
  folder.Write("file", "x");
  Platform::CreateFolder(folder.File("file").c_str());
  EXPECT_EQ(folder.Read("file"), "x");
  Platform::CreateFolder("");
}

TEST(ClockTest, CalendarSecondsAreThoseOfTheSystem) {
  const std::time_t before = std::time(nullptr);
  const std::int64_t now = Platform::CalendarSeconds();
  EXPECT_GE(now, before);
  EXPECT_LE(now, std::time(nullptr));
}

TEST(ClockTest, ProcessorTimePassesWhileWorkingOnly) {
  const std::int64_t start = Platform::ProcessorMilliseconds();
  EXPECT_GE(start, 0);
  Testing::SleepMilliseconds(200);
  EXPECT_LT(Platform::ProcessorMilliseconds() - start, 150) << "sleeping is no work";
  const std::clock_t goal = std::clock() + CLOCKS_PER_SEC / 20;
  while (std::clock() < goal) {
  }
  EXPECT_GE(Platform::ProcessorMilliseconds() - start, 40);
}

TEST(ProgramFileTest, IsTheFileOfThisTest) {
  char path[4096];
  ASSERT_TRUE(Platform::ProgramFile(path, sizeof(path)));
  EXPECT_TRUE(std::filesystem::equivalent(path, "/proc/self/exe")) << path;
  EXPECT_EQ(path, std::filesystem::canonical(path).string());
}

TEST(ProgramFileTest, PathThatDoesNotFitIsRefused) {
  char path[4096];
  ASSERT_TRUE(Platform::ProgramFile(path, sizeof(path)));
  const std::size_t length = std::string(path).size();
  EXPECT_TRUE(Platform::ProgramFile(path, length + 1)) << "the zero byte fits just so";
  EXPECT_FALSE(Platform::ProgramFile(path, length));
  EXPECT_FALSE(Platform::ProgramFile(path, 1));
}

TEST(BecomeProgramTest, RunsAnotherProgramWithItsExitStatus) {
  EXPECT_EQ(RunInChild([] {
              const char* const arguments[] = {"false", nullptr};
              Platform::BecomeProgram("/bin/false", arguments);
              return 99;
            }),
            ProcessEnd{1});
}

TEST(BecomeProgramTest, ReturnsWhenThereIsNoSuchProgram) {
  EXPECT_EQ(RunInChild([] {
              const char* const arguments[] = {"none", nullptr};
              Platform::BecomeProgram("/no/such/program", arguments);
              return 99;
            }),
            ProcessEnd{99});
}

TEST(StandardInputTest, DetachedInputIsEmpty) {
  const Testing::Pipe pipe;
  pipe.Write("typed");
  EXPECT_EQ(RunInChild([&pipe] {
              Testing::ReplaceHandle(0, pipe.ReadEnd());
              Platform::DetachStandardInput();
              char byte;
              return Platform::ReadFile(Platform::kStandardInput, &byte, 1) == 0 ? 0 : 1;
            }),
            ProcessEnd{0});
  EXPECT_EQ(pipe.ReadByte(), 't');
}

TEST(ReplaceFileTest, TakesThePlaceOfAnotherFile) {
  const ScratchFolder folder;
  const std::string from = folder.Write("from", "new");
  const std::string to = folder.Write("to", "old");
  EXPECT_FALSE(Platform::Rename(from.c_str(), to.c_str()));
  EXPECT_TRUE(Platform::ReplaceFile(from.c_str(), to.c_str()));
  EXPECT_EQ(folder.Read("to"), "new");
  EXPECT_FALSE(folder.Has("from"));
  EXPECT_TRUE(Platform::ReplaceFile(to.c_str(), folder.File("free").c_str()));
  EXPECT_FALSE(Platform::ReplaceFile(to.c_str(), from.c_str()));
}

TEST(RemoveFileTest, RemovesFilesOnly) {
  const ScratchFolder folder;
  folder.Write("inner/file", "x");
  EXPECT_TRUE(Platform::RemoveFile(folder.File("inner\\file").c_str()));
  EXPECT_FALSE(folder.Has("inner/file"));
  EXPECT_FALSE(Platform::RemoveFile(folder.File("inner/file").c_str()));
  EXPECT_FALSE(Platform::RemoveFile(folder.File("inner").c_str()));
  EXPECT_TRUE(folder.Has("inner"));
}

TEST(ProcessorCountTest, CountsThoseThatMayBeUsed) {
  EXPECT_GE(Platform::ProcessorCount(), 1);
  EXPECT_EQ(RunInChild([] {
              LimitToOneProcessor();
              return Platform::ProcessorCount();
            }),
            (ProcessEnd{1, -1}));
}

}  // namespace
