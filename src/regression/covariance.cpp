#include "regression/covariance.h"

#include "linalg/cholesky.h"

namespace Hovar {
namespace {

/// a * b for square matrices of one order.
Vell::Matrix Multiply(const Vell::Matrix& a, const Vell::Matrix& b) {
  Vell::Matrix product(a.Rows(), b.Columns());
  for (std::int32_t i = 0; i < a.Rows(); ++i) {
    for (std::int32_t j = 0; j < b.Columns(); ++j) {
      double sum = 0;
      for (std::int32_t k = 0; k < a.Columns(); ++k) {
        sum += a(i, k) * b(k, j);
      }
      product(i, j) = sum;
    }
  }
  return product;
}

/// The sum over hospitals of U_h U_h^T.
Vell::Matrix OuterProducts(const Vell::Matrix& hospitalScores) {
  const std::int32_t columns = hospitalScores.Columns();
  Vell::SymmetricMatrix sum(columns);
  for (std::int32_t h = 0; h < hospitalScores.Rows(); ++h) {
    for (std::int32_t j = 0; j < columns; ++j) {
      double* const row = sum.Row(j);
      const double score = hospitalScores(h, j);
      for (std::int32_t k = 0; k <= j; ++k) {
        row[k] += score * hospitalScores(h, k);
      }
    }
  }
  return Vell::ToFullMatrix(sum);
}

}  // namespace

Vell::SymmetricMatrix ModelCovariance(const FitState& state) {
  Vell::SymmetricMatrix covariance = Vell::CholeskyInverse(state.factor);
  if (state.alpha != 0) {
    for (double& element : covariance.Elements()) {
      element *= 1 - state.alpha;
    }
  }
  return covariance;
}

Vell::SymmetricMatrix EmpiricalCovariance(const FitState& state) {
  const Vell::Matrix bread = Vell::ToFullMatrix(Vell::CholeskyInverse(state.factor));
  const Vell::Matrix product =
      Multiply(Multiply(bread, OuterProducts(state.hospitalScores)), bread);
  Vell::SymmetricMatrix covariance(product.Rows());
  for (std::int32_t j = 0; j < product.Rows(); ++j) {
    for (std::int32_t k = 0; k <= j; ++k) {
      covariance(j, k) = product(j, k);
    }
  }
  return covariance;
}

}  // namespace Hovar
