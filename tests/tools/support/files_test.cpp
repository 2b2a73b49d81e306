#include "tools/support/files.h"

#include <gtest/gtest.h>

#include "support/child_process.h"
#include "support/files.h"
#include "tools/run/run_record.h"
#include "tools/support/sha256.h"

namespace Hovar {
namespace {

using Testing::ScratchFolder;

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
  EXPECT_FALSE(folder.Has("file.part"));
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
  EXPECT_FALSE(folder.Has("file.part"));
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
  EXPECT_FALSE(folder.Has("file.part"));
}

TEST(OutputFileTest, ADeviceIsWrittenDirectly) {
  EXPECT_TRUE(WriteWholeFile("/dev/null", "x"));
  EXPECT_FALSE(std::filesystem::exists("/dev/null.part"));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_FALSE(WriteWholeFile("/dev/full", "x"));
}

TEST(ReadSmallFileTest, RegularFilesOnly) {
  const ScratchFolder folder;
  const std::string text(150'000, 'z');
  EXPECT_EQ(ReadSmallFile(folder.Write("a", text)), text);
  EXPECT_EQ(ReadSmallFile(folder.Write("b", "")), "");
  EXPECT_EQ(ReadSmallFile(folder.Write("c", std::string(65'536, 'q'))), std::string(65'536, 'q'));
  EXPECT_EQ(ReadSmallFile(folder.File("none")), std::nullopt);
  EXPECT_EQ(ReadSmallFile(folder.Path().string()), std::nullopt);
  EXPECT_EQ(ReadSmallFile("/dev/zero"), std::nullopt);
  EXPECT_EQ(ReadSmallFile(folder.Write("large", std::string(17 << 20, 'x'))), std::nullopt);
}

// The memory of this process is a regular file whose first page nobody can read.
TEST(InputFileTest, AFileThatCannotBeReadIsNoFile) {
  constexpr const char* kUnreadable = "/proc/self/mem";
  EXPECT_EQ(ReadSmallFile(kUnreadable), std::nullopt);
  EXPECT_EQ(Sha256OfFile(kUnreadable), std::nullopt);
}

TEST(InputFileTest, WithoutAFreeDescriptorNothingIsRead) {
  const ScratchFolder folder;
  const std::string file = folder.Write("a", "text");
  const Testing::NoFreeDescriptors none;
  EXPECT_EQ(ReadSmallFile(file), std::nullopt);
  EXPECT_EQ(Sha256OfFile(file), std::nullopt);
}

// coreutils: date -u -d @SECONDS +%FT%TZ
TEST(UtcTextTest, DatesAndTimes) {
  EXPECT_EQ(UtcText(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(UtcText(1'709'210'096), "2024-02-29T12:34:56Z");
  EXPECT_EQ(UtcText(4'102'444'799), "2099-12-31T23:59:59Z");
}

}  // namespace
}  // namespace Hovar
