#include "tools/check/paths.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using Hovar::NormalPath;

TEST(CheckOutputsTest, OnePathForAllSpellings) {
  for (const char* path :
       {"/a/b", "\\a\\b", "/a//b", "/a/./b/", "/a/c/../b", "/../a/b", "\\a/b\\"}) {
    EXPECT_EQ(NormalPath(path), "/a/b") << path;
  }
  EXPECT_EQ(NormalPath("/"), "/");
  EXPECT_EQ(NormalPath("/a/.."), "/");
  EXPECT_EQ(NormalPath("/a/..b"), "/a/..b");
  EXPECT_EQ(NormalPath("C:\\a\\..\\b"), "C:/b");
  EXPECT_NE(NormalPath("/a/B"), NormalPath("/a/b"));
}

TEST(CheckOutputsTest, RelativePathsBeginInTheCurrentFolder) {
  const std::string here = NormalPath(std::filesystem::current_path().string());
  EXPECT_EQ(NormalPath("."), here);
  EXPECT_EQ(NormalPath(""), here);
  EXPECT_EQ(NormalPath("a\\b"), here + "/a/b");
  EXPECT_EQ(NormalPath("a/../b"), here + "/b");
}

}  // namespace
