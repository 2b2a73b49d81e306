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
  // Without a byte that means something to a shell, but with one that is escaped.
  EXPECT_EQ(PastablePath("a\x9B.csv"), "$'a\\x9b.csv'");
  EXPECT_EQ(PastablePath("a\xE2\x80\xAE.csv"), "$'a\\xe2\\x80\\xae.csv'");
  EXPECT_EQ(Hovar::ShellWord("a\\b"), "'a\\b'");
  EXPECT_EQ(Hovar::ShellWord("a\\b\n"), "$'a\\\\b\\n'");
}

}  // namespace
