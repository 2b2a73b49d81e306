#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "foundation/io/platform/open_folders.h"
#include "support/files.h"

namespace {

namespace fs = std::filesystem;
namespace Platform = Vell::IO::Platform;
using Platform::EntryKind;
using Testing::ScratchFolder;

TEST(OpenFoldersPosixTest, LinksPipesAndBackslashesLeadNowhere) {
  const ScratchFolder folder;
  folder.Write("outside/secret", "x");
  fs::create_directory(folder.Path() / "in");
  fs::create_directory_symlink("../outside", folder.Path() / "in/folder");
  fs::create_symlink("../outside/secret", folder.Path() / "in/file");
  fs::create_symlink("loop", folder.Path() / "in/loop");
  ASSERT_EQ(mkfifo((folder.Path() / "in/pipe").c_str(), 0600), 0);
  const Platform::FolderHandle in = Platform::OpenFolder((folder.Path() / "in").c_str());
  ASSERT_NE(in, Platform::kNoFolder);
  for (const char* name : {"folder", "file", "loop"}) {
    EXPECT_EQ(Platform::KindIn(in, name), EntryKind::kLink) << name;
    EXPECT_EQ(Platform::OpenFolderIn(in, name), Platform::kNoFolder) << name;
    EXPECT_EQ(Platform::OpenFileIn(in, name), Platform::kNoFile) << name;
  }
  EXPECT_EQ(Platform::KindIn(in, "pipe"), EntryKind::kOther);
  EXPECT_EQ(Platform::OpenFileIn(in, "pipe"), Platform::kNoFile);
  EXPECT_EQ(Platform::OpenFileIn(in, "..\\outside\\secret"), Platform::kNoFile);
  Platform::CloseFolder(in);
}

TEST(OpenFoldersPosixTest, AFolderMayBeNamedByALink) {
  const ScratchFolder folder;
  folder.Write("target/file", "x");
  fs::create_directory_symlink("target", folder.Path() / "link");
  const Platform::FolderHandle link = Platform::OpenFolder((folder.Path() / "link").c_str());
  ASSERT_NE(link, Platform::kNoFolder);
  EXPECT_EQ(Platform::KindIn(link, "file"), EntryKind::kFile);
  Platform::CloseFolder(link);
}

}  // namespace
