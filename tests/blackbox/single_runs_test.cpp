// Whole runs of the tiny study against numbers worked by hand, and the sizes of a chain.

#include <gtest/gtest.h>

#include <sstream>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

std::string WithChain(const std::string& thinning, const std::string& burnin,
                      const std::string& steps) {
  std::string text = Replaced(AnalysisText(), "<Thinning>1<", "<Thinning>" + thinning + "<");
  text = Replaced(text, "<Burnin>0<", "<Burnin>" + burnin + "<");
  return Replaced(text, "<Steps>0<", "<Steps>" + steps + "<");
}

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) {
    ++count;
  }
  return count;
}

TEST(AnalysisRunTest, WritesTheFilesWorkedByHand) {
  const TinyStudy study;
  ExpectSuccess(RunHovar(study, {"analysis.xml"}),
                std::string(kTinyReading) + kTinyElimination + kTinyFits);
  EXPECT_EQ(study.Read("out/fitted.csv"), std::string(kCoefficientHeader) + kTinyCoefficients);
  EXPECT_EQ(study.Read("out/mcmc/Chain.csv"), "Step,BetaYX[0]\n");
  EXPECT_EQ(study.Read("out/mcmc/Summary.csv"), "");
  EXPECT_EQ(study.Read("out/analysis.log"), std::string(kTinyReadingLog) + kTinyElimination);
}

TEST(PredictionRunTest, WritesTheFilesWorkedByHand) {
  const TinyStudy study;
  ExpectSuccess(RunHovar(study, {"prediction.xml"}),
                std::string(kTinyReading) +
                    "Calculating individual predictions\n"
                    "Calculating hospital-aggregated predictions\n");
  EXPECT_EQ(study.Read("out/predicted.csv"), std::string(kIndividualHeader) +
                                                 "a,A,1,0.5,0.75,0,0,0,1,0.25,1\n"
                                                 "b,A,1,0.5,0.75,1,0.5,0.25,0,0.25,0\n"
                                                 "c,A,0,0.5,0.75,0,0.5,0.25,0,0.25,0\n"
                                                 "d,B,1,0.5,0.75,1,0.5,0.25,0,0.25,0\n"
                                                 "e,B,0,0.5,0.75,0,0.5,0.25,0,0.25,0\n"
                                                 "f,B,0,0.5,0.75,0,0.5,0.25,0,0.25,0\n");
  // Hospital A: Y 2/3, E[Y|P=0] 1/3, E[Y|X,P=0] (0 + 1/2 + 1/2) / 3, MCMC (0 + 1/4 + 1/4) / 3,
  // P 1/3. Hospital B: Y 1/3, no P.
  EXPECT_EQ(study.Read("out/hospital.csv"),
            "Hospital ID,Nr. records,Nr. non missing records,Nr. non missing records P=0,"
            "Y,E[Y|Z],E[Y|X],E[Y|P=0],\"E[Y|X,P=0]\",\"E[Y|X,P=0]-MCMC\",P,E[P|X],E[P|YPXZ]\n"
            "A,3,3,2,0.666667,0.5,0.75,0.333333,0.333333,0.166667,0.333333,0.25,0.333333\n"
            "B,3,3,3,0.333333,0.5,0.75,0.333333,0.5,0.25,0,0.25,0\n");
  EXPECT_EQ(study.Read("out/prediction.log"), kTinyReadingLog);
}

TEST(ValidationRunTest, WritesTheFilesWorkedByHand) {
  const TinyStudy study;
  ExpectSuccess(RunHovar(study, {"validation.xml"}),
                std::string(kTinyReading) + "Y|Z\nY|X\nP|X\nP|YPZX\n0/1\n");
  EXPECT_EQ(study.Read("out/cstatistics.csv"), kTinyStatistics);
  EXPECT_EQ(study.Read("out/validation.log"), kTinyReadingLog);
}

TEST(AnalysisRunTest, AChainKeepsEveryThinningthStep) {
  const TinyStudy study;
  const ProcessResult result = RunText(study, WithChain("2", "3", "7"));
  EXPECT_EQ(result.exitStatus, 0);
  const auto chain = ReadCsv(study.Path() / "out/mcmc/Chain.csv");
  ASSERT_EQ(chain.size(), 4U);
  EXPECT_EQ(chain[1][0], "2");
  EXPECT_EQ(chain[2][0], "4");
  EXPECT_EQ(chain[3][0], "6");
  const auto summary = ReadCsv(study.Path() / "out/mcmc/Summary.csv");
  ASSERT_EQ(summary.size(), 3U);
  EXPECT_EQ(summary[0], (std::vector<std::string>{"Variable", "Mean", "Variance", "Acceptance"}));
  EXPECT_EQ(summary[1], (std::vector<std::string>{"ImputeData", "0", "0", "0"}));
  EXPECT_EQ(summary[2][0], "BetaYX[0]");
  EXPECT_EQ(summary[2][3], "1.16667");  // 7 accepted steps over 3 kept ones times 2
  EXPECT_EQ(Count(result.output, "\nBurnin: "), 3);
  EXPECT_EQ(Count(result.output, "\nMcmc: "), 7);
  const std::string output = WithoutSeconds(result.output);
  EXPECT_NE(output.find("\n\nMCMC: 3 iterations in T seconds\n\nMcmc: 1 Intercept: "),
            std::string::npos);
  EXPECT_TRUE(output.ends_with(" \n\nMCMC: 7 iterations in T seconds\n\n")) << output;
  EXPECT_EQ(study.Read("out/analysis.log"), std::string(kTinyReadingLog) + kTinyElimination);
}

TEST(AnalysisRunTest, ABurninAloneLeavesAnEmptyChain) {
  const TinyStudy study;
  const ProcessResult result = RunText(study, WithChain("1", "4", "0"));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(study.Read("out/mcmc/Chain.csv"), "Step,BetaYX[0]\n");
  EXPECT_EQ(study.Read("out/mcmc/Summary.csv"), "");
  EXPECT_TRUE(WithoutSeconds(result.output).ends_with("\nMCMC: 4 iterations in T seconds\n\n"));
  // The fifth block holds the burn-in's mean, which is not 0.
  const auto rows = ReadCsv(study.Path() / "out/fitted.csv");
  EXPECT_NE(rows[1][18], "0");
}

TEST(AnalysisRunTest, OneKeptDrawHasNoVariance) {
  const TinyStudy study;
  EXPECT_EQ(RunText(study, WithChain("2", "0", "3")).exitStatus, 0);
  const auto chain = ReadCsv(study.Path() / "out/mcmc/Chain.csv");
  ASSERT_EQ(chain.size(), 2U);
  EXPECT_EQ(
      study.Read("out/mcmc/Summary.csv"),
      "Variable,Mean,Variance,Acceptance\nImputeData,0,0,0\nBetaYX[0]," + chain[1][1] + ",0,1.5\n");
  const auto rows = ReadCsv(study.Path() / "out/fitted.csv");
  EXPECT_EQ(rows[1][18], chain[1][1]);
  EXPECT_EQ(rows[1][19], "0");
  EXPECT_EQ(rows[1][20], "");
}

TEST(AnalysisRunTest, AThinningAboveTheStepsKeepsNothing) {
  const TinyStudy study;
  EXPECT_EQ(RunText(study, WithChain("9", "2", "3")).exitStatus, 0);
  EXPECT_EQ(study.Read("out/mcmc/Chain.csv"), "Step,BetaYX[0]\n");
  EXPECT_EQ(study.Read("out/mcmc/Summary.csv"),
            "Variable,Mean,Variance,Acceptance\nImputeData,0,0,0\nBetaYX[0],0,0,0\n");
}

TEST(AnalysisRunTest, AChainOfNoSizeIsRejected) {
  struct Row {
    const char* thinning;
    const char* burnin;
    const char* steps;
  };
  for (const Row& row : {Row{"0", "0", "0"}, Row{"0", "2", "3"}, Row{"-1", "0", "5"},
                         Row{"1", "-2", "-1"}, Row{"-2", "4", "0"}}) {
    SCOPED_TRACE(std::string(row.thinning) + " " + row.burnin + " " + row.steps);
    const TinyStudy study;
    ExpectError(RunText(study, WithChain(row.thinning, row.burnin, row.steps)), "Invalid argument",
                std::string(kTinyReading) + kTinyElimination + kTinyFits);
    EXPECT_FALSE(study.Has("out/mcmc"));
    EXPECT_FALSE(study.Has("out/fitted.csv"));
  }
}

TEST(AnalysisRunTest, ANegativeNumberOfStepsBesideABurninIsNone) {
  const TinyStudy study;
  EXPECT_EQ(RunText(study, WithChain("1", "2", "-5")).exitStatus, 0);
  EXPECT_EQ(study.Read("out/mcmc/Chain.csv"), "Step,BetaYX[0]\n");
  const TinyStudy other;
  EXPECT_EQ(RunText(other, WithChain("1", "-5", "2")).exitStatus, 0);
  EXPECT_EQ(ReadCsv(other.Path() / "out/mcmc/Chain.csv").size(), 3U);
}

TEST(AnalysisRunTest, FilesOfAnEarlierRunAreReplaced) {
  const TinyStudy study;
  const std::string old(5000, 'x');
  for (const char* name :
       {"out/fitted.csv", "out/mcmc/Chain.csv", "out/mcmc/Summary.csv", "out/analysis.log"}) {
    study.Write(name, old);
  }
  EXPECT_EQ(RunHovar(study, {"analysis.xml"}).exitStatus, 0);
  EXPECT_EQ(study.Read("out/fitted.csv"), std::string(kCoefficientHeader) + kTinyCoefficients);
  EXPECT_EQ(study.Read("out/mcmc/Chain.csv"), "Step,BetaYX[0]\n");
  EXPECT_EQ(study.Read("out/mcmc/Summary.csv"), "");
  EXPECT_EQ(study.Read("out/analysis.log"), std::string(kTinyReadingLog) + kTinyElimination);
}

TEST(AnalysisRunTest, AFitAtItsLimitWarnsBehindItsLabelAndGoesOn) {
  const TinyStudy study;
  const ProcessResult result =
      RunText(study, Replaced(AnalysisText(), "<MaxIterations>50<", "<MaxIterations>1<"));
  // [Y|Z] and [Y|X] start at their solution, 0.
  ExpectSuccess(result, std::string(kTinyReading) + kTinyElimination +
                            "Regression analysis\n[P|X]\nWarning: Maximum number of iterations "
                            "reached\n[Y|Z]\n[Y|X]\n[Y|X,P=0]\nWarning: Maximum number of "
                            "iterations reached\nMCMC Analysis\n");
  EXPECT_EQ(study.Read("out/analysis.log"), std::string(kTinyReadingLog) + kTinyElimination +
                                                "Warning: Maximum number of iterations reached\n"
                                                "Warning: Maximum number of iterations reached\n");
}

TEST(AnalysisRunTest, APriorThatOutweighsTheDataNegativelyIsRejected) {
  const TinyStudy study;
  ExpectError(
      RunText(study, Replaced(AnalysisText(), "<PriorPrecision>0<", "<PriorPrecision>-100<")),
      "Non positive matrix in Cholesky decomposition",
      std::string(kTinyReading) + kTinyElimination + "Regression analysis\n[P|X]\n");
  EXPECT_FALSE(study.Has("out/fitted.csv"));
}

TEST(AnalysisRunTest, AVariableWhoseKnownXHaveOneZHasNoTable) {
  // Z is 1 only where X is missing.
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,Z,X\n"
              "a,A,1,0,1,\n"
              "b,A,1,0,0,1\n"
              "c,A,0,0,0,0\n"
              "d,B,1,1,0,0\n");
  ExpectError(RunHovar(study, {"analysis.xml"}), "Cannot compute XZ table",
              "Reading data file...\n"
              "Number of records: 4\n"
              "Number of variables: 2\n"
              "Reading data...\n"
              "Hospital: A record: 0 / 4\n"
              "Hospital: B record: 3 / 4\n"
              "Number of hospitals: 2\n"
              "Counting non missing records:\n"
              "Number of non-missing records: 3\n"
              "Number of non-missing records with P = 0: 2\n" +
                  std::string(kTinyElimination) + "Regression analysis\n");
}

TEST(AnalysisRunTest, WithoutRecordsEveryColumnIsEliminated) {
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA,Z,X\n");
  const std::string noCounts =
      "Counting non missing records:\n"
      "Number of non-missing records: 0\n"
      "Number of non-missing records with P = 0: 0\n";
  ExpectError(RunHovar(study, {"analysis.xml"}), "Invalid argument",
              "Reading data file...\n"
              "Number of records: 0\n"
              "Number of variables: 2\n"
              "Reading data...\n"
              "Number of hospitals: 0\n" +
                  noCounts +
                  "Eliminating Z zero columns\n"
                  "Eliminating columns:\n"
                  "ZIntercept, XIntercept\n"
                  "Z, X\n"
                  "Number of variables: 0\n" +
                  noCounts +
                  "Eliminating X zero columns\n"
                  "Eliminating dependent Z columns\n"
                  "Eliminating dependent X columns P = 0\n"
                  "Regression analysis\n");
}

TEST(AnalysisRunTest, WithoutCompleteRecordsEveryColumnIsEliminated) {
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA,Z,X\na,A,1,,1,1\nb,A,0,,0,0\n");
  const std::string noCounts =
      "Counting non missing records:\n"
      "Number of non-missing records: 0\n"
      "Number of non-missing records with P = 0: 0\n";
  // Without columns no cell of X is missing, but P still is.
  ExpectError(RunHovar(study, {"analysis.xml"}), "Invalid argument",
              "Reading data file...\n"
              "Number of records: 2\n"
              "Number of variables: 2\n"
              "Reading data...\n"
              "Hospital: A record: 0 / 2\n"
              "Number of hospitals: 1\n" +
                  noCounts +
                  "Eliminating Z zero columns\n"
                  "Eliminating X zero columns\n"
                  "Eliminating columns:\n"
                  "ZIntercept, XIntercept\n"
                  "Z, X\n"
                  "Number of variables: 0\n" +
                  noCounts +
                  "Eliminating dependent Z columns\n"
                  "Eliminating dependent X columns P = 0\n"
                  "Regression analysis\n");
}

TEST(AnalysisRunTest, TheLogHoldsWhatStandardOutputGotFromIt) {
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,Z,Z0,X,X0\n"
              "a,A,0,1,0,0,0,1\n"
              "b,A,1,1,1,0,1,0\n"
              "c,A,0,0,1,0,0,1\n"
              "d,B,1,0,0,0,1,0\n"
              "e,B,0,0,0,0,0,1\n"
              "f,B,1,0,1,0,1,1\n");
  const ProcessResult result =
      RunText(study, Replaced(AnalysisText(), "<PriorPrecision>0<", "<PriorPrecision>1<"));
  EXPECT_EQ(result.exitStatus, 0);
  const std::string log = study.Read("out/analysis.log");
  EXPECT_NE(log.find("Warning: Y == 0 && P == 1 data in record: 0 - setting P equal to 0\n"),
            std::string::npos);
  EXPECT_NE(log.find("Eliminating columns:\nZ0, X0\n"), std::string::npos);
  // Every line of the log stands on standard output, in the same order.
  std::istringstream lines(log);
  std::size_t place = 0;
  for (std::string line; std::getline(lines, line);) {
    place = result.output.find(line + "\n", place);
    ASSERT_NE(place, std::string::npos) << line;
    place += line.size() + 1;
  }
  for (const char* direct :
       {"Target platform", "Reading data", "Hospital: ", "Regression analysis", "[P|X]", "Press"}) {
    EXPECT_EQ(log.find(direct), std::string::npos) << direct;
  }
}

}  // namespace
}  // namespace Testing
