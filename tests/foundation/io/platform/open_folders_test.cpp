#include "foundation/io/platform/open_folders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "support/files.h"

namespace {

namespace fs = std::filesystem;
namespace Platform = Vell::IO::Platform;
using Platform::EntryKind;
using Testing::ScratchFolder;

/// An open folder, which the object closes.
class Opened {
 public:
  explicit Opened(Platform::FolderHandle handle) : handle_(handle) {}
  explicit Opened(const std::string& path) : Opened(Platform::OpenFolder(path.c_str())) {}
  ~Opened() {
    if (IsOpen()) {
      Platform::CloseFolder(handle_);
    }
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  bool IsOpen() const { return handle_ != Platform::kNoFolder; }
  Opened In(const std::string& name) const {
    return Opened(Platform::OpenFolderIn(handle_, name.c_str()));
  }
  EntryKind KindOf(const std::string& name) const {
    return Platform::KindIn(handle_, name.c_str());
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    const auto add = [](void* context, const char* name) {
      static_cast<std::vector<std::string>*>(context)->emplace_back(name);
    };
    EXPECT_TRUE(Platform::VisitFolder(handle_, add, &names));
    std::sort(names.begin(), names.end());
    return names;
  }
  /// The first bytes of a file; "none" where it cannot be opened.
  std::string Read(const std::string& name) const {
    const Platform::FileHandle file = Platform::OpenFileIn(handle_, name.c_str());
    if (file == Platform::kNoFile) {
      return "none";
    }
    std::array<char, 100> text;
    const std::int64_t count = Platform::ReadFile(file, text.data(), text.size());
    EXPECT_TRUE(Platform::CloseFile(file));
    return {text.data(), static_cast<std::size_t>(count)};
  }

 private:
  Platform::FolderHandle handle_;
};

TEST(OpenFoldersTest, EveryEntryIsVisitedOnceAndAsOftenAsWanted) {
  const ScratchFolder folder;
  folder.Write("a", "");
  folder.Write(".hidden", "");
  folder.Write("with blank/below", "");
  const Opened opened(folder.Path().string());
  const std::vector<std::string> names{".hidden", "a", "with blank"};
  EXPECT_EQ(opened.Names(), names);
  EXPECT_EQ(opened.Names(), names);
  EXPECT_EQ(opened.In("with blank").Names(), std::vector<std::string>{"below"});
  EXPECT_EQ(Opened(folder.Path().string() + "\\with blank").Names(),
            std::vector<std::string>{"below"});
}

TEST(OpenFoldersTest, KindsAreThoseOfTheEntriesThemselves) {
  const ScratchFolder folder;
  folder.Write("file", "text");
  folder.Write("sub/file", "below");
  const Opened opened(folder.Path().string());
  EXPECT_EQ(opened.KindOf("file"), EntryKind::kFile);
  EXPECT_EQ(opened.KindOf("sub"), EntryKind::kFolder);
  EXPECT_EQ(opened.KindOf("none"), EntryKind::kMissing);
  EXPECT_EQ(opened.Read("file"), "text");
  EXPECT_EQ(opened.Read("sub"), "none");
  EXPECT_EQ(opened.Read("none"), "none");
  EXPECT_EQ(opened.In("sub").Read("file"), "below");
}

TEST(OpenFoldersTest, WhatIsNoFolderCannotBeOpenedAsOne) {
  const ScratchFolder folder;
  EXPECT_FALSE(Opened(folder.File("none")).IsOpen());
  EXPECT_FALSE(Opened(folder.Write("file", "x")).IsOpen());
  EXPECT_FALSE(Opened(std::string(100'000, 'x')).IsOpen());
  EXPECT_FALSE(Opened(folder.Path().string()).In("file").IsOpen());
}

TEST(OpenFoldersTest, AFolderThatIsReplacedStaysTheOneThatWasOpened) {
  const ScratchFolder folder;
  folder.Write("sub/file", "inside");
  folder.Write("other/file", "outside");
  const Opened opened(folder.Path().string());
  const Opened sub = opened.In("sub");
  std::error_code error;
  fs::rename(folder.Path() / "sub", folder.Path() / "moved", error);
  if (!error) {  // a system can also refuse to move what is open
    fs::rename(folder.Path() / "other", folder.Path() / "sub");
  }
  EXPECT_EQ(sub.Read("file"), "inside");
}

}  // namespace
