// The sweep takes short cuts that must not change a single draw. Here it runs beside the plain
// form, which evaluates every likelihood as the model defines it.

#include <gtest/gtest.h>

#include <string>

#include "foundation/random/random_generator.h"
#include "mcmc/imputation_sweep.h"
#include "support/data_sets.h"
#include "support/plain_imputation.h"
#include "support/seeded_random.h"

namespace {

using Hovar::DataSet;
using Vell::Vector;

DataSet RandomDataSet(Testing::SeededRandom& random, std::int32_t records,
                      std::int32_t covariates) {
  std::string text;
  for (std::int32_t i = 0; i < records; ++i) {
    const bool y = random.Chance(0.5);
    const bool isMissing = random.Chance(0.4);
    text += std::string("H ") + (y ? "1" : "0") + ' ' +
            (isMissing                 ? "."
             : y && random.Chance(0.5) ? "1"
                                       : "0") +
            ' ';
    for (std::int32_t j = 0; j < covariates; ++j) {
      text += random.Chance(0.5) ? '1' : '0';
    }
    text += ' ';
    for (std::int32_t j = 0; j < covariates; ++j) {
      text += random.Chance(0.3) ? '.' : random.Chance(0.3) ? '1' : '0';
    }
    text += '\n';
  }
  return Testing::MakeDataSet(text);
}

Vector RandomCoefficients(Testing::SeededRandom& random, std::int32_t count, double size) {
  Vector beta(count);
  for (double& value : beta) {
    value = random.Real(-size, size);
  }
  return beta;
}

void ExpectSameCells(const DataSet& quick, const DataSet& plain) {
  for (std::int32_t i = 0; i < plain.recordCount; ++i) {
    ASSERT_EQ(quick.p.Value(i), plain.p.Value(i)) << "record " << i;
    for (std::int32_t j = 0; j < plain.variableCount; ++j) {
      ASSERT_EQ(quick.x.Value(i, j), plain.x.Value(i, j)) << "record " << i << " column " << j;
    }
  }
}

class ImputationFormsTest : public testing::TestWithParam<double> {};

// Coefficients of 1 stay on the quick path, those of 50 leave it for some records, those of 800
// leave the range of the exponential function. The generator's state is compared at the end, so the
// number of draws is the same too.
TEST_P(ImputationFormsTest, SweepDrawsTheCellsOfThePlainForm) {
  Testing::SeededRandom random(911);
  SCOPED_TRACE(random.Text());
  constexpr std::int32_t kCovariates = 9;
  for (int repetition = 0; repetition < 10; ++repetition) {
    DataSet quick = RandomDataSet(random, 200, kCovariates);
    DataSet plain = quick;
    const Vector yGivenX = RandomCoefficients(random, kCovariates + 1, GetParam());
    const Vector pGivenX = RandomCoefficients(random, kCovariates + 1, GetParam());
    Vector prior(2 * kCovariates);
    for (double& q : prior) {
      q = random.Chance(0.1) ? 0 : random.Chance(0.1) ? 1 : random.Real(0, 1);
    }
    prior[0] = 1e-300;
    prior[1] = 1 - 0x1p-53;
    const Hovar::ImputationModel model{yGivenX, pGivenX, prior};
    Hovar::PrepareImputation(quick);
    Hovar::PrepareImputation(plain);
    for (int sweep = 0; sweep < 5; ++sweep) {
      Vell::RandomGenerator::Seed(1000 + static_cast<std::uint32_t>(repetition), 77);
      Hovar::RunImputationSweep(quick, model);
      const std::uint32_t next = Vell::RandomGenerator::NextWord();
      Vell::RandomGenerator::Seed(1000 + static_cast<std::uint32_t>(repetition), 77);
      Testing::PlainSweep(plain, model);
      EXPECT_EQ(next, Vell::RandomGenerator::NextWord());
      ExpectSameCells(quick, plain);
    }
  }
}

// Without an intercept the first variable is column 0, which no form draws. 65 columns take two
// words.
TEST_P(ImputationFormsTest, FirstColumnIsLeftAloneWhateverTheNumberOfColumns) {
  Testing::SeededRandom random(912);
  SCOPED_TRACE(random.Text());
  for (const std::int32_t columns : {1, 2, 3, 64, 65, 130}) {
    SCOPED_TRACE(columns);
    DataSet quick = RandomDataSet(random, 100, columns);
    Vell::IndexVector intercept;
    intercept.Append(0);
    RemoveColumns(quick, intercept);
    Hovar::PrepareImputation(quick);
    DataSet plain = quick;
    const Vector yGivenX = RandomCoefficients(random, columns, GetParam());
    const Vector pGivenX = RandomCoefficients(random, columns, GetParam());
    Vector prior(2 * (columns - 1));
    for (double& q : prior) {
      q = random.Real(0, 1);
    }
    const Hovar::ImputationModel model{yGivenX, pGivenX, prior};
    Vell::RandomGenerator::Seed(5, 77);
    Hovar::RunImputationSweep(quick, model);
    const std::uint32_t next = Vell::RandomGenerator::NextWord();
    Vell::RandomGenerator::Seed(5, 77);
    Testing::PlainSweep(plain, model);
    EXPECT_EQ(next, Vell::RandomGenerator::NextWord());
    ExpectSameCells(quick, plain);
  }
}

INSTANTIATE_TEST_SUITE_P(CoefficientsUpTo, ImputationFormsTest,
                         testing::Values(0.0, 1.0, 50.0, 800.0));

}  // namespace
