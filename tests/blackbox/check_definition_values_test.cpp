// `hovar --check` on the values of a definition's elements: those with which a run cannot go on, and
// those that surprise.

#include <gtest/gtest.h>

#include "check_runs.h"

namespace Testing {
namespace {

TEST(CheckDefinitionValuesTest, LengthOfAChain) {
  struct Chain {
    const char* thinning;
    const char* burnin;
    const char* steps;
    const char* place;  // in an analysis
  };
  for (const Chain& chain : {Chain{"0", "0", "0", "d.xml:35:11"},
                             {"0", "2", "3", "d.xml:35:11"},
                             {"-1", "0", "5", "d.xml:35:11"},
                             {"1", "-2", "-1", "d.xml:37:8"},
                             {"-2", "4", "0", "d.xml:35:11"},
                             {"1", "2", "-5", ""},
                             {"1", "-5", "2", ""},
                             {"-9", "2", "3", ""},
                             {"-1", "0", "0", ""},
                             {"9", "2", "3", ""},
                             {"3", "-2", "-1", ""}}) {
    ExpectRows(
        {{"chain",
          WithChain(AnalysisText(), chain.thinning, chain.burnin, chain.steps),
          {},
          chain.place},
         {"passes", WithChain(PredictionText(), chain.thinning, chain.burnin, chain.steps), {}, ""},
         {"passes",
          WithChain(ValidationText(), chain.thinning, chain.burnin, chain.steps),
          {},
          ""}});
  }
}

TEST(CheckDefinitionValuesTest, NothingToSay) {
  const TinyStudy study;
  study.Write("d.xml", QuietAnalysis());
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"d.xml"},
                                                    {"--strict", "d.xml"},
                                                    {"d.xml", "--strict"},
                                                    {"--strict", "prediction.xml"},
                                                    {"--strict", "validation.xml"}}) {
    const ProcessResult check = CheckDefinition(study, arguments);
    EXPECT_EQ(check.output, "0 errors, 0 warnings\n");
    EXPECT_EQ(check.exitStatus, 0);
  }
  for (const char* name : {"a&b.csv", "a;b&c.csv", "a b.csv"}) {
    study.Write("d.xml", Replaced(QuietAnalysis(), "fitted.csv", name));
    EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
  }
}

TEST(CheckDefinitionValuesTest, Values) {
  ExpectWarnings({
      Surprising("<Tolerance>1e-9<", "<Tolerance>0<", "d.xml:15:12", "A tolerance is above 0"),
      Surprising("<Tolerance>1e-9<", "<Tolerance>-1<", "d.xml:15:12", "A tolerance is above 0"),
      Surprising("<Tolerance>1e-8<", "<Tolerance>0<", "d.xml:18:12", "A tolerance is above 0"),
      Surprising("<Tolerance>1e-8<", "<Tolerance>inf<", "d.xml:18:12", "A tolerance is above 0"),
      Surprising("<MaxIterations>50<", "<MaxIterations>0<", "d.xml:19:16", "does the same as 1"),
      Surprising("<MaxIterations>50<", "<MaxIterations>-3<", "d.xml:19:16", "does the same as 1"),
      Surprising("<PriorPrecision>0<", "<PriorPrecision>-0.01<", "d.xml:20:17",
                 "A precision is 0 or more"),
      Surprising("<PriorPrecision>0<", "<PriorPrecision>inf<", "d.xml:20:17",
                 "A precision is 0 or more"),
      Surprising("<PriorPrecision>0<", "<PriorPrecision>nan<", "d.xml:20:17",
                 "A precision is 0 or more"),
      Surprising("<Burnin>2<", "<Burnin>-2<", "d.xml:36:9", "The count -2 is negative"),
      Surprising("<Steps>4<", "<Steps>-4<", "d.xml:37:8", "The count -4 is negative"),
      Surprising("<Steps>4<", "<Steps>1<", "d.xml:37:8", "The chain keeps 1 draw, too few"),
      Surprising("<Thinning>1<", "<Thinning>3<", "d.xml:37:8", "The chain keeps 1 draw, too few"),
      Surprising("<Thinning>1<", "<Thinning>9<", "d.xml:37:8", "The chain keeps 0 draws, too few"),
      Surprising("<Burnin>2<", "<Burnin>4294967298<", "d.xml:36:9", "outside its range"),
      Surprising("<Burnin>2<", "<Burnin>-4294967294<", "d.xml:36:9", "outside its range"),
      Surprising("<Element>5<", "<Element>-5<", "d.xml:32:10", "outside its range"),
      Surprising("<Element>5<", "<Element>4294967296<", "d.xml:32:10", "outside its range"),
      Surprising("<Element>5<", "<Element>99999999999999999999<", "d.xml:32:10",
                 "outside its range"),
      {Replaced(PredictionText(), "<Thinning>1<", "<Thinning>-1<"),
       {},
       "d.xml:20:11",
       "The thinning -1 is negative"},
  });
  const std::string vector = QuietAnalysis();
  const std::size_t first = vector.find("<Seed ");
  const std::size_t last = vector.find("<Thinning>");
  ExpectWarnings(
      {{vector.substr(0, first) + "<Seed xsi:type=\"Randomize\" />\n" + vector.substr(last),
        {},
        "d.xml:29:1",
        "The seed is taken from the clock"}});
}

TEST(CheckDefinitionValuesTest, Texts) {
  ExpectWarnings({
      Surprising(">fitted.csv<", "> fitted.csv<", "d.xml:8:25", "White space round the text"),
      Surprising(">fitted.csv<", ">fitted.csv <", "d.xml:8:25", "White space round the text"),
      Surprising(">fitted.csv<", ">a&amp;b.csv<", "d.xml:8:25", "Entities such as &amp;"),
  });
}

}  // namespace
}  // namespace Testing
