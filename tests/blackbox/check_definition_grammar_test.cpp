// `hovar --check` and the program agree on the grammar of definitions: both take the good ones and
// stop at the bad ones, and the check names the place: the line and the column that an editor would
// show.

#include <gtest/gtest.h>

#include "check_runs.h"
#include "support/definition_tags.h"

namespace Testing {
namespace {

TEST(CheckDefinitionGrammarTest, GoodDefinitionsOfAllKinds) {
  ExpectRows({
      {"analysis", AnalysisText(), {}, ""},
      {"prediction", PredictionText(), {}, ""},
      {"validation", ValidationText(), {}, ""},
      {"empty batch", BatchText({}), {}, ""},
      {"batch", BatchText({"analysis.xml", "prediction.xml", "validation.xml"}), {}, ""},
      {"declaration", "<?xml version=\"1.0\"?>\n" + AnalysisText(), {}, ""},
      {"carriage returns", Replaced(AnalysisText(), "<Input>\n", "<Input>\r\n"), {}, ""},
  });
}

TEST(CheckDefinitionGrammarTest, AttributesOfTheRootMeanNothing) {
  for (const std::string& text :
       {AnalysisText(), PredictionText(), ValidationText(), BatchText({"prediction.xml"})}) {
    const std::string schema =
        " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xsi:noNamespaceSchemaLocation=\"../../share/hovar/hovar-definition.xsd\">";
    ExpectRows({{"schema", Replaced(text, ">", schema), {}, ""}});
  }
}

TEST(CheckDefinitionGrammarTest, TheRootAndWhatIsAroundIt) {
  const std::string analysis = AnalysisText();
  ExpectRows({
      {"byte order mark", "\xEF\xBB\xBF" + analysis, {}, "d.xml:1:1"},
      {"empty", "", {}, "d.xml:1:1"},
      {"no XML", "Key,Hospital\n", {}, "d.xml:1:1"},
      {"a declaration alone", "<?xml version=\"1.0\"?>\n", {}, "d.xml:2:1"},
      Changed(analysis, "<Analysis>", "<analysis>", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "<Analysis a='b'>", "d.xml:1:13"),
      Changed(analysis, "<Analysis>", "<Analysis a>", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "<Analysis a=\"1\" a=\"2\">", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "<Analysis /x>", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "<Analysis ?>", "d.xml:1:11"),
      Changed(analysis, "<Analysis>", "<>", "d.xml:1:1"),
      Changed(analysis, "<Analysis>", "</ x>", "d.xml:1:4"),
      Changed(analysis, "<Analysis>", "< x>", "d.xml:1:1"),
      {"an end without >", "<?xml version=\"1.0\"?x>\n" + analysis, {}, "d.xml:1:21"},
      {"an end without ?", "<?xml version=\"1.0\">\n" + analysis, {}, "d.xml:1:20"},
      {"a declaration without a blank",
       "<?foo?>\n" + analysis,
       {},
       "d.xml:1:6: error: A blank is required between the name of a declaration and ?>. Add one."},
      {"a declaration with a blank", "<?foo ?>\n" + analysis, {}, ""},
      Changed(analysis, "</Analysis>", "</Analyses>", "d.xml:39:1"),
      Changed(analysis, "</Analysis>", "", "d.xml:40:1"),
      {"text after the root", analysis + "text", {}, ""},
      {"a document type", "<!DOCTYPE Analysis>\n" + analysis, {}, "d.xml:1:1"},
      {"an end tag as the root", "</Analysis>" + analysis.substr(10), {}, ""},
  });
}

TEST(CheckDefinitionGrammarTest, Elements) {
  const std::string analysis = AnalysisText();
  ExpectRows({
      Changed(analysis, "<Data>", "<data>", "d.xml:3:1"),
      Changed(analysis, "<Data>", "<DataFile>", "d.xml:3:1"),
      Changed(analysis, "<Data>", "<DataFile/>", "d.xml:3:1"),
      Changed(analysis, "<Data>", "<Data a=\"b\">", "d.xml:3:7"),
      Changed(analysis, "<Data>data.csv</Data>", "<Data/>", "d.xml:3:1"),
      Changed(analysis, "<Data>data.csv</Data>", "<Data />", "d.xml:3:1"),
      Changed(analysis, "<Data>data.csv</Data>\n", "", "d.xml:3:1"),
      Changed(analysis, "</Data>", "", "d.xml:4:1"),
      Changed(analysis, "</Data>", "</Date>", "d.xml:3:15"),
      Changed(analysis, "<Data>", "<Title>x</Title>\n<Data>", "d.xml:3:1"),
      Changed(analysis, "<Input>\n", "<Input>\n  text\n", "d.xml:3:3"),
      Changed(analysis, "<Input>\n", "<Input><!-- fine -->\n"),
      Changed(analysis, "<Input>", "<Input <!-- no -->>", "d.xml:2:8"),
      Changed(analysis, "<Data>", "<?xml version=\"1.0\"?><Data>", "d.xml:3:1"),
      {"no Mcmc", Replaced(PredictionText(), "<Mcmc>", "</Prediction>"), {}, "d.xml:13:1"},
  });
}

TEST(CheckDefinitionGrammarTest, NumbersFlagsAndSeeds) {
  const std::string analysis = AnalysisText();
  ExpectRows({
      Changed(analysis, ">1<", ">many<", "d.xml:4:24"),
      Changed(analysis, ">1<", "><", "d.xml:4:24"),
      Changed(analysis, ">1<", ">1.5<", "d.xml:4:24"),
      Changed(analysis, ">1<", ">1e3<", "d.xml:4:24"),
      Changed(analysis, ">1<", "> 1 <"),
      Changed(analysis, ">1<", ">\n x<", "d.xml:5:2"),
      Changed(analysis, ">1e-9<", ">1,5<", "d.xml:15:12"),
      Changed(analysis, ">1e-9<", ">small<", "d.xml:15:12"),
      Changed(analysis, ">false<", ">False<", "d.xml:13:36"),
      Changed(analysis, ">false<", "> false<", "d.xml:13:36"),
      Changed(analysis, ">false<", "><", "d.xml:13:36"),
      Changed(analysis, "xsi:type=\"Vector\"", "xsi:type=\"Other\"", "d.xml:29:1"),
      Changed(analysis, " xsi:type=\"Vector\"", "", "d.xml:29:1"),
      Changed(analysis, "<Seed xsi:type=\"Vector\">", "<Seed xsi:type=\"Vector\" />", "d.xml:29:1"),
      Changed(analysis, "<Element>3</Element>", "<Element>x</Element>", "d.xml:31:10"),
      Changed(analysis, "<Element>3</Element>", "<Element>3x</Element>", "d.xml:31:10"),
      Changed(analysis, "<Element>3</Element>\n", "", "d.xml:32:1"),
      {"the file ends in a number",
       analysis.substr(0, analysis.find("0</Steps>") + 1),
       {},
       "d.xml:37:9"},
  });
}

TEST(CheckDefinitionGrammarTest, NulBytes) {
  const std::string analysis = AnalysisText();
  ExpectRows({
      {"NUL in a name", Replaced(analysis, "<Data>", std::string("<D\0ta>", 6)), {}, "d.xml:3:3"},
      {"NUL in an attribute",
       Replaced(analysis, "<Analysis>", std::string("<Analysis \0=", 12)),
       {},
       "d.xml:1:11"},
      {"NUL in a text", Replaced(analysis, "data.csv", std::string("da\0ta", 5)), {}, "d.xml:3:9"},
  });
}

TEST(CheckDefinitionGrammarTest, TheListOfABatch) {
  const std::string batch = BatchText({"prediction.xml"});
  ExpectRows({
      Changed(batch, "<Simulations>", "<Simulation>", "d.xml:2:1"),
      Changed(batch, "<Simulation>", "<Run>", "d.xml:3:1"),
      Changed(batch, "<Simulation>prediction.xml</Simulation>", "<Simulation />", "d.xml:3:1"),
      Changed(batch, "</Simulation>", "", "d.xml:4:1"),
      Changed(batch, "<Simulation>", "<Simulation a=\"b\">"),
  });
}

/// Every definition with one change at every tag, and cut at many places.
TEST(CheckDefinitionGrammarTest, ChangedAndCutDefinitions) {
  const TinyStudy study;
  for (const std::string& text :
       {AnalysisText(), PredictionText(), ValidationText(), BatchText({"prediction.xml"})}) {
    std::vector<std::string> variants;
    for (const DefinitionTag& tag : NamedTags(text)) {
      std::string misspelt = text;
      misspelt[tag.NamePlace()] = 'Q';
      std::string missing = text;
      missing.erase(tag.place, tag.end - tag.place);
      std::string longer = text;
      longer.insert(tag.end - 1, "s");
      variants.insert(variants.end(), {misspelt, missing, longer});
    }
    for (std::size_t length = 0; length < text.size() - 1; length += 17) {
      variants.push_back(text.substr(0, length));
    }
    for (const std::string& variant : variants) {
      SCOPED_TRACE(variant);
      study.Write("d.xml", variant);
      EXPECT_TRUE(HasError(ExpectAgreement(study)));
    }
  }
}

}  // namespace
}  // namespace Testing
