// Runs at the edges of their rules that succeed all the same: columns that are removed or kept,
// chains whose numbers are worked by hand.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "progress.h"
#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

std::string WithPrior(const std::string& precision) {
  return Replaced(AnalysisText(), "<PriorPrecision>0<", "<PriorPrecision>" + precision + "<");
}

std::size_t LinesOf(const TinyStudy& study, const std::string& file) {
  return ReadCsv(study.Path() / file).size();
}

// Columns

TEST(EliminationRunTest, ZeroColumnsGoWithTheirPartnersInTheFirstTwoStages) {
  // Z1 is 0 everywhere. X3 is 0 in all complete records, and missing in the other one, which is
  // complete without it.
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,Z1,Z2,Z3,X1,X2,X3\n"
              "a,A,1,1,0,1,0,1,0,0\n"
              "b,A,1,0,0,0,1,0,1,0\n"
              "c,A,0,0,0,1,1,1,0,0\n"
              "d,A,0,0,0,0,0,0,0,0\n"
              "e,A,1,0,0,1,0,0,1,\n"
              "f,A,0,0,0,0,1,1,1,0\n");
  ExpectSuccess(
      RunText(study, WithPrior("1")),
      OneHospital(6, 4, 5, 4) + "Eliminating Z zero columns\n" + RemovalLines("Z1, X1\n", 3, 5, 4) +
          "Eliminating X zero columns\n" + RemovalLines("Z3, X3\n", 2, 6, 5) +
          "Eliminating dependent Z columns\nEliminating dependent X columns P = 0\n" + kTinyFits);
  EXPECT_EQ(LinesOf(study, "out/fitted.csv"), 3U);
}

// X is 1 exactly where P is.
constexpr char kZeroWithoutP[] =
    "Key,Hospital,Y,POA,Z1,X1\n"
    "a,A,1,1,1,1\nb,A,1,1,0,1\nc,A,1,0,1,0\nd,A,0,0,0,0\ne,A,1,0,1,0\n";

TEST(EliminationRunTest, AColumnThatIsZeroOnlyWithoutPGoesInTheLastStage) {
  const TinyStudy study;
  study.Write("data.csv", kZeroWithoutP);
  ExpectSuccess(RunText(study, WithPrior("1")), OneHospital(5, 2, 5, 3) + kTinyElimination +
                                                    RemovalLines("Z1, X1\n", 1, 5, 3) +
                                                    "Check rank\n" + kTinyFits);
  EXPECT_EQ(LinesOf(study, "out/fitted.csv"), 2U);
}

// Such a column has the prior alone: the estimate 0 and the error 1 / sqrt(4).
TEST(EliminationRunTest, AToleranceBelowZeroKeepsAColumnThatThePriorEstimates) {
  const TinyStudy study;
  study.Write("data.csv", kZeroWithoutP);
  ExpectSuccess(RunText(study, Replaced(WithPrior("4"), "<Tolerance>1e-9<", "<Tolerance>-1<")),
                OneHospital(5, 2, 5, 3) + kTinyElimination + kTinyFits);
  const std::string fitted = study.Read("out/fitted.csv");
  EXPECT_NE(fitted.find(",0,0.5,,0,0,\n"), std::string::npos) << fitted;
}

TEST(EliminationRunTest, OneOfTwoEqualColumnsGoesAndNeverTheIntercept) {
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,Z1,Z2,X1,X2\n"
              "a,A,1,0,1,0,1,1\nb,A,0,0,0,1,0,0\nc,A,1,0,1,1,0,0\nd,A,0,0,0,0,1,1\n"
              "e,A,1,1,1,0,0,1\nf,A,0,0,0,0,1,1\n");
  const auto progress = [](const std::string& names) {
    return OneHospital(6, 3, 6, 5) + kTinyElimination + RemovalLines(names, 2, 6, 5) +
           "Check rank\n" + kTinyFits;
  };
  // Which of them is a matter of rounding.
  const ProcessResult result = RunText(study, WithPrior("1"));
  const bool isFirst = result.output.find("\nZ1, X1\n") != std::string::npos;
  ExpectSuccess(result, progress(isFirst ? "Z1, X1\n" : "Z2, X2\n"));
}

// Chains

// Without missing values each iteration is one fit, which is the same each time, and one normal
// deviate: log(2/3) + z / sqrt(6/5), with the deviates of the seed words 1 and 1.
TEST(ChainRunTest, CompleteDataTakeOneNormalForEachCoefficientAndIteration) {
  std::vector<double> deviates;
  for (const auto& row : ReadCsv(ReferenceFile("normal_deviates.csv"))) {
    if (row[0] == "1" && row[1] == "1") {
      deviates.push_back(std::stod(row[3]));
    }
  }
  const TinyStudy study;
  std::string text = Replaced(AnalysisText(), "<Element>3<", "<Element>1<");
  text = Replaced(text, "<Element>5<", "<Element>1<");
  text = Replaced(text, "<Burnin>0<", "<Burnin>2<");
  const ProcessResult result = RunText(study, Replaced(text, "<Steps>0<", "<Steps>8<"));
  std::string chain = "Step,BetaYX[0]\n";
  std::string progress = std::string(kTinyReading) + kTinyElimination + kTinyFits;
  for (int i = 0; i < 10; ++i) {
    std::array<char, 32> draw{};
    std::snprintf(draw.data(), draw.size(), "%g",
                  std::log(2.0 / 3) + deviates.at(static_cast<std::size_t>(i)) / std::sqrt(1.2));
    const bool isBurnin = i < 2;
    const std::string step = std::to_string(isBurnin ? i + 1 : i - 1);
    progress += (isBurnin ? "Burnin: " : "Mcmc: ") + step + " Intercept: " + draw.data() + " \n";
    if (i == 1) {
      progress += "\nMCMC: 2 iterations in T seconds\n\n";
    }
    chain += isBurnin ? "" : step + "," + draw.data() + "\n";
  }
  EXPECT_EQ(WithoutSeconds(result.output),
            kBanner + progress + "\nMCMC: 8 iterations in T seconds\n\n");
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(study.Read("out/mcmc/Chain.csv"), chain);
}

TEST(ChainRunTest, TenStepsThinnedByThreeKeepThree) {
  const TinyStudy study;
  const std::string text = Replaced(AnalysisText(), "<Thinning>1<", "<Thinning>3<");
  EXPECT_EQ(RunText(study, Replaced(text, "<Steps>0<", "<Steps>10<")).exitStatus, 0);
  const auto chain = ReadCsv(study.Path() / "out/mcmc/Chain.csv");
  ASSERT_EQ(chain.size(), 4U);
  EXPECT_EQ(chain[1][0] + chain[2][0] + chain[3][0], "369");
  // 10 accepted steps over 3 kept ones times 3.
  EXPECT_EQ(ReadCsv(study.Path() / "out/mcmc/Summary.csv").at(2).at(3), "1.11111");
}

// Predictions and validations

constexpr char kHospitalHeader[] =
    "Hospital ID,Nr. records,Nr. non missing records,Nr. non missing records P=0,"
    "Y,E[Y|Z],E[Y|X],E[Y|P=0],\"E[Y|X,P=0]\",\"E[Y|X,P=0]-MCMC\",P,E[P|X],E[P|YPXZ]\n";

std::string WithPasses(const std::string& text, const std::string& burnin,
                       const std::string& steps) {
  return Replaced(Replaced(text, "<Burnin>0<", "<Burnin>" + burnin + "<"), "<Steps>0<",
                  "<Steps>" + steps + "<");
}

// All X are missing and are imputed as what Z is, because the tables hold 0 and 1; all P are
// missing and stay 0 because their predictor is -1000. The other predictors are log(3) X, or
// -log(3) X for the chain's.
TEST(PredictionEdgeTest, WithoutACompleteRecordAllIsImputed) {
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA,Z1,X1\na,A,1,,1,\nb,A,0,,0,\nc,B,1,,0,\n");
  study.Write("coefficients.csv",
              kCoefficientHeader + std::string("XIntercept,ZIntercept,,,,,-1000,,,0,,,0,,,0,,,0,,\n"
                                               "X1,Z1,1,0,0,1,0,,,1.0986122886681098,,,"
                                               "1.0986122886681098,,,1.0986122886681098,,,"
                                               "-1.0986122886681098,,\n"));
  const std::string reading = ReadingLines(3, 2) + HospitalLine("A", 0, 3) +
                              HospitalLine("B", 2, 3) + "Number of hospitals: 2\n" +
                              CountLines(0, 0);
  ExpectSuccess(RunText(study, WithPasses(PredictionText(), "1", "2")),
                reading +
                    "Calculating individual predictions\n0/1\n1/2\n"
                    "Calculating hospital-aggregated predictions\n");
  EXPECT_EQ(study.Read("out/predicted.csv"),
            kIndividualHeader + std::string("a,A,1,0.75,0.75,1,0.75,0.25,,0,0\n"
                                            "b,A,0,0.5,0.5,0,0.5,0.5,,0,0\n"
                                            "c,B,1,0.5,0.5,1,0.5,0.5,,0,0\n"));
  EXPECT_EQ(study.Read("out/hospital.csv"),
            kHospitalHeader + std::string("A,2,0,0,0.5,0.625,0.625,0.5,0.625,0.375,,0,0\n"
                                          "B,1,0,0,1,0.5,0.5,1,0.5,0.5,,0,0\n"));
  ExpectSuccess(
      RunText(study, WithPasses(Replaced(ValidationText(), "individual.csv", "out/predicted.csv"),
                                "1", "2")),
      reading + "Y|Z\nY|X\nP|X\nP|YPZX\n0/1\n0/2\n1/2\n");
  // 0.75 and 0.5 against 0.5: 2 + 1 of 4; 0.25 and 0.5 against 0.5: 0 + 1 of 4.
  EXPECT_EQ(study.Read("out/cstatistics.csv"),
            "Estimate,C-Statistics\nE[Y|Z],0.75\nE[Y|X],0.75\n\"E[Y|X,P=0]\",0.75\n"
            "\"E[Y|X,P=0]-MCMC\",0.25\nE[P|X],-1\nE[P|YPXZ],-1\n");
}

TEST(PredictionEdgeTest, WithoutARecordTheFilesAreHeaders) {
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA\n");
  study.Write("individual.csv", kIndividualHeader);
  const std::string reading = ReadingLines(0, 1) + "Number of hospitals: 0\n" + CountLines(0, 0);
  ExpectSuccess(RunText(study, WithPasses(PredictionText(), "3", "3")),
                reading +
                    "Calculating individual predictions\n"
                    "Calculating hospital-aggregated predictions\n");
  EXPECT_EQ(study.Read("out/predicted.csv"), kIndividualHeader);
  EXPECT_EQ(study.Read("out/hospital.csv"), kHospitalHeader);
  ExpectSuccess(RunText(study, WithPasses(ValidationText(), "3", "3")),
                reading + "Y|Z\nY|X\nP|X\nP|YPZX\n0/1\n");
  EXPECT_EQ(study.Read("out/cstatistics.csv"),
            "Estimate,C-Statistics\nE[Y|Z],-1\nE[Y|X],-1\n\"E[Y|X,P=0]\",-1\n"
            "\"E[Y|X,P=0]-MCMC\",-1\nE[P|X],-1\nE[P|YPXZ],-1\n");
}

}  // namespace
}  // namespace Testing
