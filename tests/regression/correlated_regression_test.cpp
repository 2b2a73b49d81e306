// Fits with generalized estimating equations: records of one hospital are correlated.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "linalg/ternary_matrix.h"
#include "regression/fits.h"
#include "regression/logistic_regression.h"
#include "support/allocation_fault.h"
#include "support/outcome.h"

namespace {

using Hovar::CoefficientEstimates;
using Hovar::DataSet;
using Hovar::RegressionParameters;
using enum Hovar::WorkingCorrelation;
using Testing::ExpectFit;
using Testing::ExpectRelative;
using Testing::FitDense;
using Testing::FitOutcome;
using Testing::FitYGivenX;
using Testing::kEightDigits;
using Testing::kIterationWarning;
using Testing::MakeDataSet;
using Testing::MakeProblemOfX;
using Testing::Tight;

FitOutcome Fit(const DataSet& data, const RegressionParameters& parameters) {
  return Testing::ObserveFit(data, parameters, kExchangeable);
}

/// The working correlation that a fit ends with.
double CorrelationOf(const DataSet& data, const RegressionParameters& parameters) {
  Hovar::FitRows rows;
  rows.Collect(RowsOfYGivenX(data), data.hospitalSize);
  Hovar::FitState state({kExchangeable, parameters});
  FitCoefficients(state, rows);
  return state.alpha;
}

void ExpectSame(const CoefficientEstimates& actual, const CoefficientEstimates& expected,
                double relative) {
  ASSERT_EQ(actual.Size(), expected.Size());
  for (std::int32_t j = 0; j < actual.Size(); ++j) {
    const std::string column = " of column " + std::to_string(j);
    ExpectRelative(actual[j].estimate, expected[j].estimate, relative, "estimate" + column);
    ExpectRelative(actual[j].modelStandardError, expected[j].modelStandardError, relative,
                   "model error" + column);
    ExpectRelative(actual[j].empiricalStandardError, expected[j].empiricalStandardError, relative,
                   "empirical error" + column);
  }
}

TEST(CorrelatedRegressionTest, AgreesWithTheEstimatingEquationsSolvedByARootFinder) {
  const DataSet data = Testing::SmallRegression();
  std::map<std::string, FitOutcome> fits;
  for (const std::string priorPrecision : {"0", "0.5"}) {
    fits[priorPrecision] = Fit(data, Tight(std::stod(priorPrecision)));
    EXPECT_EQ(fits[priorPrecision].Failure() + fits[priorPrecision].output, "");
  }
  const auto rows = Testing::ReadCsv(Testing::ReferenceFile("gee.csv"));
  int compared = 0;
  for (const auto& row : rows) {  // Lambda, Column, Estimate, ModelError, EmpiricalError
    const std::string what = row[0] + " " + row[1];
    if (row[1] == "alpha") {
      ExpectRelative(CorrelationOf(data, Tight(std::stod(row[0]))), std::stold(row[2]),
                     kEightDigits, what);
      ++compared;
    } else if (row[1][0] == 'X') {
      const auto& estimate = fits[row[0]].estimates[row[1][1] - '0'];
      ExpectRelative(estimate.estimate, std::stold(row[2]), kEightDigits, what);
      ExpectRelative(estimate.modelStandardError, std::stold(row[3]), kEightDigits, what);
      ExpectRelative(estimate.empiricalStandardError, std::stold(row[4]), kEightDigits, what);
      ++compared;
    }
  }
  EXPECT_EQ(compared, 10);
}

// The R packages gee and geepack solve the same equations once alpha is given; what they do to
// estimate it differs. gee divides the products by M - 2 p in ordered pairs where this program has
// M - p. geepack takes plain means of the products and of r^2, nothing subtracted for the p
// estimated coefficients. And both put the dispersion phi into the model-based covariance, which
// the program leaves out. Hence they are compared with alpha held at the program's value and with
// phi divided out; their own estimates of alpha lie beside it.
TEST(CorrelatedRegressionTest, AgreesWithThePackagesOfRForTheSameAlpha) {
  const DataSet data = Testing::SmallRegression();
  const FitOutcome fit = Fit(data, Tight(0));
  const double alpha = CorrelationOf(data, Tight(0));
  const auto rows = Testing::ReadCsv(Testing::ReferenceFile("gee_packages.csv"));
  int compared = 0;
  for (const auto& row : rows) {  // Fit, Column, Estimate, ModelErrorWithoutPhi, EmpiricalError
    const std::string what = row[0] + " " + row[1];
    if (row[0] == "gee fixed" || row[0] == "geepack fixed") {
      if (row[1][0] == 'X') {
        const auto& estimate = fit.estimates[row[1][1] - '0'];
        ExpectRelative(estimate.estimate, std::stold(row[2]), kEightDigits, what);
        ExpectRelative(estimate.modelStandardError, std::stold(row[3]), kEightDigits, what);
        ExpectRelative(estimate.empiricalStandardError, std::stold(row[4]), kEightDigits, what);
        ++compared;
      }
    } else if (row[1] == "alpha") {
      EXPECT_NE(alpha, std::stod(row[2])) << what;
      EXPECT_NEAR(alpha, std::stod(row[2]), 0.01) << what;
      ++compared;
    }
  }
  EXPECT_EQ(compared, 2 * 4 + 2);
}

TEST(CorrelatedRegressionTest, AgreesWithADenseFit) {
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    Testing::SeededRandom random(seed);
    SCOPED_TRACE(random.Text());
    // More records than any block in which a fit may take them, and hospitals across its ends.
    std::vector<std::int32_t> sizes = {1, 40, 2, 1};
    for (int h = 0; h < 40; ++h) {
      sizes.push_back(random.Integer(1, 30));
    }
    DataSet data = MakeDataSet(Testing::RandomRecords(random, sizes, 4));
    for (std::int32_t i = 0; i < data.recordCount; i += 5) {
      data.x.SetMissing(i, 1 + i % 4, true);
    }
    CountNonMissing(data);
    for (const double priorPrecision : {0.0, 2.0}) {
      const auto dense = FitDense(
          MakeProblemOfX(data, [&](std::int32_t i) { return !data.recordHasMissing.Get(i); }), true,
          priorPrecision, 1e-14L, 60);
      ExpectFit(Fit(data, Tight(priorPrecision)).estimates, dense, true, 1e-10);
      ExpectRelative(CorrelationOf(data, Tight(priorPrecision)), dense.alpha, 1e-10, "alpha");
    }
  }
}

TEST(CorrelatedRegressionTest, ScoreIsZeroAtTheSolution) {
  Testing::SeededRandom random(3);
  const DataSet data = MakeDataSet(Testing::RandomRecords(random, {20, 30, 25, 40, 15}, 3));
  for (const double priorPrecision : {0.0, 0.7}) {
    const CoefficientEstimates fit = Fit(data, Tight(priorPrecision)).estimates;
    Testing::DenseVector beta;
    for (const auto& estimate : fit) {
      beta.push_back(estimate.estimate);
    }
    const auto score =
        Testing::EvaluatePass(MakeProblemOfX(data, Testing::IsAny), beta, true).score;
    for (std::size_t j = 0; j < beta.size(); ++j) {
      EXPECT_LT(std::fabs(score[j] - priorPrecision * beta[j]), 1e-10) << j;
    }
  }
}

// Two hospitals of four records, half of the responses 1 in each, intercept only. At 0 the Pearson
// residuals are 1 and -1: S = 0, Q = 8, phi = 8 / 7, alpha = -8 / ((24 - 1) 8 / 7) = -7 / 23,
// c = alpha / (3 alpha + 1) = -7 / 2, B = 2, H = 8 / 4 + 2 * 7 / 2 * 4 = 30. The score is 0, so
// that is all, and the model covariance is (1 + 7 / 23) / 30 = 1 / 23; the hospital scores are 0.
TEST(CorrelatedRegressionTest, BalancedHospitalsByHand) {
  const DataSet data = MakeDataSet(
      "A 1 0 - -\nA 0 0 - -\nA 1 0 - -\nA 0 0 - -\n"
      "B 0 0 - -\nB 0 0 - -\nB 1 0 - -\nB 1 0 - -\n");
  const FitOutcome fit = Fit(data, {.tolerance = 1e-6, .maxIterations = 1, .priorPrecision = 0});
  EXPECT_EQ(fit.log, "") << "the first step is 0 and not applied";
  ASSERT_EQ(fit.estimates.Size(), 1);
  EXPECT_EQ(fit.estimates[0].estimate, 0.0);
  EXPECT_NEAR(fit.estimates[0].modelStandardError, std::sqrt(1.0 / 23), 1e-15);
  EXPECT_EQ(fit.estimates[0].empiricalStandardError, 0.0);
  EXPECT_NEAR(CorrelationOf(data, Tight(0)), -7.0 / 23, 1e-15);
}

// Hospitals of one record have no pairs: M = 0 and sum S^2 = Q, so alpha is 0 and the estimate
// log(3). H = 4 * 3/16 = 3/4; the scores are 3 times 1/4 and once -3/4, the sum of their squares
// 3/4; empirical variance (3/4) / (3/4)^2 = 4/3, as the model-based one.
TEST(CorrelatedRegressionTest, SingleRecordsAreIndependent) {
  const DataSet data = MakeDataSet("A 1 0 - -\nB 1 0 - -\nC 0 0 - -\nD 1 0 - -\n");
  const FitOutcome fit = Fit(data, Tight(0));
  EXPECT_NEAR(fit.estimates[0].estimate, std::log(3), 1e-13);
  EXPECT_NEAR(fit.estimates[0].modelStandardError, std::sqrt(4.0 / 3), 1e-13);
  EXPECT_NEAR(fit.estimates[0].empiricalStandardError, std::sqrt(4.0 / 3), 1e-13);
}

TEST(CorrelatedRegressionTest, HospitalWithoutUsableRecordsContributesNothing) {
  const std::string part1 =
      "A 1 0 0 1\nA 0 0 0 0\nA 1 0 0 1\nB 1 0 0 1\nB 0 0 0 0\nB 0 0 0 1\nB 1 0 0 0\n";
  const std::string part2 = "D 0 0 0 0\nD 0 0 0 1\nD 1 0 0 1\nE 1 0 0 1\n";
  const CoefficientEstimates without = Fit(MakeDataSet(part1 + part2), Tight(0.1)).estimates;
  for (const std::string unusable : {"C 1 . 0 1\n", "C 1 0 0 .\nC 0 . 0 0\n"}) {
    ExpectSame(Fit(MakeDataSet(part1 + unusable + part2), Tight(0.1)).estimates, without, 1e-14);
    ExpectSame(Fit(MakeDataSet(unusable + part1 + part2), Tight(0.1)).estimates, without, 1e-14);
    ExpectSame(Fit(MakeDataSet(part1 + part2 + "F 1 * 0 1\n"), Tight(0.1)).estimates, without,
               1e-14);
  }
}

TEST(CorrelatedRegressionTest, ExcludedRecordsDoNotCountInTheirHospital) {
  const CoefficientEstimates with =
      Fit(MakeDataSet(
              "A 1 0 0 1\nA 1 . 0 0\nA 0 0 0 0\nA 1 0 0 .\nB 1 0 0 1\nB 0 0 0 0\nB 1 0 0 1\n"),
          Tight(0.1))
          .estimates;
  ExpectSame(with,
             Fit(MakeDataSet("A 1 0 0 1\nA 0 0 0 0\nB 1 0 0 1\nB 0 0 0 0\nB 1 0 0 1\n"), Tight(0.1))
                 .estimates,
             1e-14);
}

TEST(CorrelatedRegressionTest, OrderOfRecordsWithinAHospitalDoesNotMatter) {
  Testing::SeededRandom random(9);
  const std::string first = Testing::RandomRecords(random, {700}, 3);
  std::string rest;
  for (const char hospital : {'B', 'C', 'D', 'E'}) {
    std::string text = Testing::RandomRecords(random, {50}, 3);
    for (std::size_t at = 0; (at = text.find("H0", at)) != std::string::npos; at += 2) {
      text[at] = hospital;
    }
    rest += text;
  }
  std::vector<std::string> lines;
  for (std::size_t begin = 0, end; (end = first.find('\n', begin)) != std::string::npos;
       begin = end + 1) {
    lines.push_back(first.substr(begin, end + 1 - begin));
  }
  std::string shuffled;
  for (const std::int32_t i : random.Choose(700, 700)) {
    shuffled += lines[static_cast<std::size_t>(i)];
  }
  ExpectSame(Fit(MakeDataSet(shuffled + rest), Tight(0.5)).estimates,
             Fit(MakeDataSet(first + rest), Tight(0.5)).estimates, 1e-10);
}

TEST(CorrelatedRegressionTest, CovariancesStandOneStepBehindWhenTheLimitEndsTheFit) {
  const DataSet data = Testing::SmallRegression();
  const auto problem = MakeProblemOfX(data, Testing::IsAny);
  for (const std::int32_t limit : {-1, 0, 1, 2, 3}) {
    const RegressionParameters parameters = {
        .tolerance = 0, .maxIterations = limit, .priorPrecision = 0.5};
    const FitOutcome fit = Fit(data, parameters);
    const auto dense = FitDense(problem, true, 0.5L, 0, limit);
    ASSERT_EQ(dense.steps, std::max(limit, 1));
    ExpectFit(fit.estimates, dense, true, 1e-12);
    EXPECT_EQ(fit.log, kIterationWarning);
    ExpectRelative(CorrelationOf(data, parameters), dense.alpha, 1e-12, "alpha");
  }
}

// The denominators of phi and alpha are not guarded.

TEST(CorrelatedRegressionTest, FewPairsGiveACorrelationOfTheWrongSign) {
  // N = 5, p = 3, one pair: M - p = -1. The pair's responses agree, and yet alpha < 0; where all
  // residuals are 1 or -1 it is 2 / (-1 * 5 / 2) = -0.8.
  const DataSet data =
      MakeDataSet("A 1 0 00 10\nA 1 0 00 01\nB 0 0 00 11\nC 1 0 00 00\nD 0 0 00 10\n");
  const RegressionParameters parameters = {
      .tolerance = 1e-13, .maxIterations = 200, .priorPrecision = 20};
  const auto dense = FitDense(MakeProblemOfX(data, Testing::IsAny), true, 20, 1e-15L, 200);
  EXPECT_LT(CorrelationOf(data, parameters), -0.5);
  ExpectFit(Fit(data, parameters).estimates, dense, true, 1e-10);
}

TEST(CorrelatedRegressionTest, InfiniteCorrelationEndsTheFitWithoutAStep) {
  // p = 2 and one pair: M - p = 0, so alpha = 2 / 0. In single records the denominator of c is
  // 0 * infinity + 1: a NaN, and so are score and step, which then counts as 0.
  const DataSet data = MakeDataSet("A 1 0 0 1\nA 1 0 0 0\nB 0 0 0 1\nC 1 0 0 0\n");
  const FitOutcome fit = Fit(data, {.tolerance = 1e-6, .maxIterations = 5, .priorPrecision = 1});
  EXPECT_EQ(fit.Failure(), "");
  EXPECT_EQ(fit.log, "");
  EXPECT_TRUE(std::isinf(CorrelationOf(data, Tight(1))));
  ASSERT_EQ(fit.estimates.Size(), 2);
  for (const auto& estimate : fit.estimates) {
    EXPECT_EQ(estimate.estimate, 0.0);
    EXPECT_TRUE(std::isnan(estimate.modelStandardError));
    EXPECT_TRUE(std::isnan(estimate.empiricalStandardError));
  }
}

TEST(CorrelatedRegressionTest, CorrelationThatIsNoNumberEndsTheFitWithoutAStep) {
  // N = p = 2: phi = Q / 0, and (M - p) phi = 0 * infinity.
  const DataSet data = MakeDataSet("A 1 0 0 1\nA 1 0 0 0\n");
  const FitOutcome fit = Fit(data, {.tolerance = 1e-6, .maxIterations = 5, .priorPrecision = 1});
  EXPECT_EQ(fit.Failure(), "");
  EXPECT_EQ(fit.log, "");
  EXPECT_TRUE(std::isnan(CorrelationOf(data, Tight(1))));
  for (const auto& estimate : fit.estimates) {
    EXPECT_EQ(estimate.estimate, 0.0);
    EXPECT_TRUE(std::isnan(estimate.modelStandardError));
    EXPECT_TRUE(std::isnan(estimate.empiricalStandardError));
  }
}

TEST(CorrelatedRegressionTest, CorrelationOfExactlyZeroLeavesTheModelCovarianceAsItIs) {
  for (const std::string text : {
           // N = p = 1: phi is infinite, alpha = 0 / -infinity.
           "A 1 0 - -\n",
           // N = p = 3 and M = 6: alpha is a number over an infinite phi.
           "A 1 0 00 10\nA 1 0 00 01\nA 0 0 00 11\n",
           // N = 1, p = 2: phi < 0 and no pair.
           "A 1 0 0 1\n",
       }) {
    SCOPED_TRACE(text);
    const DataSet data = MakeDataSet(text);
    const FitOutcome fit = Fit(data, Tight(0.5));
    EXPECT_EQ(fit.log, "");
    EXPECT_EQ(CorrelationOf(data, Tight(0.5)), 0.0);
    const CoefficientEstimates independent = FitYGivenX(data, Tight(0.5), kIndependent);
    for (std::int32_t j = 0; j < independent.Size(); ++j) {
      ExpectRelative(fit.estimates[j].estimate, independent[j].estimate, 1e-13, "estimate");
      ExpectRelative(fit.estimates[j].modelStandardError, independent[j].modelStandardError, 1e-13,
                     "model error");
      EXPECT_GE(fit.estimates[j].empiricalStandardError, 0.0);
    }
  }
}

TEST(CorrelatedRegressionTest, NoRecordAtAllGivesZerosWithoutModelErrors) {
  // Q = 0, phi = 0 / -p, alpha = 0 / 0; every c is 0, so score and hospital scores are 0.
  const FitOutcome fit = Fit(MakeDataSet("A 1 . 0 1\nA 0 0 0 .\nB 0 . 0 0\n"), Tight(0.25));
  EXPECT_EQ(fit.Failure(), "");
  ASSERT_EQ(fit.estimates.Size(), 2);
  for (const auto& estimate : fit.estimates) {
    EXPECT_EQ(estimate.estimate, 0.0);
    EXPECT_TRUE(std::isnan(estimate.modelStandardError));
    EXPECT_EQ(estimate.empiricalStandardError, 0.0);
  }
}

TEST(CorrelatedRegressionTest, ZeroColumnWithPriorIsEstimatedAsZero) {
  const DataSet data =
      MakeDataSet("A 1 0 00 10\nA 1 0 00 00\nA 0 0 00 10\nB 1 0 00 00\nB 0 0 00 00\nB 0 0 00 10\n");
  const FitOutcome fit = Fit(data, Tight(4));
  EXPECT_EQ(fit.estimates[2].estimate, 0.0);
  EXPECT_EQ(fit.estimates[2].empiricalStandardError, 0.0);
  EXPECT_EQ(Fit(data, Tight(0)).Failure(),
            "NumericException: Non positive matrix in Cholesky decomposition");
}

TEST(CorrelatedRegressionTest, HospitalsTimesColumnsMustFitInto32Bits) {
  // One record, 30,000 columns, and many hospitals without records: 30,000 * 71,583 > 2^31 - 1.
  DataSet data = MakeDataSet("A 1 0 - -\n");
  data.x = Vell::TernaryMatrix(1, 30'000);
  data.hospitalSize = Vell::IndexVector(71'583);
  EXPECT_EQ(Fit(data, Tight(1)).Failure(), "IntegerOverflowException: Integer overflow");
}

TEST(CorrelatedRegressionTest, EachFailingAllocationEndsInOutOfMemory) {
  const DataSet data = MakeDataSet("A 1 0 0 1\nA 1 0 0 0\nB 0 0 0 1\nB 1 0 0 0\n");
  Testing::ExpectOutOfMemoryAtEachAllocation([&] {
    FitYGivenX(data, {.tolerance = 1e-6, .maxIterations = 3, .priorPrecision = 1}, kExchangeable);
  });
}

}  // namespace
