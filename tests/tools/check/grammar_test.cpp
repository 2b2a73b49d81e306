#include "tools/check/grammar.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace {

// The errors that definitions can make are tested with the program; here are those that say nothing
// about the definition, such as a size that no file in a test has.

TEST(CheckGrammarTest, AnErrorWithoutWordsOfItsOwnIsToldAsItIs) {
  const Testing::ScratchFolder folder;
  const Hovar::GrammarError error =
      Hovar::ExplainGrammarError(folder.Write("d.xml", "<Analysis>\n"), 11, "Integer overflow");
  EXPECT_EQ(error.offset, 11);
  EXPECT_EQ(error.text, "The program would end in \"Integer overflow\".");
}

TEST(CheckGrammarTest, AFileThatIsGoneIsNotExplained) {
  EXPECT_THROW(Hovar::ExplainGrammarError("/nowhere/d.xml", 40, "Unexpected end of stream"),
               Hovar::UnreadableFile);
}

}  // namespace
