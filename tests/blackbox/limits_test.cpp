// Numbers near the limits of 32-bit integers, sizes that they cannot hold, and the guards that are
// weak on purpose: each has its documented end, and none takes gigabytes on the way to it.

#include <gtest/gtest.h>

#include "progress.h"
#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

const std::string kAnalysisProgress = std::string(kTinyReading) + kTinyElimination + kTinyFits;

// Definition values

TEST(IntegerLimitTest, CountsOfIterationsNeedNoRoom) {
  // Every fit converges long before the limit; below 1 one step is made and warned of.
  const TinyStudy study;
  ExpectSuccess(RunText(study, WithValues(AnalysisText(), {{"MaxIterations", "2147483647"}})),
                kAnalysisProgress);
  EXPECT_EQ(study.Read("out/fitted.csv"), std::string(kCoefficientHeader) + kTinyCoefficients);
  const std::string warning = "Warning: Maximum number of iterations reached\n";
  for (const char* limit :
       // The last three are -2147483648, 0 and -1 in the low 32 bits of 64.
       {"-2147483648", "-1", "0", "1", "2147483648", "4294967296", "99999999999999999999"}) {
    SCOPED_TRACE(limit);
    std::string fits = Replaced(kTinyFits, "[P|X]\n", "[P|X]\n" + warning);
    fits = Replaced(fits, "[Y|X,P=0]\n", "[Y|X,P=0]\n" + warning);
    // The two fits that begin at their solution are warned of too when 0 steps are too many.
    if (limit != std::string("1")) {
      fits = Replaced(fits, "[Y|Z]\n", "[Y|Z]\n" + warning);
      fits = Replaced(fits, "[Y|X]\n", "[Y|X]\n" + warning);
    }
    ExpectSuccess(RunText(study, WithValues(AnalysisText(), {{"MaxIterations", limit}})),
                  std::string(kTinyReading) + kTinyElimination + fits);
  }
}

TEST(IntegerLimitTest, AThinningThatNoPhaseReachesKeepsNothing) {
  for (const char* thinning : {"2147483647", "-2147483648", "-2147483647"}) {
    SCOPED_TRACE(thinning);
    const TinyStudy study;
    const ProcessResult result = RunText(
        study,
        WithValues(AnalysisText(), {{"Thinning", thinning}, {"Burnin", "2"}, {"Steps", "3"}}));
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(study.Read("out/mcmc/Chain.csv"), "Step,BetaYX[0]\n");
    EXPECT_EQ(study.Read("out/mcmc/Summary.csv"),
              "Variable,Mean,Variance,Acceptance\nImputeData,0,0,0\nBetaYX[0],0,0,0\n");
  }
}

TEST(IntegerLimitTest, CountsOfStepsAreTheirLow32Bits) {
  struct Row {
    const char* steps;
    std::size_t lines;  // of the chain file
  };
  for (const Row& row :
       {Row{"4294967299", 4}, Row{"4294967296", 1}, Row{"-4294967294", 3}, Row{"-2147483648", 1},
        Row{"99999999999999999999", 1}, Row{"-99999999999999999999", 1}}) {
    SCOPED_TRACE(row.steps);
    const TinyStudy study;
    const ProcessResult result = RunText(study, WithValues(AnalysisText(), {{"Steps", row.steps}}));
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(ReadCsv(study.Path() / "out/mcmc/Chain.csv").size(), row.lines);
  }
}

TEST(IntegerLimitTest, AChainOfNegativeSizeIsRejected) {
  struct Row {
    const char* thinning;
    const char* burnin;
    const char* steps;
  };
  for (const Row& row :
       {Row{"1", "-2147483648", "-2147483648"}, Row{"-1", "-2147483648", "-2147483648"},
        Row{"-1", "2147483647", "0"}, Row{"-2147483647", "0", "2147483647"}}) {
    SCOPED_TRACE(std::string(row.thinning) + " " + row.burnin + " " + row.steps);
    const TinyStudy study;
    ExpectError(RunText(study, WithValues(AnalysisText(), {{"Thinning", row.thinning},
                                                           {"Burnin", row.burnin},
                                                           {"Steps", row.steps}})),
                "Invalid argument", kAnalysisProgress);
    EXPECT_FALSE(study.Has("out/mcmc"));
  }
}

TEST(IntegerLimitTest, CompleteDataNeedNoPassesHoweverManyAreAskedFor) {
  for (const char* count : {"2147483647", "-2147483648", "7"}) {
    SCOPED_TRACE(count);
    const TinyStudy study;
    const std::vector<std::pair<std::string, std::string>> values = {{"Burnin", count},
                                                                     {"Steps", count}};
    ExpectSuccess(RunText(study, WithValues(PredictionText(), values)),
                  std::string(kTinyReading) +
                      "Calculating individual predictions\n"
                      "Calculating hospital-aggregated predictions\n");
    ExpectSuccess(RunText(study, WithValues(ValidationText(), values)),
                  std::string(kTinyReading) + "Y|Z\nY|X\nP|X\nP|YPZX\n0/1\n");
    EXPECT_EQ(study.Read("out/cstatistics.csv"), kTinyStatistics);
  }
}

TEST(IntegerLimitTest, SeedsAreTheirLow32Bits) {
  const auto chain = [](const std::string& seed) {
    const TinyStudy study;
    RunText(study, WithValues(AnalysisText(), {{"Element", seed}, {"Steps", "3"}}));
    return study.Read("out/mcmc/Chain.csv");
  };
  EXPECT_EQ(chain("4294967299"), chain("3"));
  EXPECT_EQ(chain("4294967296"), chain("1"));  // 0 counts as 1
  EXPECT_EQ(chain("18446744073709551615"), chain("4294967295"));
  EXPECT_EQ(chain("99999999999999999999"), chain("4294967295"));
  EXPECT_EQ(chain("2147483648"), chain("-2147483648"));
  EXPECT_NE(chain("2147483648"), chain("4294967295"));
}

// Fields and columns

/// A file of one hospital whose lines have `fields` cells after the outcome: numbered names, and
/// then `records` times `cell` in all places.
std::string WideFile(int fields, int records, const std::string& cell) {
  std::string text = "Key,Hospital,Y";
  for (int field = 0; field < fields; ++field) {
    text += "," + std::to_string(field);
  }
  for (int i = 0; i < records; ++i) {
    text += "\nk,A,1";
    for (int field = 0; field < fields; ++field) {
      text += "," + cell;
    }
  }
  return text + "\n";
}

TEST(WideFileTest, AHundredThousandIndicatorsAreOneP) {
  const TinyStudy study;
  study.Write("data.csv", WideFile(100000, 2, "0"));
  ExpectSuccess(
      RunText(study, WithValues(PredictionText(), {{"NumberOfPoaIndicators", "100000"}})),
      OneHospital(2, 1, 2, 2) +
          "Calculating individual predictions\nCalculating hospital-aggregated predictions\n");
}

TEST(WideFileTest, AHundredThousandVariablesThatTheModelLacksAreDropped) {
  const TinyStudy study;
  study.Write("data.csv", WideFile(200000, 2, "1"));
  const ProcessResult result =
      RunText(study, WithValues(PredictionText(), {{"NumberOfPoaIndicators", "0"}}));
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_TRUE(result.output.starts_with(kBanner + OneHospital(2, 100001, 2, 2) +
                                        "Eliminating columns:\n0, 100000\n1, 100001\n"));
  EXPECT_NE(result.output.find("\n99999, 199999\nNumber of variables: 1\n"), std::string::npos);
}

// The counts of an elimination are a matrix of variables x variables cells, whose number is formed
// in 32 bits: 46341 and 65535 variables give a negative one, 65536 give 0. The matrix of such a
// size is refused or, where it would be too small for its rows, never made.
TEST(WideFileTest, CountsOfTooManyVariablesAreRefused) {
  struct Row {
    int variables;
    const char* error;
  };
  for (const Row& row : {Row{46341, "Invalid argument"}, Row{65535, "Invalid argument"},
                         Row{65536, "Integer overflow"}, Row{65537, "Integer overflow"}}) {
    SCOPED_TRACE(row.variables);
    const TinyStudy study;
    study.Write("data.csv", WideFile(2 * (row.variables - 1), 1, "1"));
    ExpectError(RunText(study, WithValues(AnalysisText(), {{"NumberOfPoaIndicators", "0"}})),
                row.error,
                OneHospital(1, row.variables, 1, 1) +
                    "Eliminating Z zero columns\nEliminating X zero columns\n"
                    "Eliminating dependent Z columns\n");
  }
}

// With a negative number of indicators a file has more variables than it has fields for.
TEST(IndicatorLimitTest, CellsOfRecordsTimesVariablesMustFitIn31Bits) {
  const TinyStudy study;
  std::string text = "Key,Hospital,Y\n";
  for (int i = 0; i < 2200; ++i) {
    text += "k,A,1\n";
  }
  study.Write("data.csv", text);
  // 2200 * 1,000,001 cells; 2140 * 1,000,001 are fewer than 2^31.
  ExpectError(RunText(study, WithValues(PredictionText(), {{"NumberOfPoaIndicators", "-2000000"}})),
              "Integer overflow", "Reading data file...\n" + SizeLines(2200, 1000001));
}

TEST(IndicatorLimitTest, ANegativeNumberIsRefusedBeforeTheFirstRecord) {
  const TinyStudy study;
  for (const auto& [number, variables] :
       {std::pair{"-2", 2}, std::pair{"-1000000", 500001}, std::pair{"-10000000", 5000001}}) {
    SCOPED_TRACE(number);
    study.Write("data.csv", "Key,Hospital,Y\nk,A,1\n");
    ExpectError(RunText(study, WithValues(PredictionText(), {{"NumberOfPoaIndicators", number}})),
                "Invalid argument", ReadingLines(1, variables));
  }
}

}  // namespace
}  // namespace Testing
