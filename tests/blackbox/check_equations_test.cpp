// `hovar --check` on generalized estimating equations: the draws of the chain are not fit for
// inference then, nor is what is made from them. A place is worked out by hand from the texts of
// the tiny study, one element a line.

#include <gtest/gtest.h>

#include <algorithm>

#include "check_runs.h"
#include "launcher_runs.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

constexpr char kFlag[] = "d.xml:13:36";
constexpr char kCoefficients[] = "d.xml:5:25";
constexpr char kRemedy[] =
    ". Take counts and expectations from a run with false, and standard errors of the four fits "
    "from a run with true and Steps 0.\n";

/// The coefficients of the tiny study with a standard error of the fifth block.
std::string CoefficientsWith(const std::string& modelError, const std::string& empiricalError) {
  const std::string row =
      Replaced(kModelRow, "-1.0986122886681098,,\n",
               "-1.0986122886681098," + modelError + "," + empiricalError + "\n");
  return std::string(kCoefficientHeader) + row;
}

/// The tiny study with a missing P, and with a variable whose X is missing in two records.
const std::string kWithoutP = Replaced(kClusteredData, "b,A,1,0\n", "b,A,1,\n");
const std::string kWithoutX = kHeader +
                              "a,A,1,1,1,1\nb,A,1,0,1,0\nc,A,0,0,0,1\nd,B,1,0,1,1\n"
                              "e,B,0,0,0,0\nf,B,0,0,0,\ng,B,1,0,1,\nh,C,0,0,1,0\ni,C,1,0,0,0\n"
                              "j,C,0,0,1,1\nk,D,0,0,0,0\nl,D,1,0,1,1\nm,D,0,0,1,0\n";

TEST(CheckEquationsTest, AnAnalysisThatDrawsIsWarnedOf) {
  ExpectWarnings({
      {Clustered(QuietAnalysis()),
       {{"data.csv", kClusteredData}},
       kFlag,
       "the draws of the chain are not fit for inference, nor is what is made from them: the fifth "
       "block, E[Y|X,P=0]-MCMC" +
           std::string(kRemedy)},
      {Clustered(QuietAnalysis()),
       {{"data.csv", kWithoutP}},
       kFlag,
       "the fifth block, E[Y|X,P=0]-MCMC; as P is missing in 1 record, also E[P|YPXZ], the "
       "observed "
       "E[Y|P=0], and E[Y|X,P=0] with its C-statistic" +
           std::string(kRemedy)},
  });
}

TEST(CheckEquationsTest, AMissingXDoesNotTouchWhatIsObserved) {
  const TinyStudy study;
  study.Write("data.csv", kWithoutX);
  study.Write("d.xml",
              Clustered(Replaced(QuietAnalysis(), "<PriorPrecision>0<", "<PriorPrecision>1<")));
  ExpectHolds(CheckDefinition(study).output,
              "E[Y|X,P=0]-MCMC; as an X is missing in 2 records, also E[P|X], and E[Y|X] and "
              "E[Y|X,P=0] with their C-statistics, but not the observed E[Y|P=0], as every P is "
              "known" +
                  std::string(kRemedy));
}

TEST(CheckEquationsTest, WithBothMissingAllIsNamed) {
  const TinyStudy study;
  // Record b lacks P, and f and g an X.
  study.Write("data.csv", Replaced(kWithoutX, "b,A,1,0,", "b,A,1,,"));
  study.Write("d.xml",
              Clustered(Replaced(QuietAnalysis(), "<PriorPrecision>0<", "<PriorPrecision>1<")));
  ExpectHolds(CheckDefinition(study).output,
              "E[Y|X,P=0]-MCMC; as P is missing in 1 record, also E[P|YPXZ] and the observed "
              "E[Y|P=0]; as an X is missing in 2 records, also E[P|X], and E[Y|X] and E[Y|X,P=0] "
              "with their C-statistics" +
                  std::string(kRemedy));
}

TEST(CheckEquationsTest, ABurninWithoutStepsMakesTheFifthBlock) {
  // The elements stand one a line; Burnin follows the parameters of the fits.
  const std::string definition = WithChain(Clustered(AnalysisText()), "1", "5", "0");
  const auto before = definition.substr(0, definition.find("<Burnin>"));
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  ExpectWarnings({{definition,
                   {{"data.csv", kClusteredData}},
                   "d.xml:" + std::to_string(line) + ":9",
                   "With Steps 0 the fifth block is made from the draws of the burn-in, which are "
                   "not fit for inference with generalized estimating equations. Also write Burnin "
                   "0.\n"}});
  const TinyStudy study;
  study.Write("d.xml", WithChain(Clustered(AnalysisText()), "1", "0", "0"));
  EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
}

TEST(CheckEquationsTest, TheDescriptionOfTheDataNamesBothColumnsToo) {
  const TinyStudy study;
  study.Write("data.csv", kWithoutP);
  study.Write("d.xml", Clustered(QuietAnalysis()));
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  ExpectHolds(output,
              "E[Y|X,P=0]-MCMC; as P is missing in 1 record, also E[P|YPXZ], the observed ");
  ExpectHolds(output, "P = 1: 2 (15.38 % of the known), missing: 1 (7.14 %)\n");
}

TEST(CheckEquationsTest, WithoutDataTheConditionIsNamed) {
  const TinyStudy study;
  fs::remove(study.Path() / "data.csv");
  study.Write("d.xml", Clustered(QuietAnalysis()));
  ExpectHolds(
      CheckDefinition(study).output,
      "E[Y|X,P=0]-MCMC; where P is missing, also E[P|YPXZ], the observed E[Y|P=0], and E[Y|X,P=0] "
      "with its C-statistic; where an X is missing, also E[P|X], and E[Y|X] and E[Y|X,P=0] with "
      "their C-statistics" +
          std::string(kRemedy));
}

TEST(CheckEquationsTest, WithoutStepsAnAnalysisHasNothingToWarnOf) {
  const TinyStudy study;
  study.Write("d.xml", Clustered(AnalysisText()));
  EXPECT_EQ(CheckDefinition(study, {"--strict", "d.xml"}).output, "0 errors, 0 warnings\n");
  // With false, no draws are too few.
  study.Write("d.xml", AnalysisText());
  ExpectHolds(CheckDefinition(study).output, "The chain keeps 0 draws, too few");
}

TEST(CheckEquationsTest, ARunThatTakesSuchCoefficientsIsWarnedOf) {
  const std::string coefficients = CoefficientsWith("", "0.5");
  for (const std::string& definition : {PredictionText(), ValidationText()}) {
    ExpectWarnings({
        {definition,
         {{"coefficients.csv", coefficients}},
         kCoefficients,
         "The coefficients come from generalized estimating equations. Not fit for inference are "
         "then the fifth block, E[Y|X,P=0]-MCMC. Name the coefficient file of an Analysis with "
         "false.\n"},
        {definition,
         {{"coefficients.csv", coefficients},
          {"data.csv", Replaced(kTinyData, "b,A,1,0\n", "b,A,1,\n")}},
         kCoefficients,
         "E[Y|X,P=0]-MCMC; as P is missing in 1 record, also E[P|YPXZ], the observed E[Y|P=0], and "
         "E[Y|X,P=0] with its C-statistic. Name "},
    });
  }
  for (const auto& [model, empirical] : {std::pair("0.5", ""), {"0.5", "0.5"}, {"", ""}}) {
    const TinyStudy study;
    study.Write("coefficients.csv", CoefficientsWith(model, empirical));
    study.Write("d.xml", PredictionText());
    EXPECT_EQ(CheckDefinition(study).output, "0 errors, 0 warnings\n");
  }
}

TEST(CheckEquationsTest, InABatchTheRunBeforeDecides) {
  const std::string prediction =
      Replaced(PredictionText(), ">coefficients.csv<", ">out/fitted.csv<");
  const TinyStudy study;
  study.Write("prediction.xml", prediction);
  study.Write("d.xml", BatchText({"analysis.xml", "prediction.xml"}));
  study.Write("analysis.xml", Clustered(AnalysisText()));
  std::string output = CheckDefinition(study).output;
  EXPECT_TRUE(output.starts_with("prediction.xml:5:25: warning: The coefficients come from "))
      << output;
  EXPECT_TRUE(output.ends_with("\n0 errors, 1 warning\n")) << output;
  // A file that is there now, from another run, would be overwritten by coefficients of `false`.
  study.Write("analysis.xml", QuietAnalysis());
  fs::create_directory(study.Path() / "out");
  study.Write("out/fitted.csv", CoefficientsWith("", "0.5"));
  output = CheckDefinition(study).output;
  EXPECT_EQ(output.find("estimating"), std::string::npos) << output;
}

TEST(CheckEquationsTest, TheExampleOfBothRunsHasNothingToWarnOf) {
  const ScratchFolder folder;
  for (const char* name : {"data.csv", "analysis.xml", "clustered.xml", "prediction.xml",
                           "validation.xml", "batch.xml"}) {
    fs::copy_file(fs::path(HOVAR_EXAMPLES) / "gee" / name, folder.Path() / name);
  }
  const ProcessResult check = CheckDefinition(folder, {"--strict", "batch.xml"});
  EXPECT_EQ(check.exitStatus, 0);
  EXPECT_EQ(check.output, "0 errors, 0 warnings\n");
}

}  // namespace
}  // namespace Testing
