#pragma once

// Fits, their settings, and comparisons, shared by the tests of regressions.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "data/data_set.h"
#include "regression/logistic_regression.h"
#include "regression/row_source.h"
#include "support/data_sets.h"
#include "support/dense_logistic.h"
#include "support/files.h"
#include "support/outcome.h"
#include "support/seeded_random.h"

namespace Testing {

/// Converges as far as doubles allow.
inline Hovar::RegressionParameters Tight(double priorPrecision) {
  return {.tolerance = 1e-13, .maxIterations = 200, .priorPrecision = priorPrecision};
}

inline constexpr std::string_view kIterationWarning =
    "Warning: Maximum number of iterations reached\n";

/// |actual - expected| <= relative * |expected|.
inline void ExpectRelative(double actual, long double expected, double relative,
                           const std::string& what) {
  EXPECT_LE(std::fabs(actual - expected), relative * std::fabs(expected))
      << what << ": " << actual << " instead of " << static_cast<double>(expected);
}

/// The small clustered data set of the references: Y and three covariates after the intercept, the
/// same in X and Z, nothing missing, P = 0.
inline Hovar::DataSet SmallRegression() {
  std::string text;
  for (const auto& row : ReadCsv(ReferenceFile("small_regression.csv"))) {
    if (row[0] != "Hospital") {
      const std::string cells = row[3] + row[4] + row[5];
      EXPECT_EQ(row[2], "1");
      text += row[0] + " " + row[1] + " 0 " + cells + " " + cells + "\n";
    }
  }
  return MakeDataSet(text);
}

/// Random records in hospitals of these sizes, with an outcome that depends on the covariates and
/// varies between hospitals.
inline std::string RandomRecords(SeededRandom& random, const std::vector<std::int32_t>& sizes,
                                 std::int32_t covariates) {
  std::string text;
  std::int32_t hospital = 0;
  for (const std::int32_t size : sizes) {
    const double shift = random.Real(-1, 1);
    for (std::int32_t i = 0; i < size; ++i) {
      std::string x;
      double eta = shift;
      for (std::int32_t j = 0; j < covariates; ++j) {
        x += "01"[random.Real(0, 1) < 0.35 ? 1 : 0];
        eta += (x.back() == '1' ? 1 : 0) * (j % 2 == 0 ? 0.7 : -0.5);
      }
      const bool y = random.Real(0, 1) < 1 / (1 + std::exp(-eta));
      text += "H" + std::to_string(hospital) + (y ? " 1" : " 0") + " 0 " + x + " " + x + "\n";
    }
    ++hospital;
  }
  return text;
}

inline bool IsAny(std::int32_t /*record*/) { return true; }

/// Fits [Y|X].
inline Hovar::CoefficientEstimates FitYGivenX(const Hovar::DataSet& data,
                                              const Hovar::RegressionParameters& parameters,
                                              Hovar::WorkingCorrelation correlation) {
  return Hovar::LogisticRegression{data.hospitalSize, {correlation, parameters}}.Fit(
      Hovar::RowsOfYGivenX(data));
}

/// Compares estimates and standard errors with a dense fit.
inline void ExpectFit(const Hovar::CoefficientEstimates& actual, const LogisticFit& expected,
                      bool isCorrelated, double relative) {
  ASSERT_EQ(actual.Size(), static_cast<std::int32_t>(expected.beta.size()));
  for (std::int32_t j = 0; j < actual.Size(); ++j) {
    const auto k = static_cast<std::size_t>(j);
    const std::string column = " of column " + std::to_string(j);
    ExpectRelative(actual[j].estimate, expected.beta[k], relative, "estimate" + column);
    ExpectRelative(actual[j].modelStandardError, std::sqrt(expected.model[k][k]), relative,
                   "model error" + column);
    if (isCorrelated) {
      ExpectRelative(actual[j].empiricalStandardError, std::sqrt(expected.empirical[k][k]),
                     relative, "empirical error" + column);
    } else {
      EXPECT_EQ(actual[j].empiricalStandardError, -1.0) << column;
    }
  }
}

/// Half a unit in the eighth digit.
inline constexpr double kEightDigits = 5e-9;

/// What a fit of [Y|X] prints and raises, and its estimates.
struct FitOutcome : Outcome {
  Hovar::CoefficientEstimates estimates;
};

inline FitOutcome ObserveFit(const Hovar::DataSet& data,
                             const Hovar::RegressionParameters& parameters,
                             Hovar::WorkingCorrelation correlation) {
  FitOutcome fit;
  static_cast<Outcome&>(fit) =
      Observe([&] { fit.estimates = FitYGivenX(data, parameters, correlation); });
  return fit;
}

}  // namespace Testing
