#include "tools/support/shown_path.h"

#include <gtest/gtest.h>

#include "foundation/io/platform/platform.h"

namespace {

using Hovar::PastablePath;
using Hovar::ShownPath;

TEST(ShownPathTest, PathsCanBePastedIntoAShell) {
  if (Vell::IO::Platform::FolderSeparator() == '\\') {
    EXPECT_EQ(ShownPath("a b\\c/d"), "a b\\c/d");
    EXPECT_EQ(PastablePath("a\\c.log"), "a\\c.log");
    EXPECT_EQ(PastablePath("a b\\c"), "\"a b\\c\"");
    return;
  }
  EXPECT_EQ(ShownPath("a b\\c/d"), "a b/c/d");
  EXPECT_EQ(PastablePath("results\\chain-1\\a.log.output.txt"), "results/chain-1/a.log.output.txt");
  EXPECT_EQ(PastablePath("Z\xC3\xBCrich\\a"), "Z\xC3\xBCrich/a");
  EXPECT_EQ(PastablePath("my results\\a"), "'my results/a'");
  EXPECT_EQ(PastablePath("a$b;c"), "'a$b;c'");
  EXPECT_EQ(PastablePath("it's"), "'it'\\''s'");
  EXPECT_EQ(PastablePath(""), "''");
  EXPECT_EQ(PastablePath("it's\na\x1b\\b"), "$'it\\'s\\na\\x1b/b'");
  EXPECT_EQ(Hovar::ShellWord("a\\b"), "'a\\b'");
  EXPECT_EQ(Hovar::ShellWord("a\\b\n"), "$'a\\\\b\\n'");
}

}  // namespace
