// One fault each: a file of a valid study is changed, and the run must end in one documented error
// line, at one place of its progress, with the files that it had made by then and no others.
// Faults of definitions and of data files have tables of their own in definition_*_test.cpp and
// data_file_test.cpp; sizes near the limits of integers stand in limits_test.cpp.

#include <gtest/gtest.h>

#include <ostream>

#include "progress.h"
#include "runs.h"
#include "tiny_study.h"

namespace Testing {
namespace {

using Changes = std::vector<std::pair<std::string, std::string>>;

struct FailureCase {
  std::string name;
  Changes changes;         // files of the tiny study and what they hold instead
  std::string definition;  // the file that is run
  std::string error;
  std::string progress;
  std::set<std::string> output;  // the files below out/ afterwards
};

void PrintTo(const FailureCase& failure, std::ostream* stream) { *stream << failure.name; }

class FailureTest : public testing::TestWithParam<FailureCase> {};

TEST_P(FailureTest, EndsInItsErrorLineAndLeavesWhatWasWritten) {
  const FailureCase& failure = GetParam();
  const TinyStudy study;
  std::set<std::string> files = FilesBelow(study);
  for (const auto& [file, text] : failure.changes) {
    study.Write(file, text);
    files.insert(file);
  }
  ExpectError(RunHovar(study, {failure.definition}), failure.error, failure.progress);
  for (const std::string& file : failure.output) {
    files.insert("out/" + file);
  }
  EXPECT_EQ(FilesBelow(study), files);
}

std::string NameOf(const testing::TestParamInfo<FailureCase>& info) { return info.param.name; }

const std::string kZeroStages = "Eliminating Z zero columns\nEliminating X zero columns\n";
const std::string kStageZ = "Eliminating dependent Z columns\n";
const std::string kStageX = "Eliminating dependent X columns P = 0\n";

/// An analysis with other values: pairs of what stands in it and what shall stand there.
Changes Analysis(std::string data, const Changes& replacements) {
  std::string text = AnalysisText();
  for (const auto& [from, to] : replacements) {
    text = Replaced(text, from, to);
  }
  return {{"data.csv", std::move(data)}, {"analysis.xml", text}};
}

// Column elimination

/// 40 records with cells of two variables: `rare` is 1 in 4 of them in the first variable and in 3
/// others in the second, `fair` are independent halves.
std::string RareAndFair(bool isRareInZ) {
  std::string text = "Key,Hospital,Y,POA,Z1,Z2,X1,X2\n";
  for (int i = 0; i < 40; ++i) {
    const std::string rare = i < 4 ? "1,0" : i < 7 ? "0,1" : "0,0";
    const std::string fair = std::to_string(i % 2) + "," + std::to_string(i / 2 % 2);
    text += "k,A," + std::to_string(i % 2) + ",0," + (isRareInZ ? rare : fair) + "," +
            (isRareInZ ? fair : rare) + "\n";
  }
  return text;
}

std::vector<FailureCase> EliminationFailures() {
  // The counts of the rare columns, (40 4 3; 4 4 0; 3 0 3), have a smallest singular value of 0.065
  // and a second of 0.0904 times the largest; without the second variable the ratio is 0.08806. A
  // tolerance between the two removes one column and is then not met. Those of the fair columns,
  // 0.0985 and 0.157, meet it.
  const Changes tolerance = {{"<Tolerance>1e-9<", "<Tolerance>0.09<"}};
  const std::string removal = RemovalLines("Z2, X2\n", 2, 40, 40) + "Check rank\n";
  const std::string dependent = "Error in eliminating dependent columns";
  std::vector<FailureCase> cases = {
      {"RankOfZ",
       Analysis(RareAndFair(true), tolerance),
       "analysis.xml",
       "Rank is not maximal",
       OneHospital(40, 3, 40, 40) + kZeroStages + kStageZ + removal,
       {"analysis.log"}},
      {"RankOfX",
       Analysis(RareAndFair(false), tolerance),
       "analysis.xml",
       "Rank is not maximal",
       OneHospital(40, 3, 40, 40) + kZeroStages + kStageZ + kStageX + removal,
       {"analysis.log"}},
      // Without a record all counts are 0, so that the intercept depends on nothing and would have
      // to go, which it cannot.
      {"NoCompleteRecordWithoutPAndNoVariable",
       Analysis("Key,Hospital,Y,POA\na,A,1,1\nb,A,1,1\nc,A,0,\n", {}),
       "analysis.xml",
       dependent,
       OneHospital(3, 1, 2, 0) + kZeroStages + kStageZ + kStageX,
       {"analysis.log"}},
      {"NoCompleteRecordWithoutP",
       Analysis("Key,Hospital,Y,POA,Z,X\na,A,1,1,0,1\nb,A,1,1,1,0\nc,A,0,0,1,\n", {}),
       "analysis.xml",
       dependent,
       OneHospital(3, 2, 2, 0) + kZeroStages + kStageZ + kStageX,
       {"analysis.log"}},
      // All X cells missing leave no complete record, so every X column counts as zero, with the
      // columns all records are complete, and then there is no variable to make tables for.
      {"AllXMissing",
       Analysis("Key,Hospital,Y,POA,Z,X\na,A,1,0,1,\nb,A,0,0,0,\n", {}),
       "analysis.xml",
       "Invalid argument",
       OneHospital(2, 2, 0, 0) + kZeroStages +
           RemovalLines("ZIntercept, XIntercept\nZ, X\n", 0, 2, 2) + kStageZ + kStageX +
           "Regression analysis\n",
       {"analysis.log"}},
  };
  // Above the largest singular value none counts, not even the intercept's.
  for (const auto& [name, value] : {std::pair{"ToleranceOfOne", "1"},
                                    {"ToleranceOfTwo", "2"},
                                    {"ToleranceInfinite", "inf"},
                                    {"ToleranceBeyondReals", "1e999"},
                                    {"ToleranceNotANumber", "nan"}}) {
    cases.push_back(
        {name,
         Analysis(kTinyData, {{"<Tolerance>1e-9<", "<Tolerance>" + std::string(value) + "<"}}),
         "analysis.xml",
         dependent,
         kTinyReading + kZeroStages + kStageZ,
         {"analysis.log"}});
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Elimination, FailureTest, testing::ValuesIn(EliminationFailures()),
                         NameOf);

// Fits

// The weights of all records are 0 when the linear predictor passes the range of exp, about 710
// steps on the way to infinity; without a prior the information matrix is then 0.
const std::pair<std::string, std::string> kNoLimit = {"<MaxIterations>50<",
                                                      "<MaxIterations>2147483647<"};

const std::string kFitFailure = "Non positive matrix in Cholesky decomposition";

std::vector<FailureCase> FitFailures() {
  const std::string tinyStart = std::string(kTinyReading) + kTinyElimination;
  const std::string start = "Regression analysis\n[P|X]\n[Y|Z]\n";
  // X is 1 where P is and nowhere else, so its column is 0 without P. A tolerance below 0 keeps it.
  // X = 1 and Z = 1 come with Y = 1 alone, so the other fits go on to their limit.
  const std::string noXWithoutP =
      "Key,Hospital,Y,POA,Z,X\n"
      "a,A,1,1,1,1\nb,A,1,1,0,1\nc,A,1,0,1,0\nd,A,0,0,0,0\n";
  return {
      {"AllRespondWithoutPriorAndLimit",
       Analysis("Key,Hospital,Y,POA\na,A,1,1\nb,A,1,0\nc,A,1,0\n", {kNoLimit}),
       "analysis.xml",
       kFitFailure,
       OneHospital(3, 1, 3, 2) + kTinyElimination + start,
       {"analysis.log"}},
      {"NoneRespondsWithoutPriorAndLimit",
       Analysis("Key,Hospital,Y,POA\na,A,0,0\nb,A,0,0\nc,A,1,0\n", {kNoLimit}),
       "analysis.xml",
       kFitFailure,
       OneHospital(3, 1, 3, 3) + kTinyElimination + "Regression analysis\n[P|X]\n",
       {"analysis.log"}},
      {"SeparationWithoutPriorAndLimit",
       // X tells Y apart, but not P.
       Analysis("Key,Hospital,Y,POA,Z,X\n"
                "a,A,1,1,1,1\nb,A,1,0,0,1\nc,A,1,1,0,1\nd,A,0,0,1,0\ne,A,0,0,0,0\nf,A,1,1,0,0\n",
                {kNoLimit}),
       "analysis.xml",
       kFitFailure,
       OneHospital(6, 2, 6, 3) + kTinyElimination + "Regression analysis\n[P|X]\n[Y|Z]\n[Y|X]\n",
       {"analysis.log"}},
      {"ZeroColumnWithoutPrior",
       Analysis(noXWithoutP, {{"<Tolerance>1e-9<", "<Tolerance>-1<"},
                              {"<MaxIterations>50<", "<MaxIterations>9<"}}),
       "analysis.xml",
       kFitFailure,
       OneHospital(4, 2, 4, 2) + kTinyElimination +
           "Regression analysis\n[P|X]\nWarning: Maximum number of iterations reached\n"
           "[Y|Z]\nWarning: Maximum number of iterations reached\n"
           "[Y|X]\nWarning: Maximum number of iterations reached\n[Y|X,P=0]\n",
       {"analysis.log"}},
      {"ChainsFitInTheBurnin",
       Analysis(kTinyData, {{"<PriorPrecision>0</PriorPrecision>\n</ParametersMcmc>",
                             "<PriorPrecision>-100</PriorPrecision>\n</ParametersMcmc>"},
                            {"<Burnin>0<", "<Burnin>2<"},
                            {"<Steps>0<", "<Steps>3<"}}),
       "analysis.xml",
       kFitFailure,
       tinyStart + kTinyFits,
       {"analysis.log", "mcmc/Chain.csv", "mcmc/Summary.csv"}},
      {"ChainsFitInTheMainPhase",
       Analysis(kTinyData, {{"<PriorPrecision>0</PriorPrecision>\n</ParametersMcmc>",
                             "<PriorPrecision>-100</PriorPrecision>\n</ParametersMcmc>"},
                            {"<Steps>0<", "<Steps>3<"}}),
       "analysis.xml",
       kFitFailure,
       tinyStart + kTinyFits,
       {"analysis.log", "mcmc/Chain.csv", "mcmc/Summary.csv"}},
  };
}

INSTANTIATE_TEST_SUITE_P(Fit, FailureTest, testing::ValuesIn(FitFailures()), NameOf);

TEST(ChainFailureTest, AChainThatFailsLeavesItsHeaderAndAnEmptySummary) {
  for (const char* burnin : {"0", "2"}) {
    SCOPED_TRACE(burnin);
    const TinyStudy study;
    std::string text = Replaced(AnalysisText(), "<Steps>0<", "<Steps>3<");
    text = Replaced(text, "<PriorPrecision>0</PriorPrecision>\n</ParametersMcmc>",
                    "<PriorPrecision>-100</PriorPrecision>\n</ParametersMcmc>");
    study.Write("d.xml", Replaced(text, "<Burnin>0<", "<Burnin>" + std::string(burnin) + "<"));
    EXPECT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 1);
    EXPECT_EQ(study.Read("out/mcmc/Chain.csv"), "Step,BetaYX[0]\n");
    EXPECT_EQ(study.Read("out/mcmc/Summary.csv"), "");
  }
}

// Coefficient files and individual predictions

const std::string kPairData = "Key,Hospital,Y,POA,Z1,X1\na,A,1,0,1,1\nb,A,0,0,0,0\n";
const std::string kPairRow = "X1,Z1,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n";

/// A fault of the last row of a coefficient file, in a prediction and in a validation.
void AddRowFault(std::vector<FailureCase>& cases, const std::string& name, const std::string& from,
                 const std::string& to, const std::string& error) {
  for (const std::string kind : {"prediction", "validation"}) {
    const std::string file =
        std::string(kCoefficientHeader) + kModelRow + Replaced(kPairRow, from, to);
    cases.push_back({name + (kind == "prediction" ? "InAPrediction" : "InAValidation"),
                     {{"data.csv", kPairData}, {"coefficients.csv", file}},
                     kind + ".xml",
                     error,
                     OneHospital(2, 2, 2, 2),
                     {kind + ".log"}});
  }
}

std::vector<FailureCase> CoefficientFailures() {
  const std::string csv = "Invalid CSV format";
  const std::string ended = "Unexpected end of stream";
  std::vector<FailureCase> cases;
  AddRowFault(cases, "QuoteWithinAName", "X1,", "X\"1,", csv);
  AddRowFault(cases, "QuoteWithinANumber", "0.5,0.5,0.5", "0.5,0\".5,0.5", csv);
  AddRowFault(cases, "QuoteNeverClosed", "Z1,", "\"Z1,", csv);
  AddRowFault(cases, "TextBehindAQuotedName", "Z1,", "\"Z1\"x,", csv);
  AddRowFault(cases, "NulInAName", "Z1,", std::string("Z\0,", 3), "Invalid input string");
  AddRowFault(cases, "NulInAStandardError", "0,,,0", std::string("0,\0,,0", 6),
              "Invalid input string");
  AddRowFault(cases, "TableWithoutItsFirstFraction", "0.5,0.5,0.5,0.5", "0.5,,0.5,0.5", ended);
  AddRowFault(cases, "TableWithoutItsSecondFraction", "0.5,0.5,0.5,0.5", "0.5,0.5,0.5,NA", ended);
  AddRowFault(cases, "RowOfNamesAlone", ",0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,", "", ended);
  AddRowFault(cases, "EmptyRow", kPairRow, "\n", ended);
  AddRowFault(cases, "OtherName", "X1,", "x1,", "Variables mismatch");
  // The variable that is not found is removed first.
  for (FailureCase& failure : cases) {
    if (failure.error == "Variables mismatch") {
      failure.progress += RemovalLines("Z1, X1\n", 1, 2, 2);
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Coefficients, FailureTest, testing::ValuesIn(CoefficientFailures()),
                         NameOf);

FailureCase RowOfPredictions(const std::string& name, const std::string& row,
                             const std::string& error) {
  return {name,
          {{"individual.csv",
            kIndividualHeader + Replaced(kIndividualRows, "a,A,1,0.9,0.75,0,0,0,1,0.3,1\n", row)}},
          "validation.xml",
          error,
          kTinyReading,
          {"validation.log"}};
}

INSTANTIATE_TEST_SUITE_P(
    Predictions, FailureTest,
    testing::Values(RowOfPredictions("QuoteWithinAKey", "a\"a,A,1,0.9,0.75,0,0,0,1,0.3,1\n",
                                     "Invalid CSV format"),
                    RowOfPredictions("QuoteNeverClosed", "\"a,A,1,0.9,0.75,0,0,0,1,0.3,1\n",
                                     "Invalid CSV format"),
                    RowOfPredictions("TextBehindAQuotedHospital",
                                     "a,\"A\"A,1,0.9,0.75,0,0,0,1,0.3,1\n", "Invalid CSV format"),
                    RowOfPredictions("NulInAValue",
                                     std::string("a,A,1,0.9,0.75,0,0,0,1,\0,1\n", 27),
                                     "Invalid input string"),
                    // The next record then begins where the values of this one are due.
                    RowOfPredictions("EmptyRow", "\n", "Unexpected end of stream")),
    NameOf);

}  // namespace
}  // namespace Testing
