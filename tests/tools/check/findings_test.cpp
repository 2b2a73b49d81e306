#include "tools/check/findings.h"

#include <gtest/gtest.h>

namespace {

using Hovar::Findings;
using Hovar::Weight;

TEST(CheckFindingsTest, ErrorsComeFirstThenFilesInTheirOrderAndLinesInTheirs) {
  Findings findings;
  findings.AddWarning("b.xml", {3, 1}, "Three.");
  findings.AddError("a.csv", {9, 9}, "Nine.");
  findings.AddError("b.xml", {2, 7}, "Two, seven.");
  findings.AddWarning("b.xml", {2, 5}, "Two, five.");
  findings.AddWarning("b.xml", {3, 1}, "Three again.");
  findings.AddWarning("a.csv", {1, 1}, "One.");
  EXPECT_EQ(findings.Lines(),
            "b.xml:2:7: error: Two, seven.\n"
            "a.csv:9:9: error: Nine.\n"
            "b.xml:2:5: warning: Two, five.\n"
            "b.xml:3:1: warning: Three.\n"
            "b.xml:3:1: warning: Three again.\n"
            "a.csv:1:1: warning: One.\n");
  EXPECT_EQ(findings.Errors(), 2);
  EXPECT_EQ(findings.Warnings(), 4);
  EXPECT_EQ(findings.Summary(), "2 errors, 4 warnings\n");
}

TEST(CheckFindingsTest, TheHeavierWarningsComeFirst) {
  Findings findings;
  findings.AddWarning("a", {1, 1}, "Harmless.", Weight::kHarmless);
  findings.AddWarning("a", {2, 1}, "Files.", Weight::kFiles);
  findings.AddWarning("a", {3, 2}, "Results.", Weight::kResults);
  findings.AddWarning("a", {3, 1}, "Unweighed.");
  findings.AddWarning("b", {1, 1}, "Files of b.", Weight::kFiles);
  findings.AddWarning("b", {1, 1}, "Results of b.", Weight::kResults);
  EXPECT_EQ(findings.Lines(),
            "a:3:1: warning: Unweighed.\n"
            "a:3:2: warning: Results.\n"
            "b:1:1: warning: Results of b.\n"
            "a:2:1: warning: Files.\n"
            "b:1:1: warning: Files of b.\n"
            "a:1:1: warning: Harmless.\n");
}

TEST(CheckFindingsTest, TheSameFindingIsToldOnce) {
  Findings findings;
  for (int i = 0; i < 2; ++i) {
    findings.AddError("a", {1, 1}, "Text.");
    findings.AddWarning("a", {1, 1}, "Text.");
  }
  EXPECT_EQ(findings.Lines(), "a:1:1: error: Text.\na:1:1: warning: Text.\n");
  EXPECT_EQ(findings.Summary(), "1 error, 1 warning\n");
}

TEST(CheckFindingsTest, FindingsThatDifferInOneThingAreTwo) {
  Findings findings;
  findings.AddError("a", {1, 1}, "Text.");
  findings.AddWarning("a", {1, 1}, "Text.");
  findings.AddError("b", {1, 1}, "Text.");
  findings.AddError("a", {2, 1}, "Text.");
  findings.AddError("a", {1, 2}, "Text.");
  findings.AddError("a", {1, 1}, "Other.");
  EXPECT_EQ(findings.Summary(), "5 errors, 1 warning\n");
}

TEST(CheckFindingsTest, NothingFound) {
  EXPECT_EQ(Findings().Lines(), "");
  EXPECT_EQ(Findings().Summary(), "0 errors, 0 warnings\n");
}

TEST(CheckFindingsTest, QuotedTextsStayOnOneShortLine) {
  EXPECT_EQ(Hovar::Quoted(""), "\"\"");
  EXPECT_EQ(Hovar::Quoted("a\tb\r\n\x01\x7F"), "\"a\\tb\\r\\n\\x01\\x7f\"");
  EXPECT_EQ(Hovar::Quoted("Z\xC3\xBCrich"), "\"Z\xC3\xBCrich\"");
  EXPECT_EQ(Hovar::Quoted(std::string(60, 'x')), '"' + std::string(60, 'x') + '"');
  EXPECT_EQ(Hovar::Quoted(std::string(61, 'x')), '"' + std::string(60, 'x') + "...\"");
}

TEST(CheckFindingsTest, ALineBreakInAFileNameStaysOnItsLine) {
  Findings findings;
  findings.AddError("a\nb", {1, 1}, "Text.");
  EXPECT_EQ(findings.Lines(), "a\\nb:1:1: error: Text.\n");
}

}  // namespace
