// Coefficient and prediction files as the input of predictions and validations.

#include <gtest/gtest.h>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

const std::string kPrefix = "XIntercept,ZIntercept,,,,,";
const std::string kIndividualProgress =
    std::string(kTinyReading) + "Calculating individual predictions\n";
const std::string kPredictionProgress =
    kIndividualProgress + "Calculating hospital-aggregated predictions\n";

ProcessResult PredictWith(const TinyStudy& study, const std::string& coefficients) {
  study.Write("coefficients.csv", coefficients);
  return RunHovar(study, {"prediction.xml"});
}

TEST(CoefficientInputTest, AnEstimateThatIsNoNumberEndsTooEarly) {
  const std::string header = kCoefficientHeader;
  for (const char* row : {",,,0,,,0,,,0,,,0,,\n", "x,,,0,,,0,,,0,,,0,,\n", "0,,,0,,,x,,,0,,,0,,\n",
                          "0,,,0,,,0,,,0,,,,,\n", "0,,,0,,,0,,,0,,,-,,\n", "NA,,,0,,,0,,,0,,,0,,\n",
                          // The row ends within a block.
                          "0,,,0,,,0,,\n", "0,,\n"}) {
    SCOPED_TRACE(row);
    const TinyStudy study;
    ExpectError(PredictWith(study, header + kPrefix + row), "Unexpected end of stream",
                kTinyReading);
    EXPECT_EQ(study.Read("out/prediction.log"), kTinyReadingLog);
    EXPECT_FALSE(study.Has("out/predicted.csv"));
  }
}

TEST(CoefficientInputTest, AnEmptyFileIsRejected) {
  const TinyStudy study;
  ExpectError(PredictWith(study, ""), "Invalid argument", kTinyReading);
}

TEST(CoefficientInputTest, StandardErrorsAreNotNeeded) {
  for (const char* row : {"0,,,0,,,0,,,0,,,0,,\n", "0,1,1,0,1,1,0,1,1,0,1,1,0,1,1\n",
                          "0,x,,0,-1,nan,0,,,0,,,0,,NA\n"}) {
    SCOPED_TRACE(row);
    const TinyStudy study;
    ExpectSuccess(PredictWith(study, kCoefficientHeader + kPrefix + row), kPredictionProgress);
  }
}

TEST(CoefficientInputTest, TheNamesOfTheHeaderAreNotRead) {
  const TinyStudy study;
  ExpectSuccess(PredictWith(study, "anything\n" + kPrefix + "0,,,0,,,0,,,0,,,0,,\n"),
                kPredictionProgress);
}

TEST(CoefficientInputTest, MoreVariablesThanTheDataIsAMismatch) {
  const std::string rows =
      std::string(kCoefficientHeader) + kModelRow + "X1,Z1,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
  const TinyStudy study;
  ExpectError(PredictWith(study, rows), "Variables mismatch", kTinyReading);
  ExpectError(RunHovar(study, {"validation.xml"}), "Variables mismatch", kTinyReading);
  EXPECT_FALSE(study.Has("out/predicted.csv"));
  EXPECT_FALSE(study.Has("out/cstatistics.csv"));
}

TEST(CoefficientInputTest, ALastLineWithoutItsEndIsNotRead) {
  // X1 is lost with it: two rows are left, and of the data the intercept.
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,Z1,X1\n"
              "a,A,1,0,1,1\n");
  ExpectError(PredictWith(study, std::string(kCoefficientHeader) + kModelRow +
                                     "X0,Z0,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n"
                                     "X1,Z1,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,"),
              "Variables mismatch",
              "Reading data file...\n"
              "Number of records: 1\n"
              "Number of variables: 2\n"
              "Reading data...\n"
              "Hospital: A record: 0 / 1\n"
              "Number of hospitals: 1\n"
              "Counting non missing records:\n"
              "Number of non-missing records: 1\n"
              "Number of non-missing records with P = 0: 1\n"
              "Eliminating columns:\n"
              "Z1, X1\n"
              "Number of variables: 1\n"
              "Counting non missing records:\n"
              "Number of non-missing records: 1\n"
              "Number of non-missing records with P = 0: 1\n");
}

TEST(CoefficientInputTest, VariablesThatTheModelLacksAreDropped) {
  const TinyStudy study;
  // The model has the X names XIntercept, XK and the Z names ZIntercept, ZV. Only the third of the
  // four variables has both its names there.
  study.Write("data.csv",
              "Key,Hospital,Y,POA,ZU,ZV,ZV,ZQ,XK,XV,XK,XQ\n"
              "a,A,1,0,1,0,1,0,1,1,1,1\n"
              "b,A,0,0,1,0,0,1,1,1,0,\n");
  const std::string model =
      std::string(kCoefficientHeader) + kModelRow + "XK,ZV,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";
  // The missing cell goes with its variable.
  const std::string log =
      "Number of records: 2\n"
      "Number of variables: 5\n"
      "Number of hospitals: 1\n"
      "Counting non missing records:\n"
      "Number of non-missing records: 1\n"
      "Number of non-missing records with P = 0: 1\n"
      "Eliminating columns:\n"
      "ZU, XK\n"
      "ZV, XV\n"
      "ZQ, XQ\n"
      "Number of variables: 2\n"
      "Counting non missing records:\n"
      "Number of non-missing records: 2\n"
      "Number of non-missing records with P = 0: 2\n";
  ExpectSuccess(
      PredictWith(study, model),
      Replaced(Replaced(log, "Number of records", "Reading data file...\nNumber of records"),
               "Number of hospitals",
               "Reading data...\nHospital: A record: 0 / 2\nNumber of hospitals") +
          "Calculating individual predictions\n"
          "Calculating hospital-aggregated predictions\n");
  EXPECT_EQ(study.Read("out/prediction.log"), log);
}

TEST(PredictionInputTest, AValueThatIsNoNumberEndsTooEarly) {
  for (const char* row :
       {"a,A,1,x,0.75,0,0,0,1,0.3,1\n", "a,A,1,0.9,,0,0,0,1,0.3,1\n",
        "a,A,1,0.9,0.75,0,-,0,1,0.3,1\n", "a,A,1,0.9,0.75,0,0,NA,1,0.3,1\n",
        "a,A,1,0.9,0.75,0,0,0,1,.,1\n", "a,A,1,0.9,0.75,0,0,0,1,0.3,e\n", "a,A,1,0.9,0.75,0\n"}) {
    SCOPED_TRACE(row);
    const TinyStudy study;
    study.Write("individual.csv",
                Replaced(study.Read("individual.csv"), "a,A,1,0.9,0.75,0,0,0,1,0.3,1\n", row));
    ExpectError(RunHovar(study, {"validation.xml"}), "Unexpected end of stream", kTinyReading);
  }
}

TEST(PredictionInputTest, TooFewPredictionsShowInTheFirstStatistic) {
  const TinyStudy study;
  const std::string rows = kIndividualRows;
  for (const std::string& fewer :
       {std::string(), rows.substr(0, rows.find("f,B")), rows.substr(0, rows.size() - 1)}) {
    study.Write("individual.csv", kIndividualHeader + fewer);
    ExpectError(RunHovar(study, {"validation.xml"}), "Index out of range",
                std::string(kTinyReading) + "Y|Z\n");
    EXPECT_FALSE(study.Has("out/cstatistics.csv"));
  }
}

TEST(PredictionInputTest, FurtherPredictionsAreIgnored) {
  const TinyStudy study;
  study.Write("individual.csv", study.Read("individual.csv") + "g,C,1,0,0,0,0,0,0,0,0\n");
  EXPECT_EQ(RunHovar(study, {"validation.xml"}).exitStatus, 0);
  EXPECT_EQ(study.Read("out/cstatistics.csv"), kTinyStatistics);
}

TEST(PredictionInputTest, KeysAndOutcomesAreNotRead) {
  const TinyStudy study;
  study.Write("individual.csv", Replaced(study.Read("individual.csv"), "a,A,1,0.9,0.75,0,0,0,1,",
                                         "\"x \"\"y\"\"\",,7, 0.9 z,0.75,text,0,0,,"));
  EXPECT_EQ(RunHovar(study, {"validation.xml"}).exitStatus, 0);
  EXPECT_EQ(study.Read("out/cstatistics.csv"), kTinyStatistics);
}

TEST(PredictionInputTest, AnEmptyFileIsRejected) {
  const TinyStudy study;
  study.Write("individual.csv", "");
  ExpectError(RunHovar(study, {"validation.xml"}), "Invalid argument", kTinyReading);
}

TEST(PredictionInputTest, WithoutPairsAStatisticIsMinusOne) {
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA\n"
              "a,A,1,0\n"
              "b,A,1,0\n");
  EXPECT_EQ(RunHovar(study, {"validation.xml"}).exitStatus, 0);
  EXPECT_EQ(study.Read("out/cstatistics.csv"),
            "Estimate,C-Statistics\nE[Y|Z],-1\nE[Y|X],-1\n\"E[Y|X,P=0]\",-1\n"
            "\"E[Y|X,P=0]-MCMC\",-1\nE[P|X],-1\nE[P|YPXZ],-1\n");
}

TEST(MissingValueRunTest, PassesArePrintedFromZeroAndFromOne) {
  const TinyStudy study;
  study.Write("data.csv", Replaced(kTinyData, "d,B,1,0", "d,B,1,"));
  const std::string reading =
      Replaced(Replaced(kTinyReading, "records: 6\nNumber of non", "records: 5\nNumber of non"),
               "P = 0: 5", "P = 0: 4");
  const auto withPasses = [](std::string text, const char* burnin, const char* steps) {
    text = Replaced(text, "<Burnin>0<", "<Burnin>" + std::string(burnin) + "<");
    return Replaced(text, "<Steps>0<", "<Steps>" + std::string(steps) + "<");
  };
  struct Row {
    const char* burnin;
    const char* steps;
    const char* prediction;
    const char* validation;
  };
  for (const Row& row :
       {Row{"2", "3", "0/2\n1/2\n1/3\n2/3\n", "0/2\n1/2\n0/3\n1/3\n2/3\n"},
        Row{"0", "1", "", "0/1\n"}, Row{"1", "0", "0/1\n", "0/1\n"}, Row{"-2", "-3", "", ""}}) {
    SCOPED_TRACE(std::string(row.burnin) + " " + row.steps);
    study.Write("d.xml", withPasses(PredictionText(), row.burnin, row.steps));
    ExpectSuccess(RunHovar(study, {"d.xml"}), reading + "Calculating individual predictions\n" +
                                                  row.prediction +
                                                  "Calculating hospital-aggregated predictions\n");
    study.Write("d.xml", withPasses(ValidationText(), row.burnin, row.steps));
    ExpectSuccess(RunHovar(study, {"d.xml"}), reading + "Y|Z\nY|X\nP|X\nP|YPZX\n" + row.validation);
    if (std::string(row.steps) == "0") {
      // Without a measured pass both averages stay 0.
      EXPECT_NE(
          study.Read("out/cstatistics.csv").find("\n\"E[Y|X,P=0]\",0\n\"E[Y|X,P=0]-MCMC\",0\n"),
          std::string::npos);
    }
  }
}

TEST(MissingValueRunTest, AMissingPIsAnEmptyFieldAndTheFirstPassWithoutBurninHasItZero) {
  const TinyStudy study;
  study.Write("data.csv", Replaced(Replaced(kTinyData, "d,B,1,0", "d,B,1,"), "e,B,0,0\nf,B,0,0",
                                   "e,B,0,\nf,B,0,"));
  // Thinning is of no matter to predictions.
  study.Write("d.xml", Replaced(PredictionText(), "<Thinning>1<", "<Thinning>0<"));
  EXPECT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  const std::string individual = study.Read("out/predicted.csv");
  EXPECT_NE(individual.find("\nd,B,1,0.5,0.75,1,0.5,0.25,,0.25,0\n"
                            "e,B,0,0.5,0.75,0,0.5,0.25,,0.25,0\n"),
            std::string::npos)
      << individual;
  EXPECT_TRUE(study.Read("out/hospital.csv")
                  .ends_with("\nB,3,0,0,0.333333,0.5,0.75,0.333333,0.5,0.25,,0.25,0\n"));
}

}  // namespace
}  // namespace Testing
