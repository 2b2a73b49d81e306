#include "foundation/io/platform/platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>

#include "foundation/io/platform/folders.h"
#include "support/files.h"

namespace {

namespace Platform = Vell::IO::Platform;
using Platform::Access;
using Platform::Origin;
using Testing::ScratchFolder;

/// Opens a file and closes it again.
bool CanOpen(const std::string& path, Access access) {
  const Platform::FileHandle file = Platform::OpenFile(path.c_str(), access);
  return file != Platform::kNoFile && Platform::CloseFile(file);
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

TEST(CreateFolderTest, DotsAreNoFolderToMake) {
  const ScratchFolder folder;
  for (const char* const path : {"new/.", "new\\..", "new/./", "new\\.\\"}) {
    Platform::CreateFolder(folder.File(path).c_str());
    EXPECT_FALSE(folder.Has("new")) << path;
  }
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
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_LT(Platform::ProcessorMilliseconds() - start, 150) << "sleeping is no work";
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (Platform::ProcessorMilliseconds() - start < 40 &&
         std::chrono::steady_clock::now() < deadline) {
  }
  EXPECT_GE(Platform::ProcessorMilliseconds() - start, 40);
}

TEST(ProgramFileTest, PathThatDoesNotFitIsRefused) {
  char path[4096];
  ASSERT_TRUE(Platform::ProgramFile(path, sizeof(path)));
  const std::size_t length = std::string(path).size();
  EXPECT_TRUE(Platform::ProgramFile(path, length + 1)) << "the zero byte fits just so";
  EXPECT_FALSE(Platform::ProgramFile(path, length));
  EXPECT_FALSE(Platform::ProgramFile(path, 1));
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

}  // namespace
