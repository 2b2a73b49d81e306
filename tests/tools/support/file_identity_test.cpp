#include "tools/support/file_identity.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "support/files.h"
#include "tools/support/protected_files.h"

namespace Hovar {
namespace {

namespace fs = std::filesystem;
using Testing::ScratchFolder;

/// A folder of files and links, in which the paths of a test begin.
class FileIdentityTest : public testing::Test {
 protected:
  FileIdentityTest() {
    folder_.Write("out/mcmc/Chain.csv", "chain");
    folder_.Write("data.csv", "data");
    fs::create_hard_link(folder_.Path() / "data.csv", folder_.Path() / "hard.csv");
    fs::create_symlink("data.csv", folder_.Path() / "soft.csv");
    fs::create_directory_symlink("out/mcmc", folder_.Path() / "deep");
    fs::create_symlink("out/later.csv", folder_.Path() / "dangling.csv");
    fs::create_directory_symlink("results", folder_.Path() / "early");
    fs::create_symlink("circle", folder_.Path() / "circle");
  }
  std::string At(const std::string& path) const { return folder_.Path().string() + '/' + path; }

 private:
  ScratchFolder folder_;
};

TEST_F(FileIdentityTest, PathsOfOneFile) {
  const std::pair<const char*, const char*> rows[] = {
      // spellings of a file that is there
      {"data.csv", "./data.csv"},
      {"data.csv", "out\\..\\data.csv"},
      {"data.csv", ".//data.csv"},
      // links to it
      {"data.csv", "hard.csv"},
      {"soft.csv", "hard.csv"},
      // through a link to a folder; ".." leads from where the link leads to
      {"out/mcmc/Chain.csv", "deep/Chain.csv"},
      {"out/none.csv", "deep/../none.csv"},
      {"out/mcmc/none.csv", "deep\\none.csv"},
      // not there, in folders that are not there either
      {"results/coefficients.csv", "results\\coefficients.csv"},
      {"results/coefficients.csv", "./results/./mcmc/../coefficients.csv"},
      {"out/later.csv", "results/../out/later.csv"},
      {"out/mcmc/none.csv", "results/../deep/none.csv"},
      // what a link leads to that leads nowhere yet
      {"dangling.csv", "out/later.csv"},
      {"circle", "./circle"},
      {"early/a.csv", "results/a.csv"},
      {"early/b/../a.csv", "results/a.csv"},
      // folders
      {"out", "out/mcmc/.."},
      {"out", "out/."},
      {"results", "results/"},
  };
  for (const auto& [one, other] : rows) {
    EXPECT_TRUE(IsSameFile(At(one), At(other))) << one << " and " << other;
    FileMap<int> map;
    map.Set(At(one), 1);
    EXPECT_NE(map.Find(At(other)), nullptr) << one << " and " << other;
  }
}

TEST_F(FileIdentityTest, PathsOfTwoFiles) {
  const std::pair<const char*, const char*> rows[] = {
      {"data.csv", "out/data.csv"}, {"data.csv", "data.csv.1"},    {"none.csv", "deep/../none.csv"},
      {"results/a", "results/b"},   {"results/a/b", "results/ab"}, {"out", "out/mcmc"},
      {"circle", "data.csv"},
  };
  for (const auto& [one, other] : rows) {
    EXPECT_FALSE(IsSameFile(At(one), At(other))) << one << " and " << other;
    FileMap<int> map;
    map.Set(At(one), 1);
    EXPECT_EQ(map.Find(At(other)), nullptr) << one << " and " << other;
  }
}

TEST_F(FileIdentityTest, ARelativePathIsThatOfItsAbsoluteForm) {
  const fs::path here = fs::current_path();
  for (const char* path : {"none/a", ".", "a", "none/b/../a"}) {
    EXPECT_TRUE(IsSameFile(path, (here / path).string())) << path;
  }
  EXPECT_TRUE(IsSameFile("/", "/.."));
  EXPECT_FALSE(IsSameFile("/", "/none"));
}

TEST_F(FileIdentityTest, AFileIsKnownAlsoByWhereItWasAndWhereItCameToBe) {
  ProtectedFiles files;
  files.Add(At("results/a.csv"));
  files.Add(At("data.csv"));
  fs::rename(At("data.csv"), At("moved.csv"));
  fs::create_directory(At("results"));
  EXPECT_NE(files.Find(At("moved.csv")), nullptr) << "the file itself";
  EXPECT_NE(files.Find(At("data.csv")), nullptr) << "its place";
  EXPECT_EQ(files.Find(At("results/a.csv")), nullptr) << "its folder is another one now";
  files.LookAgain();
  ASSERT_NE(files.Find(At("results/a.csv")), nullptr);
  EXPECT_EQ(*files.Find(At("results/../results/a.csv")), At("results/a.csv"));
}

TEST_F(FileIdentityTest, NumbersLeaveProtectedAndTakenNamesOut) {
  ProtectedFiles files;
  files.Add(At("data.csv.1"));
  fs::create_symlink("nowhere", At("data.csv.2"));
  const auto take = [](const std::string& name) { return !fs::exists(name); };
  EXPECT_EQ(TakeNumberedName(At("data.csv"), files, take), At("data.csv.3"));
  const auto fail = [](const std::string&) { return false; };
  EXPECT_EQ(TakeNumberedName(At("data.csv"), files, fail), "");
}

}  // namespace
}  // namespace Hovar
