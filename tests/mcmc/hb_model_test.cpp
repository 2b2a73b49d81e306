#include "mcmc/hb_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "foundation/random/random_generator.h"
#include "mcmc/runs.h"
#include "support/allocation_fault.h"
#include "support/data_sets.h"
#include "support/dense_logistic.h"
#include "support/files.h"
#include "support/matrices.h"
#include "support/outcome.h"
#include "support/seeded_random.h"

namespace {

using Hovar::DataSet;
using Testing::DenseMatrix;
using Testing::DenseVector;
using Testing::Describe;
using Testing::kSummaryHeader;
using Testing::LogisticFit;
using Testing::LogisticProblem;
using Testing::MakeDataSet;
using Testing::MakeProblemOfX;
using Testing::MakeVector;
using Testing::Observe;
using Testing::Outcome;
using Testing::PhaseLine;
using Vell::RandomGenerator;

constexpr long double kPriorPrecision = 0.3L;

struct HBModelSetup {
  bool isCorrelated = false;
  Hovar::McmcSettings mcmc = {.thinning = 1, .burnin = 0, .steps = 1};
  std::vector<double> pGivenX = {};
  std::vector<double> priorTable = {};
  Hovar::RegressionParameters regression = {
      .tolerance = 1e-13, .maxIterations = 100, .priorPrecision = 0.3};
};

struct HBModelRun : Outcome {
  Vell::Matrix table;
  std::string chain;
  std::string summary;
};

/// Runs the model from the seed (21, 42), with no deviate left over from earlier draws.
HBModelRun RunModel(DataSet& data, HBModelSetup setup) {
  const Testing::ScratchFolder scratch;
  const auto count = static_cast<std::size_t>(data.variableCount);
  setup.pGivenX.resize(count);
  setup.priorTable.resize(2 * (count - 1), 0.5);
  const Vell::Vector pGivenX = MakeVector(setup.pGivenX);
  const Vell::Vector priorTable = MakeVector(setup.priorTable);
  const Hovar::HBModelSettings settings = {
      .regression = {setup.isCorrelated ? Hovar::WorkingCorrelation::kExchangeable
                                        : Hovar::WorkingCorrelation::kIndependent,
                     setup.regression},
      .mcmc = setup.mcmc,
      .chainFolder = Vell::String(scratch.File("mcmc"))};
  RandomGenerator::Reset();
  RandomGenerator::Seed(21, 42);
  HBModelRun run;
  static_cast<Outcome&>(run) = Observe([&] {
    Hovar::HBModel model(data, pGivenX, priorTable, settings);
    model.Run();
    run.table = model.ResultTable();
  });
  run.output = Testing::WithoutSeconds(run.output);
  if (scratch.Has("mcmc/Chain.csv")) {
    run.chain = scratch.Read("mcmc/Chain.csv");
    run.summary = scratch.Read("mcmc/Summary.csv");
  }
  return run;
}

/// L with L L^T = A, straight from the definition.
DenseMatrix LowerFactor(const DenseMatrix& a) {
  DenseMatrix lower = Testing::DenseZero(a.size(), a.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      long double rest = a[i][j];
      for (std::size_t k = 0; k < j; ++k) {
        rest -= lower[i][k] * lower[j][k];
      }
      lower[i][j] = i == j ? std::sqrt(rest) : rest / lower[j][j];
    }
  }
  return lower;
}

/// The next draw: mean + r with L^T r = z, where the first normal deviate is the last element of z.
DenseVector NextDraw(const DenseVector& mean, const DenseMatrix& lower) {
  DenseMatrix z = Testing::DenseZero(mean.size(), 1);
  for (std::size_t i = mean.size(); i-- > 0;) {
    z[i][0] = RandomGenerator::Normal();
  }
  const DenseMatrix r = Testing::SolveDense(Testing::Transposed(lower), z);
  DenseVector draw = mean;
  for (std::size_t i = 0; i < draw.size(); ++i) {
    draw[i] += r[i][0];
  }
  return draw;
}

void RestartGenerator() {
  RandomGenerator::Reset();
  RandomGenerator::Seed(21, 42);
}

std::string SixDigits(long double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%g", static_cast<double>(value));
  return text;
}

LogisticFit FitCurrentData(const DataSet& data, bool isCorrelated) {
  return FitDense(MakeProblemOfX(data, [&](std::int32_t i) { return !data.p.Value(i); }),
                  isCorrelated, kPriorPrecision, 1e-15L, 200);
}

/// 120 complete records of 12 hospitals with two covariates; some have P = 1.
DataSet MakeComplete() {
  Testing::SeededRandom random(8);
  std::string text;
  for (int i = 0; i < 120; ++i) {
    const bool y = random.Integer(0, 2) == 0;
    const std::string x = {"01"[random.Integer(0, 1)], "01"[random.Integer(0, 1)]};
    text += "H" + std::to_string(i / 10) + (y ? " 1 " : " 0 ") +
            (y && random.Integer(0, 4) == 0 ? "1 " : "0 ") + x + " " + x + "\n";
  }
  return MakeDataSet(text);
}

/// Mean and sample variance, column by column.
std::pair<DenseVector, DenseVector> MomentsOf(const DenseMatrix& draws) {
  DenseVector means(draws[0].size());
  DenseVector variances(draws[0].size());
  for (std::size_t j = 0; j < means.size(); ++j) {
    for (const DenseVector& draw : draws) {
      means[j] += draw[j] / static_cast<long double>(draws.size());
    }
    for (const DenseVector& draw : draws) {
      variances[j] += draws.size() < 2 ? 0
                                       : (draw[j] - means[j]) * (draw[j] - means[j]) /
                                             static_cast<long double>(draws.size() - 1);
    }
  }
  return {means, variances};
}

/// Expects the result table of these draws: mean, standard error, robust standard error.
void ExpectTable(const Vell::Matrix& table, const DenseMatrix& draws, bool isCorrelated) {
  const auto [means, variances] = MomentsOf(draws);
  ASSERT_EQ(table.Rows(), static_cast<std::int32_t>(means.size()));
  ASSERT_EQ(table.Columns(), 3);
  for (std::int32_t i = 0; i < table.Rows(); ++i) {
    const auto k = static_cast<std::size_t>(i);
    EXPECT_NEAR(table(i, 0), static_cast<double>(means[k]), 1e-9) << "mean " << i;
    EXPECT_NEAR(table(i, isCorrelated ? 2 : 1), static_cast<double>(std::sqrt(variances[k])), 1e-7)
        << "standard error " << i;
    EXPECT_EQ(table(i, isCorrelated ? 1 : 2), -1.0) << i;
  }
}

// Without missing values an iteration is one fit and one normal deviate per coefficient.

TEST(HBModelTest, DrawIsTheFitPlusTheSolutionOfTheTransposedFactor) {
  DataSet data = MakeComplete();
  const LogisticFit fit = FitCurrentData(data, false);
  const HBModelRun run = RunModel(data, {});
  EXPECT_EQ(run.Failure(), "");
  const std::uint32_t next = RandomGenerator::NextWord();
  const double nextDeviate = RandomGenerator::Normal();

  RestartGenerator();
  // The factor is that of the information with the prior.
  const DenseVector draw = NextDraw(fit.beta, LowerFactor(fit.precision));
  ExpectTable(run.table, {draw}, false);
  // Three deviates take two pairs of words (no word is drawn for anything else); the second
  // deviate of the last pair is left over.
  EXPECT_EQ(RandomGenerator::NextWord(), next);
  EXPECT_EQ(RandomGenerator::Normal(), nextDeviate);
}

TEST(HBModelTest, WithCorrelatedRecordsTheFactorIsThatOfTheEmpiricalCovariance) {
  DataSet data = MakeComplete();
  const LogisticFit fit = FitCurrentData(data, true);
  const HBModelRun run = RunModel(data, {.isCorrelated = true});
  EXPECT_EQ(run.Failure(), "");
  RestartGenerator();
  const DenseVector draw = NextDraw(fit.beta, LowerFactor(fit.empirical));
  ASSERT_EQ(run.table.Rows(), 3);
  for (std::int32_t i = 0; i < 3; ++i) {
    const auto expected = static_cast<double>(draw[static_cast<std::size_t>(i)]);
    EXPECT_NEAR(run.table(i, 0), expected, 1e-8 * std::fabs(expected));
    EXPECT_EQ(run.table(i, 1), -1.0);
    EXPECT_EQ(run.table(i, 2), 0.0) << "one draw has no variance";
  }
}

TEST(HBModelTest, FilesAndOutputOfARun) {
  DataSet data = MakeComplete();
  const std::string before = Describe(data);
  const LogisticFit fit = FitCurrentData(data, false);
  const HBModelRun run = RunModel(data, {.mcmc = {.thinning = 2, .burnin = 3, .steps = 6}});
  EXPECT_EQ(run.Failure(), "");
  EXPECT_EQ(run.log, "");
  EXPECT_EQ(Describe(data), before) << "there is nothing to impute";

  RestartGenerator();
  const DenseMatrix lower = LowerFactor(fit.precision);
  std::string output;
  std::string chain = "Step,BetaYX[0],BetaYX[1],BetaYX[2]\n";
  DenseMatrix kept;
  for (int i = 1; i <= 9; ++i) {
    const DenseVector draw = NextDraw(fit.beta, lower);
    const bool isBurnin = i <= 3;
    const int iteration = isBurnin ? i : i - 3;
    output += (isBurnin ? "Burnin: " : "Mcmc: ") + std::to_string(iteration) +
              " Intercept: " + SixDigits(draw[0]) + " \n" +
              (i == 3   ? PhaseLine(3)
               : i == 9 ? PhaseLine(6)
                        : "");
    if (!isBurnin && iteration % 2 == 0) {
      kept.push_back(draw);
      chain += std::to_string(iteration) + "," + SixDigits(draw[0]) + "," + SixDigits(draw[1]) +
               "," + SixDigits(draw[2]) + "\n";
    }
  }
  EXPECT_EQ(run.output, output);
  EXPECT_EQ(run.chain, chain);
  ExpectTable(run.table, kept, false);
  const auto [means, variances] = MomentsOf(kept);
  std::string summary = std::string(kSummaryHeader) + "ImputeData,0,0,0\n";
  for (std::size_t j = 0; j < 3; ++j) {
    summary += "BetaYX[" + std::to_string(j) + "]," + SixDigits(means[j]) + "," +
               SixDigits(variances[j]) + ",1\n";
  }
  EXPECT_EQ(run.summary, summary);
}

TEST(HBModelTest, InterceptAloneIsAModel) {
  // Half of the responses are 1 and the information is 8/4 + 2 = 4: draws are z / 2.
  DataSet data = MakeDataSet(
      "A 1 0 - -\nA 1 0 - -\nA 0 0 - -\nA 0 0 - -\nB 1 0 - -\nB 1 0 - -\nB 0 0 - -\nB 0 0 - -\n");
  const HBModelRun run =
      RunModel(data, {.regression = {.tolerance = 1e-9, .maxIterations = 9, .priorPrecision = 2}});
  RestartGenerator();
  EXPECT_EQ(run.table(0, 0), RandomGenerator::Normal() / 2);
}

TEST(HBModelTest, WithoutStepsTheResultIsThatOfTheBurnin) {
  DataSet data = MakeComplete();
  const LogisticFit fit = FitCurrentData(data, false);
  const HBModelRun run = RunModel(data, {.mcmc = {.thinning = 2, .burnin = 5, .steps = 0}});
  EXPECT_EQ(run.chain, "Step,BetaYX[0],BetaYX[1],BetaYX[2]\n");
  EXPECT_EQ(run.summary, "");
  RestartGenerator();
  const DenseMatrix lower = LowerFactor(fit.precision);
  DenseMatrix kept;
  for (int i = 1; i <= 5; ++i) {
    const DenseVector draw = NextDraw(fit.beta, lower);
    if (i % 2 == 0) {
      kept.push_back(draw);
    }
  }
  ExpectTable(run.table, kept, false);
}

TEST(HBModelTest, WithoutAnyPhaseTheResultIsZero) {
  for (const bool isCorrelated : {false, true}) {
    DataSet data = MakeDataSet("A 1 0 0 1\nA 0 . 0 *\n");
    const HBModelRun run = RunModel(
        data, {.isCorrelated = isCorrelated, .mcmc = {.thinning = 1, .burnin = 0, .steps = 0}});
    EXPECT_EQ(run.Failure(), "");
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(Testing::Cells(run.table), isCorrelated ? (std::vector<double>{0, -1, 0, 0, -1, 0})
                                                      : (std::vector<double>{0, 0, -1, 0, 0, -1}));
    EXPECT_EQ(Describe(data), "A 1 0 0 1\nA 0 . 0 .\n") << "imputed values start at 0";
  }
}

TEST(HBModelTest, ThinningOfZeroIsRefused) {
  DataSet data = MakeDataSet("A 1 0 0 1\nA 0 0 0 0\n");
  const HBModelRun run = RunModel(data, {.mcmc = {.thinning = 0, .burnin = 1, .steps = 1}});
  EXPECT_EQ(run.Failure(), "InvalidArgumentException: Invalid argument");
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.chain, "");
}

TEST(HBModelTest, NegativeCountsAreRefused) {
  DataSet data = MakeDataSet("A 1 0 0 1\nA 0 0 0 0\n");
  EXPECT_EQ(RunModel(data, {.mcmc = {.thinning = 1, .burnin = -1, .steps = -1}}).Failure(),
            "InvalidArgumentException: Invalid argument");
}

TEST(HBModelTest, IterationLimitWarnsInEachIteration) {
  DataSet data = MakeComplete();
  const LogisticProblem problem =
      MakeProblemOfX(data, [&](std::int32_t i) { return !data.p.Value(i); });
  const LogisticFit fit = FitDense(problem, false, kPriorPrecision, 0, 1);
  const HBModelRun run =
      RunModel(data, {.mcmc = {.thinning = 1, .burnin = 1, .steps = 1},
                      .regression = {.tolerance = 0, .maxIterations = 1, .priorPrecision = 0.3}});
  const std::string warning = "Warning: Maximum number of iterations reached\n";
  EXPECT_EQ(run.log, warning + warning);
  RestartGenerator();
  // The factor stands one step behind the coefficients.
  const DenseMatrix lower = LowerFactor(fit.precision);
  const DenseVector burnin = NextDraw(fit.beta, lower);
  const DenseVector draw = NextDraw(fit.beta, lower);
  ExpectTable(run.table, {draw}, false);
  EXPECT_EQ(run.output, warning + "Burnin: 1 Intercept: " + SixDigits(burnin[0]) + " \n" +
                            PhaseLine(1) + warning + "Mcmc: 1 Intercept: " + SixDigits(draw[0]) +
                            " \n" + PhaseLine(1));
}

TEST(HBModelTest, FailureOfAFitEndsTheRun) {
  // X2 is never set.
  DataSet data = MakeDataSet("A 1 0 00 10\nA 0 0 00 10\nA 1 0 00 00\nA 0 0 00 00\n");
  const HBModelRun run =
      RunModel(data, {.mcmc = {.thinning = 1, .burnin = 0, .steps = 3},
                      .regression = {.tolerance = 1e-9, .maxIterations = 9, .priorPrecision = 0}});
  EXPECT_EQ(run.Failure(), "NumericException: Non positive matrix in Cholesky decomposition");
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.chain, "Step,BetaYX[0],BetaYX[1],BetaYX[2]\n");
  EXPECT_EQ(run.summary, "");
}

// The fit takes every record whose current P is 0, complete or not, with the current X.
TEST(HBModelTest, FitIsOfTheDataAsCurrentlyImputed) {
  Testing::SeededRandom random(31);
  std::string text;
  for (int i = 0; i < 150; ++i) {
    const bool y = random.Integer(0, 2) == 0;
    std::string z;
    std::string x;
    for (int j = 0; j < 2; ++j) {
      z += "01"[random.Integer(0, 1)];
      x += "0011.*"[random.Integer(0, 5)];
    }
    const char p = y ? "01.*"[random.Integer(0, 3)] : "00.*"[random.Integer(0, 3)];
    text += "H" + std::to_string(i / 10) + (y ? " 1 " : " 0 ") + p + " " + z + " " + x + "\n";
  }
  for (const bool isCorrelated : {false, true}) {
    for (const bool isPresent : {false, true}) {
      DataSet data = MakeDataSet(text);
      // X is settled by its priors: column 1 is Z, column 2 the opposite of Z. P is settled by its
      // log odds wherever Y = 1, at the price of a word, and 0 elsewhere.
      DataSet imputed = data;
      int words = 0;
      for (std::int32_t i = 0; i < data.recordCount; ++i) {
        for (const std::int32_t j : {1, 2}) {
          if (data.x.IsMissing(i, j)) {
            imputed.x.SetValue(i, j, data.z.Get(i, j) == (j == 1));
          }
        }
        if (data.p.IsMissing(i)) {
          imputed.p.SetValue(i, data.y.Get(i) && isPresent);
          words += data.y.Get(i) ? 1 : 0;
        }
      }
      const HBModelRun run = RunModel(data, {.isCorrelated = isCorrelated,
                                             .pGivenX = {isPresent ? 800.0 : -800.0},
                                             .priorTable = {0, 1, 1, 0}});
      EXPECT_EQ(run.Failure(), "");
      EXPECT_EQ(Describe(data), Describe(imputed)) << "the last imputed values stay";
      const LogisticFit fit = FitCurrentData(imputed, isCorrelated);
      RestartGenerator();
      for (int i = 0; i < words; ++i) {
        RandomGenerator::NextWord();
      }
      const DenseVector draw =
          NextDraw(fit.beta, LowerFactor(isCorrelated ? fit.empirical : fit.precision));
      for (std::int32_t i = 0; i < 3; ++i) {
        const auto expected = static_cast<double>(draw[static_cast<std::size_t>(i)]);
        EXPECT_NEAR(run.table(i, 0), expected, 1e-8 * std::max(1.0, std::fabs(expected)));
      }
    }
  }
}

// Two hospitals of four records, half of the responses 1: the fit ends at 0 with hospital scores
// that are exactly 0, so the empirical covariance is 0 and has no factor.
constexpr const char* kBalanced =
    "A 1 0 - -\nA 0 0 - -\nA 1 0 - -\nA 0 0 - -\n"
    "B 1 0 - -\nB 0 0 - -\nB 1 0 - -\nB 0 0 - -\n";

TEST(HBModelTest, EmpiricalVarianceThatFailsAtFirstLeavesTheIdentity) {
  DataSet data = MakeDataSet(kBalanced);
  const HBModelRun run = RunModel(
      data, {.isCorrelated = true,
             .mcmc = {.thinning = 1, .burnin = 0, .steps = 2},
             .regression = {.tolerance = 1e-9, .maxIterations = 0, .priorPrecision = 0.5}});
  EXPECT_EQ(run.raised, "") << "the run goes on";
  const std::string errorLine = "Error: Non positive matrix in Cholesky decomposition\n";
  EXPECT_EQ(run.error, errorLine + errorLine);
  RestartGenerator();
  const double z1 = RandomGenerator::Normal();
  const double z2 = RandomGenerator::Normal();
  // The warning (a limit of 0 is always reached) comes first, the message after it.
  const std::string warning = "Warning: Maximum number of iterations reached\n";
  EXPECT_EQ(run.output, warning + "Exception: Empirical variance\n" + "Mcmc: 1 Intercept: " +
                            SixDigits(z1) + " \n" + warning + "Exception: Empirical variance\n" +
                            "Mcmc: 2 Intercept: " + SixDigits(z2) + " \n" + PhaseLine(2));
  EXPECT_EQ(run.log, warning + warning) << "the message is for standard output only";
  EXPECT_DOUBLE_EQ(run.table(0, 0), (z1 + z2) / 2);
  EXPECT_EQ(run.table(0, 1), -1.0);
  EXPECT_NEAR(run.table(0, 2), std::fabs(z1 - z2) / std::sqrt(2), 1e-12);
}

// A ninth record takes part only while its missing P is 0. Of all seeds one is taken with which P
// is 0 in the first iteration, so that the empirical covariance has a factor, and 1 in the second,
// where it has none: the second draw uses the first factor.
TEST(HBModelTest, EmpiricalVarianceThatFailsLaterKeepsThePreviousFactor) {
  const std::string text = std::string("A 1 . - -\n") + kBalanced;
  DataSet unbalanced = MakeDataSet(text);
  const LogisticFit fit = FitCurrentData(unbalanced, true);
  const long double factor = std::sqrt(fit.empirical[0][0]);

  long double first = 0;
  long double second = 0;
  std::uint32_t seed = 0;
  for (bool isFound = false; !isFound;) {
    ASSERT_LT(++seed, 1000U);
    RandomGenerator::Reset();
    RandomGenerator::Seed(seed, 42);
    // P(P = 1 | x) = 1/2 and P(Y = 1 | P = 0) = logistic(beta): the posterior probability of P = 1
    // is 1 / (1 + logistic(beta)), with beta = 0 at the start.
    const double u1 = RandomGenerator::NextWord() * 0x1p-32;
    first = fit.beta[0] + RandomGenerator::Normal() / factor;
    const double u2 = RandomGenerator::NextWord() * 0x1p-32;
    second = RandomGenerator::Normal() / factor;
    isFound = u1 > 1 / 1.5 + 0.01 && u2 < 1 / (1 + 1 / (1 + std::exp(-first))) - 0.01;
  }

  const Testing::ScratchFolder scratch;
  const Vell::Vector pGivenX(1);
  const Vell::Vector priorTable;
  const Hovar::HBModelSettings settings = {
      .regression = {Hovar::WorkingCorrelation::kExchangeable,
                     {.tolerance = 1e-13, .maxIterations = 100, .priorPrecision = 0.3}},
      .mcmc = {.thinning = 1, .burnin = 0, .steps = 2},
      .chainFolder = Vell::String(scratch.File("mcmc"))};
  DataSet data = MakeDataSet(text);
  Hovar::HBModel model(data, pGivenX, priorTable, settings);
  RandomGenerator::Reset();
  RandomGenerator::Seed(seed, 42);
  const Outcome outcome = Observe([&] { model.Run(); });
  EXPECT_EQ(outcome.raised, "");
  EXPECT_EQ(outcome.error, "Error: Non positive matrix in Cholesky decomposition\n");
  EXPECT_EQ(Testing::WithoutSeconds(outcome.output),
            "Mcmc: 1 Intercept: " + SixDigits(first) + " \nException: Empirical variance\n" +
                "Mcmc: 2 Intercept: " + SixDigits(second) + " \n" + PhaseLine(2));
  EXPECT_NEAR(model.ResultTable()(0, 0), static_cast<double>((first + second) / 2), 1e-10);
  EXPECT_NEAR(model.ResultTable()(0, 2),
              static_cast<double>(std::fabs(first - second) / std::sqrt(2.0L)), 1e-9);
}

TEST(HBModelTest, OutOfMemoryIsNeverTakenForAFailingEmpiricalVariance) {
  const Testing::ScratchFolder scratch;
  const Vell::Vector pGivenX(3);
  const Vell::Vector priorTable(4);
  const Hovar::HBModelSettings settings = {
      .regression = {Hovar::WorkingCorrelation::kExchangeable,
                     {.tolerance = 1e-6, .maxIterations = 20, .priorPrecision = 0.3}},
      .mcmc = {.thinning = 1, .burnin = 0, .steps = 1},
      .chainFolder = Vell::String(scratch.File("mcmc"))};
  DataSet data = MakeComplete();
  for (int failing = 1;; ++failing) {
    ASSERT_LT(failing, 10'000);
    SCOPED_TRACE("allocation " + std::to_string(failing));
    Testing::OutputCapture capture;
    bool hasFired = false;
    std::string raised;
    {
      const Testing::AllocationFault fault(failing);
      raised = Testing::ClassRaisedBy([&] {
        Hovar::HBModel model(data, pGivenX, priorTable, settings);
        model.Run();
      });
      hasFired = fault.HasFired();
    }
    EXPECT_EQ(capture.TakeOutput().find("Exception"), std::string::npos);
    EXPECT_EQ(capture.TakeError(), hasFired ? "Error: Out of memory\n" : "");
    EXPECT_EQ(raised, hasFired ? "OutOfMemoryException" : "");
    if (!hasFired) {
      EXPECT_GT(failing, 20);
      break;
    }
  }
}

}  // namespace
