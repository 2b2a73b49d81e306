#pragma once

// Small models for predictions.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "linalg/vector.h"
#include "regression/regression_results.h"

namespace Testing {

inline double Logistic(double t) { return 1 / (std::exp(-t) + 1); }

/// The estimates of the five models, one entry per variable; tables one per variable but the first.
struct ModelValues {
  std::vector<double> pGivenX;
  std::vector<double> yGivenZ;
  std::vector<double> yGivenX;
  std::vector<double> yGivenXWithoutP;
  std::vector<double> yGivenXWithoutPMcmc;
  std::vector<std::array<double, 2>> tables;
};

inline Hovar::RegressionResults MakeResults(const ModelValues& values) {
  Hovar::RegressionResults results;
  const auto count = static_cast<std::int32_t>(values.pGivenX.size());
  results.xNames = Vell::StringArray(count);
  results.zNames = Vell::StringArray(count);
  const auto fill = [&](Hovar::Model model, const std::vector<double>& estimates) {
    results.Block(model).Resize(count);
    for (std::int32_t j = 0; j < count; ++j) {
      results.Block(model)[j].estimate = estimates.at(static_cast<std::size_t>(j));
    }
  };
  fill(Hovar::Model::kPGivenX, values.pGivenX);
  fill(Hovar::Model::kYGivenZ, values.yGivenZ);
  fill(Hovar::Model::kYGivenX, values.yGivenX);
  fill(Hovar::Model::kYGivenXWithoutP, values.yGivenXWithoutP);
  fill(Hovar::Model::kYGivenXWithoutPMcmc, values.yGivenXWithoutPMcmc);
  for (const auto& table : values.tables) {
    results.xzTables.Append(Hovar::XzTable{table});
  }
  return results;
}

/// A model of intercepts alone: P(P = 1), and one probability of Y for the other four.
inline Hovar::RegressionResults InterceptResults(double pLogOdds, double yLogOdds) {
  return MakeResults({{pLogOdds}, {yLogOdds}, {yLogOdds}, {yLogOdds}, {yLogOdds}, {}});
}

inline Vell::Vector VectorOf(const std::vector<double>& values) {
  Vell::Vector vector(static_cast<std::int32_t>(values.size()));
  std::copy(values.begin(), values.end(), vector.begin());
  return vector;
}

}  // namespace Testing
