#pragma once

// Logistic regression by the textbook formulas with full matrices, for comparison. Nothing is
// shared with the code under test: cells are taken one by one, the working covariance of a hospital
// is formed and solved with as it stands, and everything is a long double.

#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "data/data_set.h"
#include "support/dense_algebra.h"

namespace Testing {

/// Responses, 0/1 designs and hospitals of the records of a fit.
struct LogisticProblem {
  DenseVector y;
  DenseMatrix x;
  std::vector<std::int32_t> hospital;
};

/// The records of a data set for which `includes` holds. `response` gives 0 or 1 for a record,
/// `cell` for a record and a column.
inline LogisticProblem MakeProblem(const Hovar::DataSet& data,
                                   const std::function<bool(std::int32_t)>& includes,
                                   const std::function<bool(std::int32_t)>& response,
                                   const std::function<bool(std::int32_t, std::int32_t)>& cell) {
  LogisticProblem problem;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    if (includes(i)) {
      problem.y.push_back(response(i) ? 1 : 0);
      problem.hospital.push_back(data.recordHospital[i]);
      DenseVector& row = problem.x.emplace_back();
      for (std::int32_t j = 0; j < data.variableCount; ++j) {
        row.push_back(cell(i, j) ? 1 : 0);
      }
    }
  }
  return problem;
}

/// Y given the value bits of X, over the records for which `includes` holds.
inline LogisticProblem MakeProblemOfX(const Hovar::DataSet& data,
                                      const std::function<bool(std::int32_t)>& includes) {
  return MakeProblem(
      data, includes, [&](std::int32_t i) { return data.y.Get(i); },
      [&](std::int32_t i, std::int32_t j) { return data.x.Value(i, j); });
}

/// The estimating equations at given coefficients, without the prior. With correlated records all
/// is multiplied by 1 - alpha, the scale in which the prior precision is added.
struct LogisticPass {
  long double alpha = 0;
  DenseMatrix information;
  DenseVector score;
  DenseMatrix hospitalScores;
};

inline LogisticPass EvaluatePass(const LogisticProblem& problem, const DenseVector& beta,
                                 bool isCorrelated) {
  const std::size_t p = beta.size();
  const std::size_t n = problem.y.size();
  DenseVector mean;
  for (const long double eta : Product(problem.x, beta)) {
    mean.push_back(1 / (1 + std::exp(-eta)));
  }
  std::map<std::int32_t, std::vector<std::size_t>> clusters;
  for (std::size_t i = 0; i < n; ++i) {
    // Independent records are hospitals of their own.
    clusters[isCorrelated ? problem.hospital[i] : static_cast<std::int32_t>(i)].push_back(i);
  }
  const auto variance = [&](std::size_t i) { return mean[i] * (1 - mean[i]); };

  LogisticPass pass;
  if (isCorrelated) {
    // phi = sum r_i^2 / (N - p), alpha = sum over ordered pairs r_i r_k / ((M - p) phi)
    const auto pearson = [&](std::size_t i) {
      return (problem.y[i] - mean[i]) / std::sqrt(variance(i));
    };
    long double squares = 0;
    long double products = 0;
    long double pairs = 0;
    for (const auto& [hospital, records] : clusters) {
      for (const std::size_t i : records) {
        for (const std::size_t k : records) {
          (i == k ? squares : products) += pearson(i) * pearson(k);
          pairs += i == k ? 0 : 1;
        }
      }
    }
    const long double phi = squares / (static_cast<long double>(n) - static_cast<long double>(p));
    pass.alpha = products / ((pairs - static_cast<long double>(p)) * phi);
  }

  pass.information = DenseZero(p, p);
  pass.score.assign(p, 0);
  for (const auto& [hospital, records] : clusters) {
    // V = S^1/2 R S^1/2 with R = (1 - alpha) I + alpha 1 1^T, D = S X, e = y - mu
    const std::size_t size = records.size();
    DenseMatrix covariance = DenseZero(size, size);
    DenseMatrix derivative = DenseZero(size, p);
    DenseMatrix rightSides = DenseZero(size, p + 1);  // D and e
    for (std::size_t a = 0; a < size; ++a) {
      const std::size_t i = records[a];
      for (std::size_t b = 0; b < size; ++b) {
        const long double correlation = a == b ? 1 : pass.alpha;
        covariance[a][b] = correlation * std::sqrt(variance(i) * variance(records[b]));
      }
      for (std::size_t j = 0; j < p; ++j) {
        derivative[a][j] = rightSides[a][j] = variance(i) * problem.x[i][j];
      }
      rightSides[a][p] = problem.y[i] - mean[i];
    }
    const DenseMatrix solved = Product(Transposed(derivative), SolveDense(covariance, rightSides));
    DenseVector& hospitalScore = pass.hospitalScores.emplace_back();
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t k = 0; k < p; ++k) {
        pass.information[j][k] += (1 - pass.alpha) * solved[j][k];
      }
      hospitalScore.push_back((1 - pass.alpha) * solved[j][p]);
      pass.score[j] += hospitalScore[j];
    }
  }
  return pass;
}

struct LogisticFit {
  DenseVector beta;
  DenseMatrix precision;  // the information of the last pass with the prior
  DenseMatrix model;      // the model-based covariance
  DenseMatrix empirical;  // the empirical covariance
  long double alpha = 0;
  std::int32_t steps = 0;  // applied
};

/// Newton's method from zeros: the step of a pass is applied unless it is at most `tolerance` times
/// the largest coefficient; at most `limit` steps, and at least one unless the first is 0.
inline LogisticFit FitDense(const LogisticProblem& problem, bool isCorrelated,
                            long double priorPrecision, long double tolerance, std::int32_t limit) {
  const auto largest = [](const DenseVector& values) {
    long double result = 0;
    for (const long double value : values) {
      result = std::max(result, std::fabs(value));
    }
    return result;
  };
  const std::size_t p = problem.x[0].size();
  LogisticFit fit;
  fit.beta.assign(p, 0);
  LogisticPass pass;
  do {
    pass = EvaluatePass(problem, fit.beta, isCorrelated);
    DenseMatrix score = DenseZero(p, 1);
    for (std::size_t j = 0; j < p; ++j) {
      pass.information[j][j] += priorPrecision;
      score[j][0] = pass.score[j] - priorPrecision * fit.beta[j];
    }
    const DenseVector step = Transposed(SolveDense(pass.information, score))[0];
    if (tolerance * largest(fit.beta) >= largest(step)) {
      break;
    }
    for (std::size_t j = 0; j < p; ++j) {
      fit.beta[j] += step[j];
    }
    ++fit.steps;
  } while (fit.steps < limit);

  fit.alpha = pass.alpha;
  fit.precision = pass.information;
  const DenseMatrix inverse = SolveDense(pass.information, DenseIdentity(p));
  fit.model = inverse;
  for (DenseVector& row : fit.model) {
    for (long double& cell : row) {
      cell *= 1 - pass.alpha;
    }
  }
  const DenseMatrix meat = Product(Transposed(pass.hospitalScores), pass.hospitalScores);
  fit.empirical = Product(Product(inverse, meat), inverse);
  return fit;
}

}  // namespace Testing
