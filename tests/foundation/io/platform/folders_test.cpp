#include "foundation/io/platform/folders.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

#include "support/files.h"

namespace {

namespace Platform = Vell::IO::Platform;
using Platform::PathKind;
using Testing::ScratchFolder;

PathKind KindOf(const std::string& path) { return Platform::KindOf(path.c_str()); }

bool Rename(const std::string& from, const std::string& to) {
  return Platform::Rename(from.c_str(), to.c_str());
}

/// True when two paths lead to one file.
bool HaveOneId(const std::string& one, const std::string& other) {
  const auto first = Platform::StampOf(one.c_str());
  const auto second = Platform::StampOf(other.c_str());
  return first && second && first->id == second->id;
}

TEST(FoldersTest, FilesFoldersAndNothingAreToldApart) {
  const ScratchFolder folder;
  folder.Write("sub/file", "x");
  const std::string start = folder.Path().string();
  EXPECT_EQ(KindOf(start + "/sub"), PathKind::kFolder);
  EXPECT_EQ(KindOf(start + "\\sub\\file"), PathKind::kFile);
  EXPECT_EQ(KindOf(start + "/none"), PathKind::kMissing);
  EXPECT_EQ(KindOf(start + "/sub/file/below"), PathKind::kMissing);
  EXPECT_EQ(KindOf(""), PathKind::kMissing);
  EXPECT_EQ(KindOf(std::string(100'000, 'x')), PathKind::kMissing);
}

TEST(FoldersTest, OneFileByTwoPathsIsTheSame) {
  const ScratchFolder folder;
  const std::string file = folder.Write("sub/file", "x");
  const std::string twin = folder.Write("sub/twin", "x");
  EXPECT_TRUE(HaveOneId(file, folder.Path().string() + "/sub/../sub\\file"));
  EXPECT_FALSE(HaveOneId(file, twin));
  EXPECT_FALSE(HaveOneId(file, folder.File("none")));
  EXPECT_FALSE(HaveOneId(folder.File("none"), folder.File("none")));
}

TEST(FoldersTest, AWritableFolderIsFound) {
  const ScratchFolder folder;
  EXPECT_TRUE(Platform::FolderIsWritable(folder.Path().string().c_str()));
  EXPECT_FALSE(Platform::FolderIsWritable(folder.File("none").c_str()));
}

TEST(FoldersTest, RenamingReplacesNothing) {
  const ScratchFolder folder;
  const std::string one = folder.Write("one", "first");
  const std::string two = folder.Write("two", "second");
  EXPECT_FALSE(Rename(one, two));
  EXPECT_EQ(folder.Read("one"), "first");
  EXPECT_EQ(folder.Read("two"), "second");
  EXPECT_TRUE(Rename(one, folder.File("three")));
  EXPECT_FALSE(folder.Has("one"));
  EXPECT_EQ(folder.Read("three"), "first");
  EXPECT_FALSE(Rename(folder.File("none"), folder.File("four")));
}

TEST(FoldersTest, RenamingMovesFolders) {
  const ScratchFolder folder;
  folder.Write("from/file", "x");
  EXPECT_TRUE(Rename(folder.File("from"), folder.File("to")));
  EXPECT_EQ(folder.Read("to/file"), "x");
}

TEST(FoldersTest, TheCurrentFolderIsAbsoluteAndMustFit) {
  std::array<char, 4096> path;
  ASSERT_TRUE(Platform::CurrentFolder(path.data(), path.size()));
  EXPECT_TRUE(std::filesystem::equivalent(path.data(), std::filesystem::current_path()));
  EXPECT_TRUE(std::filesystem::path(path.data()).is_absolute());
  EXPECT_FALSE(Platform::CurrentFolder(path.data(), 1));
}

}  // namespace
