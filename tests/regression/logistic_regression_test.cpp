#include "regression/logistic_regression.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "regression/fits.h"
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
  return Testing::ObserveFit(data, parameters, kIndependent);
}

/// Intercept only: so many records with Y = 1 and with Y = 0.
DataSet MakeInterceptOnly(int ones, int zeros) {
  std::string text;
  for (int i = 0; i < ones + zeros; ++i) {
    text += i < ones ? "A 1 0 - -\n" : "A 0 0 - -\n";
  }
  return MakeDataSet(text);
}

TEST(LogisticRegressionTest, WithoutPriorAgreesWithGlmOfR) {
  const DataSet data = Testing::SmallRegression();
  const FitOutcome fit = Fit(data, Tight(0));
  EXPECT_EQ(fit.Failure(), "");
  EXPECT_EQ(fit.output, "") << "a fit that converges says nothing";
  const auto rows = Testing::ReadCsv(Testing::ReferenceFile("logistic.csv"));
  ASSERT_EQ(rows.size(), 5U);
  for (std::int32_t j = 0; j < 4; ++j) {
    const auto& row = rows[static_cast<std::size_t>(j) + 1];
    ExpectRelative(fit.estimates[j].estimate, std::stold(row[1]), kEightDigits, row[0]);
    ExpectRelative(fit.estimates[j].modelStandardError, std::stold(row[2]), kEightDigits, row[0]);
    EXPECT_EQ(fit.estimates[j].empiricalStandardError, -1.0);
  }
}

TEST(LogisticRegressionTest, WithPriorAgreesWithAMinimiserOfThePenalisedLikelihood) {
  const DataSet data = Testing::SmallRegression();
  const auto rows = Testing::ReadCsv(Testing::ReferenceFile("ridge.csv"));
  ASSERT_EQ(rows.size(), 9U);
  for (std::size_t r = 1; r < rows.size(); ++r) {
    const auto& row = rows[r];  // Lambda, Column, Estimate, ModelError
    const CoefficientEstimates fit = FitYGivenX(data, Tight(std::stod(row[0])), kIndependent);
    const std::int32_t j = row[1][1] - '0';
    ExpectRelative(fit[j].estimate, std::stold(row[2]), kEightDigits, row[0] + " " + row[1]);
    ExpectRelative(fit[j].modelStandardError, std::stold(row[3]), kEightDigits,
                   row[0] + " " + row[1]);
  }
}

// More columns and records, hospitals of very different sizes, and records that are left out.
TEST(LogisticRegressionTest, AgreesWithADenseFit) {
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    Testing::SeededRandom random(seed);
    SCOPED_TRACE(random.Text());
    DataSet data =
        MakeDataSet(Testing::RandomRecords(random, {700, 1, 30, 0, 511, 2, 513, 64, 200}, 9));
    for (std::int32_t i = 0; i < data.recordCount; i += 3) {
      data.x.SetMissing(i, 1 + i % 9, true);
    }
    CountNonMissing(data);
    for (const double priorPrecision : {0.0, 0.1, 10.0}) {
      const auto dense = FitDense(
          MakeProblemOfX(data, [&](std::int32_t i) { return !data.recordHasMissing.Get(i); }),
          false, priorPrecision, 1e-15L, 50);
      ExpectFit(FitYGivenX(data, Tight(priorPrecision), kIndependent), dense, false, 1e-11);
    }
  }
}

TEST(LogisticRegressionTest, ScoreIsZeroAtTheOptimum) {
  Testing::SeededRandom random(11);
  const DataSet data = MakeDataSet(Testing::RandomRecords(random, {60, 90, 150}, 5));
  for (const double priorPrecision : {0.0, 0.7}) {
    const CoefficientEstimates fit = FitYGivenX(data, Tight(priorPrecision), kIndependent);
    Testing::DenseVector beta;
    for (const auto& estimate : fit) {
      beta.push_back(estimate.estimate);
    }
    const auto score =
        Testing::EvaluatePass(MakeProblemOfX(data, Testing::IsAny), beta, false).score;
    for (std::size_t j = 0; j < beta.size(); ++j) {
      EXPECT_LT(std::fabs(score[j] - priorPrecision * beta[j]), 1e-11) << j;
    }
  }
}

TEST(LogisticRegressionTest, InterceptAloneIsTheLogOddsOfTheResponse) {
  // 3 of 4: log(3); the information is 4 * 3/4 * 1/4 = 3/4.
  const FitOutcome fit = Fit(MakeInterceptOnly(3, 1), Tight(0));
  ASSERT_EQ(fit.estimates.Size(), 1);
  EXPECT_NEAR(fit.estimates[0].estimate, std::log(3), 1e-14);
  EXPECT_NEAR(fit.estimates[0].modelStandardError, std::sqrt(4.0 / 3), 1e-14);
}

TEST(LogisticRegressionTest, OrderOfRecordsWithinAHospitalDoesNotMatter) {
  Testing::SeededRandom random(5);
  // Longer than any block in which a fit may take records.
  std::string text = Testing::RandomRecords(random, {1500}, 4);
  const CoefficientEstimates fit = FitYGivenX(MakeDataSet(text), Tight(0.5), kIndependent);
  std::vector<std::string> lines;
  for (std::size_t begin = 0, end; (end = text.find('\n', begin)) != std::string::npos;
       begin = end + 1) {
    lines.push_back(text.substr(begin, end + 1 - begin));
  }
  std::string shuffled;
  for (const std::int32_t i : random.Choose(1500, 1500)) {
    shuffled += lines[static_cast<std::size_t>(i)];
  }
  const CoefficientEstimates other = FitYGivenX(MakeDataSet(shuffled), Tight(0.5), kIndependent);
  for (std::int32_t j = 0; j < fit.Size(); ++j) {
    ExpectRelative(other[j].estimate, fit[j].estimate, 1e-11, "estimate");
    ExpectRelative(other[j].modelStandardError, fit[j].modelStandardError, 1e-11, "error");
  }
}

TEST(LogisticRegressionTest, LimitOfOneOrLessAppliesExactlyOneStep) {
  // 3 of 4 records with Y = 1. At 0: g = 3/2 - 1/2 = 1, H = 4/4 = 1, so the step is 1 / (1 +
  // prior). The error is that of the pass that made the step: sqrt(1 / (H + prior)).
  const DataSet data = MakeInterceptOnly(3, 1);
  for (const std::int32_t limit : {1, 0, -1, INT_MIN}) {
    for (const auto& [priorPrecision, estimate] :
         {std::pair{0.0, 1.0}, std::pair{1.0, 0.5}, std::pair{3.0, 0.25}}) {
      const FitOutcome fit =
          Fit(data, {.tolerance = 1e-9, .maxIterations = limit, .priorPrecision = priorPrecision});
      EXPECT_DOUBLE_EQ(fit.estimates[0].estimate, estimate) << limit;
      EXPECT_DOUBLE_EQ(fit.estimates[0].modelStandardError, std::sqrt(1 / (1 + priorPrecision)))
          << limit;
      EXPECT_EQ(fit.log, kIterationWarning) << limit;
      EXPECT_EQ(fit.output, kIterationWarning) << limit;
      EXPECT_EQ(fit.error, "") << limit;
    }
  }
}

TEST(LogisticRegressionTest, CovarianceStandsOneStepBehindWhenTheLimitEndsTheFit) {
  const DataSet data = Testing::SmallRegression();
  const auto problem = MakeProblemOfX(data, Testing::IsAny);
  for (const std::int32_t limit : {1, 2, 3}) {
    const FitOutcome fit =
        Fit(data, {.tolerance = 0, .maxIterations = limit, .priorPrecision = 0.5});
    const auto dense = FitDense(problem, false, 0.5L, 0, limit);
    ASSERT_EQ(dense.steps, limit);
    ExpectFit(fit.estimates, dense, false, 1e-12);
    EXPECT_EQ(fit.log, kIterationWarning);
  }
}

TEST(LogisticRegressionTest, LastAllowedStepWarnsThoughTheNextOneWouldHaveBeenTheEnd) {
  // With a tolerance of 1 % the dense fit applies k steps and then finds the next one small enough.
  const DataSet data = Testing::SmallRegression();
  const auto dense = FitDense(MakeProblemOfX(data, Testing::IsAny), false, 0, 0.01L, 100);
  ASSERT_GT(dense.steps, 1);
  const auto fit = [&](std::int32_t limit) {
    return Fit(data, {.tolerance = 0.01, .maxIterations = limit, .priorPrecision = 0});
  };
  EXPECT_EQ(fit(dense.steps).log, kIterationWarning);
  EXPECT_EQ(fit(dense.steps + 1).log, "");
  for (std::int32_t j = 0; j < 4; ++j) {
    EXPECT_EQ(fit(dense.steps).estimates[j].estimate, fit(dense.steps + 1).estimates[j].estimate);
  }
  // Only the fit that looked at the next step has its information.
  ExpectFit(fit(dense.steps + 1).estimates, dense, false, 1e-12);
  EXPECT_NE(fit(dense.steps).estimates[0].modelStandardError,
            fit(dense.steps + 1).estimates[0].modelStandardError);
}

TEST(LogisticRegressionTest, StepThatEqualsTheToleranceTimesTheLargestCoefficientIsNotApplied) {
  // Half of the responses are 1, so the first step is exactly 0 = tolerance * 0.
  for (const double tolerance : {0.0, 1e-9, 1.0}) {
    const FitOutcome fit = Fit(MakeInterceptOnly(8, 8),
                               {.tolerance = tolerance, .maxIterations = 1, .priorPrecision = 0});
    EXPECT_EQ(fit.estimates[0].estimate, 0.0);
    EXPECT_EQ(fit.estimates[0].modelStandardError, 0.5);  // H = 16 / 4
    EXPECT_EQ(fit.log, "") << "no step was counted";
  }
}

TEST(LogisticRegressionTest, LimitOfZeroWarnsEvenWithoutAStep) {
  for (const std::int32_t limit : {0, -7}) {
    const FitOutcome fit = Fit(MakeInterceptOnly(8, 8),
                               {.tolerance = 1e-9, .maxIterations = limit, .priorPrecision = 0});
    EXPECT_EQ(fit.estimates[0].estimate, 0.0);
    EXPECT_EQ(fit.log, kIterationWarning);
  }
}

TEST(LogisticRegressionTest, ToleranceIsRelativeToTheLargestCoefficient) {
  // Intercept only, all responses 1, no prior: a step from beta is (1 - mu) / (mu (1 - mu)) =
  // 1 + e^-beta, so beta runs through 0, 2, 3 + e^-2, ... without end. The stop comes where the
  // step is at most tolerance * beta.
  const DataSet data = MakeInterceptOnly(5, 0);
  for (const double tolerance : {0.9, 0.3, 0.05}) {
    long double beta = 0;
    while (tolerance * beta < 1 + std::exp(-beta)) {
      beta += 1 + std::exp(-beta);
    }
    const FitOutcome fit =
        Fit(data, {.tolerance = tolerance, .maxIterations = 1000, .priorPrecision = 0});
    ExpectRelative(fit.estimates[0].estimate, beta, 1e-9, "estimate");
    EXPECT_EQ(fit.log, "");
  }
}

TEST(LogisticRegressionTest, InfiniteToleranceAppliesTheFirstStepOnly) {
  // In the first pass infinity * 0 is not >= the step; in the second infinity * 1 is.
  const FitOutcome fit =
      Fit(MakeInterceptOnly(3, 1), {.tolerance = std::numeric_limits<double>::infinity(),
                                    .maxIterations = 50,
                                    .priorPrecision = 0});
  EXPECT_EQ(fit.estimates[0].estimate, 1.0);
  EXPECT_EQ(fit.log, "");
}

TEST(LogisticRegressionTest, SeparationWithoutPriorReachesTheLimit) {
  const DataSet data = MakeInterceptOnly(5, 0);
  long double beta = 0;
  for (std::int32_t limit = 1; limit <= 30; ++limit) {
    beta += 1 + std::exp(-beta);
    const FitOutcome fit =
        Fit(data, {.tolerance = 1e-6, .maxIterations = limit, .priorPrecision = 0});
    ExpectRelative(fit.estimates[0].estimate, beta, 1e-9, std::to_string(limit));
    EXPECT_EQ(fit.log, kIterationWarning);
  }
  // With all responses 0 the same in the negative.
  const FitOutcome fit =
      Fit(MakeInterceptOnly(0, 5), {.tolerance = 1e-6, .maxIterations = 30, .priorPrecision = 0});
  ExpectRelative(fit.estimates[0].estimate, -beta, 1e-9, "all responses 0");
}

TEST(LogisticRegressionTest, SeparationWithoutALimitEndsWhereTheWeightsAreZero) {
  // Each step is about 1, so beta passes 710, where e^beta overflows and the information is 0.
  const FitOutcome fit =
      Fit(MakeInterceptOnly(5, 0), {.tolerance = 0, .maxIterations = 2000, .priorPrecision = 0});
  EXPECT_EQ(fit.Failure(), "NumericException: Non positive matrix in Cholesky decomposition");
}

TEST(LogisticRegressionTest, PriorMakesTheFitOfEqualResponsesFinite) {
  for (const auto& [ones, zeros] : {std::pair{7, 0}, std::pair{0, 7}}) {
    const DataSet data = MakeInterceptOnly(ones, zeros);
    const FitOutcome fit = Fit(data, Tight(0.5));
    EXPECT_EQ(fit.log, "");
    const auto dense = FitDense(MakeProblemOfX(data, Testing::IsAny), false, 0.5L, 1e-16L, 100);
    ExpectFit(fit.estimates, dense, false, 1e-12);
    // 7 (1 - mu) = beta / 2 and the reverse.
    const double beta = fit.estimates[0].estimate;
    EXPECT_NEAR(ones / (1 + std::exp(beta)) - zeros / (1 + std::exp(-beta)), beta / 2, 1e-12);
  }
}

TEST(LogisticRegressionTest, ZeroColumnWithPriorIsEstimatedAsZero) {
  const DataSet data = MakeDataSet("A 1 0 00 10\nA 1 0 00 00\nA 0 0 00 10\nA 1 0 00 00\n");
  const FitOutcome fit = Fit(data, Tight(4));
  EXPECT_EQ(fit.estimates[2].estimate, 0.0);
  EXPECT_EQ(fit.estimates[2].modelStandardError, 0.5);  // 1 / sqrt(4)
  // The others are what they would be without the column.
  const DataSet without = MakeDataSet("A 1 0 0 1\nA 1 0 0 0\nA 0 0 0 1\nA 1 0 0 0\n");
  const FitOutcome other = Fit(without, Tight(4));
  for (const std::int32_t j : {0, 1}) {
    ExpectRelative(fit.estimates[j].estimate, other.estimates[j].estimate, 1e-14, "estimate");
  }
}

TEST(LogisticRegressionTest, ZeroColumnWithoutPriorCannotBeFactored) {
  const DataSet data = MakeDataSet("A 1 0 00 10\nA 1 0 00 00\nA 0 0 00 10\nA 1 0 00 00\n");
  const FitOutcome fit = Fit(data, Tight(0));
  EXPECT_EQ(fit.Failure(), "NumericException: Non positive matrix in Cholesky decomposition");
  EXPECT_EQ(fit.log, "");
}

TEST(LogisticRegressionTest, NoRecordAtAllNeedsAPrior) {
  const DataSet data = MakeDataSet("A 1 . 0 1\nA 0 0 0 .\n");
  const FitOutcome fit = Fit(data, Tight(0.25));
  EXPECT_EQ(fit.Failure(), "");
  ASSERT_EQ(fit.estimates.Size(), 2);
  for (const auto& estimate : fit.estimates) {
    EXPECT_EQ(estimate.estimate, 0.0);
    EXPECT_EQ(estimate.modelStandardError, 2.0);  // 1 / sqrt(0.25)
  }
  EXPECT_EQ(Fit(data, Tight(0)).Failure(),
            "NumericException: Non positive matrix in Cholesky decomposition");
}

TEST(LogisticRegressionTest, RecordsAreTakenInHospitalsOfAnySize) {
  // The same records, but the list of hospitals also has empty ones.
  const DataSet data = Testing::SmallRegression();
  Vell::IndexVector sizes;
  for (const std::int32_t size : data.hospitalSize) {
    sizes.Append(0);
    sizes.Append(size);
  }
  sizes.Append(0);
  const auto fit =
      Hovar::LogisticRegression{sizes, {kIndependent, Tight(0)}}.Fit(RowsOfYGivenX(data));
  const auto expected = FitYGivenX(data, Tight(0), kIndependent);
  for (std::int32_t j = 0; j < 4; ++j) {
    EXPECT_EQ(fit[j].estimate, expected[j].estimate);
  }
}

TEST(LogisticRegressionTest, EachFailingAllocationEndsInOutOfMemory) {
  const DataSet data = MakeDataSet("A 1 0 0 1\nA 1 0 0 0\nB 0 0 0 1\nB 1 0 0 0\n");
  Testing::ExpectOutOfMemoryAtEachAllocation([&] {
    FitYGivenX(data, {.tolerance = 1e-6, .maxIterations = 3, .priorPrecision = 1}, kIndependent);
  });
}

}  // namespace
