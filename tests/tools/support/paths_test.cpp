#include "tools/support/paths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tools/support/text.h"

namespace {

using Hovar::NormalPath;

TEST(PathsTest, OnePathForAllSpellings) {
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

TEST(PathsTest, RelativePathsBeginInTheCurrentFolder) {
  const std::string here = NormalPath(std::filesystem::current_path().string());
  EXPECT_EQ(NormalPath("."), here);
  EXPECT_EQ(NormalPath(""), here);
  EXPECT_EQ(NormalPath("a\\b"), here + "/a/b");
  EXPECT_EQ(NormalPath("a/../b"), here + "/b");
}

TEST(PathsTest, OnlyCapitalsOfAsciiBecomeSmall) {
  EXPECT_EQ(Hovar::LowerCase("AZaz09[@`{\xC3\x84"), "azaz09[@`{\xC3\x84");
}

}  // namespace
