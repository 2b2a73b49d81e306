#include "app/launcher/definition_text.h"

#include <gtest/gtest.h>

#include "app/definitions.h"
#include "blackbox/tiny_study.h"
#include "support/streams.h"

namespace Hovar {
namespace {

TEST(DefinitionTextTest, ElementsStandWithTheirPathsValuesAndPlaces) {
  const DefinitionText text(
      "<?xml version=\"1.0\"?>\n<!-- <Root> -->\n<Root a=\"<b>\">\n"
      "<Group><Leaf> x y\n</Leaf></Group><Leaf>z</Leaf  >\n</Root>rest");
  EXPECT_EQ(text.Root(), "Root");
  EXPECT_TRUE(text.IsComplete());
  EXPECT_EQ(text.Value("Group/Leaf"), " x y\n");
  EXPECT_EQ(text.Value("Leaf"), "z");
  EXPECT_EQ(text.Value("None"), "");
  ASSERT_NE(text.Find("Leaf"), nullptr);
  EXPECT_EQ(text.Bytes().substr(text.Find("Leaf")->offset, 2), "z<");
}

TEST(DefinitionTextTest, CommentsBehindAValueDoNotBelongToIt) {
  const DefinitionText text("<A><Steps>500<!-- <Steps>7</Steps> --></Steps><!----><B>1</B></A>");
  EXPECT_TRUE(text.IsComplete());
  EXPECT_EQ(text.Integer("Steps"), 500);
  EXPECT_EQ(text.Integer("B"), 1);
}

TEST(DefinitionTextTest, AttributesAreReadToTheirEnd) {
  const DefinitionText text("<A><Seed b=\"x>\" xsi:type=\"Randomize\" /><C>2</C></A>");
  ASSERT_NE(text.Find("Seed"), nullptr);
  EXPECT_EQ(text.Find("Seed")->type, "Randomize");
  EXPECT_EQ(text.Value("C"), "2");
}

TEST(DefinitionTextTest, ABrokenFileIsReadAsFarAsItGoes) {
  const std::string whole = Testing::AnalysisText();
  for (std::size_t length = 0; length < whole.size() - 2; ++length) {
    const DefinitionText text(whole.substr(0, length));
    EXPECT_FALSE(text.IsComplete()) << length;
    const std::string value = text.Value("Output/Folder");
    EXPECT_TRUE(std::string("out").starts_with(value)) << value;
  }
  for (const char* text : {"", "<", "<A", "<A>x", "<A></B>", "plain", "<A b=c></A>", "<A b=\"",
                           "</A>", "<!-- ", "<A><!--", "<?xml"}) {
    EXPECT_FALSE(DefinitionText(text).IsComplete()) << text;
  }
}

TEST(DefinitionTextTest, ValuesAreThoseThatTheProgramReads) {
  const std::string text = Testing::AnalysisText();
  const DefinitionText scanned(text);
  const Testing::InputStream stream(text);
  Vell::XmlReader reader(stream.Handle());
  reader.ReadTag();
  const AnalysisDefinition read = ReadAnalysisDefinition(reader);
  EXPECT_EQ(scanned.Value("Input/Data"), read.data.View());
  EXPECT_EQ(scanned.Value("Output/Folder"), read.folder.View());
  EXPECT_EQ(scanned.Value("Output/RegressionCoefficients"), read.regressionCoefficients.View());
  EXPECT_EQ(scanned.Value("Output/McmcSubFolder"), read.mcmcSubFolder.View());
  EXPECT_EQ(scanned.Value("Output/LogFile"), read.logFile.View());
  EXPECT_EQ(scanned.Integer("Mcmc/Thinning"), read.mcmc.thinning);
}

TEST(LeadingIntegerTest, IsWhatTheProgramReads) {
  EXPECT_EQ(LeadingInteger(" \t\n12 "), "12");
  EXPECT_EQ(LeadingInteger("-7x"), "-7");
  EXPECT_EQ(LeadingInteger("+7.5"), "+7");
  for (const char* text : {"", " ", "x1", "-", "+ 1", ".5"}) {
    EXPECT_EQ(LeadingInteger(text), "") << text;
  }
}

TEST(WithValuesTest, OnlyTheValuesChange) {
  const DefinitionText text("<A>\n <B>one</B><!-- one -->\n <C></C> <D>3</D>\n</A>\n");
  EXPECT_EQ(
      WithValues(text, {{text.Find("B"), "longer"}, {text.Find("C"), "c"}, {text.Find("D"), ""}}),
      "<A>\n <B>longer</B><!-- one -->\n <C>c</C> <D></D>\n</A>\n");
  EXPECT_EQ(WithValues(text, {}), text.Bytes());
}

}  // namespace
}  // namespace Hovar
